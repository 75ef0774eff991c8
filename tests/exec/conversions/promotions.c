/* Integer promotions and the usual arithmetic conversions: where the sign of a result comes from. */
#include <stdio.h>

static int sign(double d) { return d < 0 ? -1 : d > 0; }

static void unary(void)
{
    unsigned char uc = 200;
    signed char sc = -56;
    unsigned short us = 40000;
    short s = -25536;
    printf("%d %d %d %d\n", ~uc, ~sc, ~us, ~s);
    printf("%d %d %d %d\n", -uc, -sc, -us, -s);
    printf("%d %d %d %d\n", uc == (unsigned char)sc, uc == sc, us == (unsigned short)s, us == s);
    printf("%d %d\n", (~uc >> 1), (unsigned char)~uc >> 1);
}

static void binary(void)
{
    unsigned char uc = 255;
    unsigned short us = 65535;
    unsigned u = 1;
    unsigned long ul = 2;
    int i = -1;
    long l = -2;
    short s = -3;
    printf("%d %d %d\n", uc + 1, us + 1, uc * us);
    printf("%d %d %d\n", i < (int)u, i < u, l < ul);
    printf("%d %d\n", s > u, s > (int)u);
    printf("%u %lu %d\n", i + u, l + ul, s + uc);
    printf("%d %d\n", sign(i * 1.0), sign(u * -1.0));
    printf("%d %d %u\n", i / 2, s % 2, i / 2u);
    printf("%d %u\n", i >> 1, (i + 0u) >> 1);
    printf("%g %g\n", u - 2 + 0.0, (int)(u - 2) + 0.0);
}

static void conditional(int choose)
{
    signed char c = -1;
    unsigned char b = 255;
    unsigned u = 7;
    double d = choose ? c : 2.5;
    printf("%d %u %g\n", choose ? c : b, choose ? c : u, d);
    printf("%d\n", (choose ? -1 : u) > 0);
    printf("%d\n", (choose ? c : b) > 0);
    printf("%g\n", (choose ? 1 : 2) / (choose ? 4 : 8.0f));
}

static unsigned char narrow_result(int x) { return x; }
static short short_result(long x) { return x; }
static float float_result(int x) { return x; }
static int int_result(double x) { return x; }
static int take(signed char c, unsigned char b, short s, float f) { return c * 1000 + b * 10 + s + (int)f; }

int main(void)
{
    unary();
    binary();
    conditional(0);
    conditional(1);
    printf("%d %d %g %d\n", narrow_result(511), short_result(98304L + 5), float_result(-7), int_result(-7.75));
    printf("%d\n", take(260, 260, 65540, 3.75));
    printf("%d %d\n", 'a' + 1, '\377' == 255);
    printf("%d %d %d\n", 2147483647 == 2147483647u, -1 == 4294967295u, 0x80000000 > 0);
    return 0;
}
