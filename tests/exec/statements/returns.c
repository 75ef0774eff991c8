/* return in every place and of every type; functions that end without one; early exits of loops. */
#include <stdio.h>

static char ret_char(int x) { return (char)(x + 1); }
static unsigned char ret_uchar(int x) { return (unsigned char)(x - 1); }
static short ret_short(int x) { if (x) return (short)(x * 7); return -1; }
static unsigned short ret_ushort(int x) { return (unsigned short)~x; }
static long ret_long(long x) { return -x; }
static unsigned ret_unsigned(unsigned x) { return x - 10u; }
static float ret_float(int x) { return x / 4.0f; }
static double ret_double(int x) { return x / 8.0; }
static const char *ret_pointer(int x) { return "abcdef" + x; }

static void falls_off(int *p, int x)
{
    if (x < 0) {
        *p = -1;
        return;
    }
    *p = x;
}

static int find(const int *a, int n, int key)
{
    int i;
    for (i = 0; i < n; i++)
        if (a[i] == key)
            return i;
    return -1;
}

static int first_gap(const int *a, int n)
{
    int i, j;
    for (i = 0; i < n; i++)
        for (j = i + 1; j < n; j++)
            if (a[j] - a[i] > 10) {
                if (j - i == 1)
                    return a[i];
                return -a[i];
            }
    return 0;
}

static int many_exits(int x)
{
    if (x == 0) return 3;
    while (x > 1) {
        if (x % 7 == 0) return x;
        if (x % 5 == 0) { x /= 5; continue; }
        x--;
        if (x == 30) return -30;
    }
    do {
        if (x == 1) return 100 + x;
        x++;
    } while (x < 3);
    return 999;
}

static int same_result(int a, int b)
{
    if (a > b) return a - b;
    if (a == b) return 0;
    return a - b;
}

int main(void)
{
    static const int a[] = {3, 5, 9, 20, 21, 50};
    int i, v;
    printf("%d %d %d %d\n", ret_char(126), ret_uchar(0), ret_short(0), ret_short(5000));
    printf("%d %ld %u\n", ret_ushort(5), ret_long(-12L), ret_unsigned(3));
    printf("%g %g %s\n", ret_float(3), ret_double(5), ret_pointer(2));
    falls_off(&v, 12); printf("%d ", v);
    falls_off(&v, -12); printf("%d\n", v);
    printf("%d %d %d\n", find(a, 6, 21), find(a, 6, 4), first_gap(a, 6));
    for (i = 0; i < 40; i += 3)
        printf("%d ", many_exits(i));
    printf("\n%d %d %d\n", same_result(4, 2), same_result(2, 4), same_result(2, 2));
    return ret_uchar(43);
}
