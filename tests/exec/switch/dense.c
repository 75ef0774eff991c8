/* Dense switches: all cases used, default in the middle, shared labels, tables with negative start. */
#include <stdio.h>

static int simple(int x)
{
    switch (x) {
    case 0: return 10;
    case 1: return 21;
    case 2: return 32;
    case 3: return 43;
    case 4: return 54;
    }
    return -1;
}

static int negative_start(int x)
{
    int r;
    switch (x) {
    case -3: r = 1; break;
    case -2: r = 2; break;
    case -1: r = 3; break;
    case 0: r = 4; break;
    case 1: r = 5; break;
    default: r = 0; break;
    }
    return r * 2;
}

static int shared(int x)
{
    switch (x) {
    case 1: case 3: case 5: case 7: case 9:
        return 'o';
    default:
        return '?';
    case 0: case 2: case 4: case 6: case 8:
        return 'e';
    }
}

static int falls(int x)
{
    int n = 0;
    switch (x) {
    case 5: n += 5;
    case 4: n += 4;
    case 3: n += 3; break;
    case 2: n += 2;
    default: n += 100;
    case 1: n += 1;
    }
    return n;
}

static int days(int month, int leap)
{
    int d = 31;
    switch (month) {
    case 4: case 6: case 9: case 11:
        d = 30;
        break;
    case 2:
        d = leap ? 29 : 28;
    }
    return d;
}

static const char *word(unsigned n)
{
    switch (n) {
    case 0: return "zero";
    case 1: return "one";
    case 2: return "two";
    case 3: return "three";
    case 4: return "four";
    case 5: return "five";
    case 6: return "six";
    default: return "many";
    }
}

static int only_default(int x) { switch (x) { default: x += 5; } return x; }
static int one_case(int x) { switch (x) { case 7: return 1; } return 0; }
static int empty(int x) { switch (x++) { } return x; }
static int all_same(int x) { switch (x) { case 1: case 2: case 3: return 9; default: return 9; } }

static int masked(int x)
{
    switch (x & 3) {
    case 0: return 100;
    case 1: return 101;
    case 2: return 102;
    case 3: return 103;
    }
    return -1;
}

int main(void)
{
    int i;
    for (i = -4; i < 10; i++)
        printf("%d %d %c %d %s %d\n", simple(i), negative_start(i), shared(i), falls(i), word((unsigned)i), masked(i));
    for (i = 1; i <= 12; i++)
        printf("%d,", days(i, i & 1));
    printf("\n%d %d %d %d %d\n", only_default(1), one_case(7), one_case(8), empty(4), all_same(2) + all_same(5));
    return falls(5);
}
