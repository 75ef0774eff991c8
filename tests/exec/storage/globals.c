/* External objects: tentative definitions, declarations in blocks, writes seen by other functions. */
#include <stdio.h>

extern int defined_later;
int tentative;
int tentative;
extern int tentative;
int initialized = 3;
extern int initialized;
static int internal;
static int internal = 8;
int array_later[];
int array_later[4];
extern double ratios[3];
char text[] = "global text";
char *writable = text;
unsigned char small = 250;
short medium = -7;

static int read_all(void) { return tentative + initialized * 10 + internal * 100 + defined_later * 1000; }
static void write_all(int x) { tentative = x; initialized = x + 1; internal = x + 2; defined_later = x + 3; }

static int block_extern(void)
{
    extern int defined_later;
    extern int block_only(int);
    int internal = 1;
    {
        extern int initialized;
        return defined_later + initialized + internal + block_only(2);
    }
}

static void through_pointers(int **table, int n)
{
    while (n-- > 0)
        *table[n] += n + 1;
}

static int kept_in_register(int n)
{
    int i;
    for (i = 0; i < n; i++) {
        tentative += i;
        if (tentative > 20)
            internal++;
    }
    return tentative * internal;
}

static int spill(int x)
{
    tentative = x;
    write_all(x * 2);
    return tentative + x;
}

static void narrow(void)
{
    small += 10;
    medium *= 9362;
    small++;
    printf("%d %d\n", small, medium);
}

int block_only(int x) { return x * 11; }
int defined_later = 4;
double ratios[3] = {0.5, 0.25};

int main(void)
{
    int *all[4];
    int i;
    all[0] = &tentative;
    all[1] = &initialized;
    all[2] = &internal;
    all[3] = &defined_later;
    printf("%d\n", read_all());
    write_all(5);
    printf("%d", read_all());
    printf(" %d\n", block_extern());
    through_pointers(all, 4);
    printf("%d\n", read_all());
    printf("%d\n", kept_in_register(10));
    printf("%d", spill(3));
    printf(" %d\n", tentative);
    for (i = 0; i < 4; i++)
        array_later[i] = i + *all[i];
    printf("%d %d %d\n", array_later[0], array_later[3], (int)(sizeof array_later / sizeof array_later[0]));
    printf("%g %g %g\n", ratios[0], ratios[1], ratios[2]);
    writable[0] = 'G';
    printf("%s %d\n", text, (int)sizeof text);
    narrow();
    return internal & 63;
}
