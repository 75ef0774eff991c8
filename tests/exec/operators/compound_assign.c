/* Every op= on every arithmetic type: the operation happens in the common type, the result narrows. */
#include <stdio.h>

#define INTEGER_TYPE(NAME, T, FORMAT)                                                              \
    static void NAME(T start, int n)                                                               \
    {                                                                                              \
        T x = start;                                                                               \
        T a[2];                                                                                    \
        T *p = a;                                                                                  \
        x += n; printf(FORMAT " ", x);                                                             \
        x -= 3; printf(FORMAT " ", x);                                                             \
        x *= 3; printf(FORMAT " ", x);                                                             \
        x /= 2; printf(FORMAT " ", x);                                                             \
        x %= 50; printf(FORMAT " ", x);                                                            \
        x |= 0x41; printf(FORMAT " ", x);                                                          \
        x &= 0x6F; printf(FORMAT " ", x);                                                          \
        x ^= 0x33; printf(FORMAT " ", x);                                                          \
        x <<= 1; printf(FORMAT " ", x);                                                            \
        x >>= 2; printf(FORMAT " ", x);                                                            \
        x += 1.75; printf(FORMAT " ", x);                                                          \
        x *= 1.5f; printf(FORMAT " ", x);                                                          \
        a[0] = a[1] = x;                                                                           \
        *p++ += 5;                                                                                 \
        *p -= a[0];                                                                                \
        printf(FORMAT " " FORMAT "\n", a[0], a[1]);                                                \
    }

INTEGER_TYPE(test_char, char, "%d")
INTEGER_TYPE(test_schar, signed char, "%d")
INTEGER_TYPE(test_uchar, unsigned char, "%d")
INTEGER_TYPE(test_short, short, "%d")
INTEGER_TYPE(test_ushort, unsigned short, "%d")
INTEGER_TYPE(test_int, int, "%d")
INTEGER_TYPE(test_unsigned, unsigned, "%u")
INTEGER_TYPE(test_long, long, "%ld")
INTEGER_TYPE(test_ulong, unsigned long, "%lu")

static void test_floating(float f, double d, int n)
{
    f += n; d += n; printf("%g %g ", f, d);
    f -= 0.5f; d -= 0.25; printf("%g %g ", f, d);
    f *= 2; d *= f; printf("%g %g ", f, d);
    f /= 4; d /= 8; printf("%g %g\n", f, d);
}

static int chained(int a, int b)
{
    int x, y, z;
    x = y = z = a;
    x += y -= z *= b;
    return x * 100 + y * 10 + z;
}

int main(void)
{
    short s = 10;
    int i = 7;
    double d = 2.5;
    unsigned char c = 250;
    test_char(20, 9); test_schar(-20, 9); test_uchar(20, 9); test_short(100, 9); test_ushort(100, 9);
    test_int(1000, 9); test_unsigned(1000, 9); test_long(1000, 9); test_ulong(1000, 9);
    test_floating(1.5f, 2.25, 3);
    printf("%d\n", chained(3, 2));
    s += 100000;
    i += d;
    d += i;
    c += 10;
    printf("%d %d %g %d\n", s, i, d, c);
    i *= 2.5;
    c *= 100;
    i -= c;
    printf("%d %d\n", i, c);
    return 0;
}
