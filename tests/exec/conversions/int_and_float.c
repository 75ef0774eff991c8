/* Integers of every type to float and double and back, truncation toward zero, exact and rounded. */
#include <stdio.h>

#define ROUND_TRIP(NAME, T)                                                                        \
    static void NAME(void)                                                                         \
    {                                                                                              \
        static const T values[] = {(T)0, (T)1, (T)-1, (T)100, (T)-128, (T)30000, (T)123456, (T)0x7FFFFF00}; \
        int i;                                                                                     \
        printf("%s:", #NAME);                                                                      \
        for (i = 0; i < 8; i++) {                                                                  \
            float f = values[i];                                                                   \
            double d = values[i];                                                                  \
            printf(" %.6g %.6g", f, d);                                                            \
            if (f < 2147483520.0f && f >= 0.0f)                                                    \
                printf(" %u", (unsigned)(T)f);                                                     \
            if (d < 2147483648.0 && d >= 0.0)                                                      \
                printf(" %u", (unsigned)(T)d);                                                     \
        }                                                                                          \
        printf("\n");                                                                              \
    }

ROUND_TRIP(of_char, char)
ROUND_TRIP(of_schar, signed char)
ROUND_TRIP(of_uchar, unsigned char)
ROUND_TRIP(of_short, short)
ROUND_TRIP(of_ushort, unsigned short)
ROUND_TRIP(of_int, int)
ROUND_TRIP(of_unsigned, unsigned)
ROUND_TRIP(of_long, long)
ROUND_TRIP(of_ulong, unsigned long)

static void truncate(double d)
{
    float f = (float)d;
    int i = d;
    long l = (long)d;
    short s = (short)d;
    signed char c = (signed char)d;
    printf("%.4g: %d %ld %d %d %d %d\n", d, i, l, s, c, (int)f, (short)f);
    if (d >= 0)
        printf("  %u %u %d %d\n", (unsigned)d, (unsigned)f, (unsigned short)d, (unsigned char)d);
}

static int round_half(double d) { return (int)(d < 0 ? d - 0.5 : d + 0.5); }
static float through_float(int x) { return (float)x; }
static int mixed(int i, float f, double d) { return (int)(i * f + d / i - (i > f) + (d < i)); }

int main(void)
{
    of_char(); of_schar(); of_uchar(); of_short(); of_ushort(); of_int(); of_unsigned(); of_long(); of_ulong();
    truncate(0.0); truncate(0.75); truncate(-0.75); truncate(1.5); truncate(-1.5); truncate(99.99); truncate(-100.5);
    truncate(126.875);
    printf("%d %d %d %d\n", round_half(2.5), round_half(-2.5), round_half(2.25), round_half(-3.75));
    /* 16777217 is the first integer that float can not hold. */
    printf("%d %d %d\n", (int)through_float(16777215), (int)through_float(16777216), (int)through_float(16777217));
    printf("%d %d\n", (float)16777217 == 16777216.0f, (double)16777217 == 16777217.0);
    printf("%u %u\n", (unsigned)4294967040.0, (unsigned)3000000000.0);
    printf("%d %d\n", mixed(3, 1.5f, 7.5), mixed(-4, 0.25f, 100.0));
    return 0;
}
