/* Static initial values of scalars and arrays of each type, partial, nested, from constant expressions. */
#include <stdio.h>

static char c = 'c';
static signed char sc = -128;
static unsigned char uc = 0xFF;
static short s = -32768;
static unsigned short us = 65535;
static int i = -(1 << 20);
static unsigned u = ~0u;
static long l = 1L << 30;
static float f = 1.5f;
static double d = -1e10;
static float from_int = 3;
static double from_char = 'A';
static int from_double = (int)7.9;
static unsigned char narrowed = (unsigned char)0x1234;
static int expression = sizeof(int) * 3 + (5 > 3 ? 10 : 20) - ('b' & 0xF);

static int full[4] = {1, 2, 3, 4};
static int partial[6] = {10, 20};
static int unsized[] = {9, 8, 7, 6, 5};
static short shorts[5] = {-1, 2, -3};
static double doubles[] = {0.5, -0.25, 100};
static float floats[3] = {1};
static char letters[] = {'a', 'b', 'c', 0};
static char string[] = "string";
static char exact[3] = "xyz";
static char padded[10] = "pad";
static char braces[] = {"in braces"};
static int two[2][3] = {{1, 2, 3}, {4, 5, 6}};
static int flat[2][3] = {1, 2, 3, 4};
static int ragged[3][3] = {{1}, {2, 3}, {4, 5, 6}};
static char rows[3][6] = {"one", "two", "three"};
static int three[2][2][2] = {{{1, 2}, {3}}, {{5}}};
static unsigned char mixed[2][4] = {{1, 2}, "ab"};

static int sum(const int *p, int n) { int t = 0; while (n--) t = t * 3 + *p++; return t; }

int main(void)
{
    int n;
    printf("%c %d %d %d %d %d %u %ld\n", c, sc, uc, s, us, i, u, l);
    printf("%g %g %g %g %d %d %d\n", f, d, from_int, from_char, from_double, narrowed, expression);
    printf("%d %d %d %d\n", sum(full, 4), sum(partial, 6), sum(unsized, 5), (int)(sizeof unsized / sizeof *unsized));
    printf("%d %d %d %g %g %g %g %g\n", shorts[0], shorts[2], shorts[4], doubles[1], doubles[2], floats[0], floats[1], floats[2]);
    printf("%s %s %.3s %s %s %d\n", letters, string, exact, padded, braces, (int)sizeof braces);
    for (n = 3; n < 10; n++)
        printf("%d", padded[n]);
    printf("\n%d %d %d %d\n", sum(two[0], 6), sum(flat[0], 6), sum(ragged[0], 9), sum(three[0][0], 8));
    for (n = 0; n < 3; n++)
        printf("%s,", rows[n]);
    printf("%d%d%d%c%c%d\n", mixed[0][0], mixed[0][1], mixed[0][2], mixed[1][0], mixed[1][1], mixed[1][3]);
    return 0;
}
