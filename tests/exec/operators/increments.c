/* ++ and -- in both places, on every type, through pointers, on array elements and members. */
#include <stdio.h>

#define TYPE_TEST(NAME, T)                                                                         \
    static void NAME(void)                                                                         \
    {                                                                                              \
        T x = (T)5, y;                                                                             \
        T a[4];                                                                                    \
        T *p = a;                                                                                  \
        int i;                                                                                     \
        y = x++; printf("%g %g ", (double)x, (double)y);                                           \
        y = ++x; printf("%g %g ", (double)x, (double)y);                                           \
        y = x--; printf("%g %g ", (double)x, (double)y);                                           \
        y = --x; printf("%g %g ", (double)x, (double)y);                                           \
        for (i = 0; i < 4; i++)                                                                    \
            *p++ = x++;                                                                            \
        while (p > a) {                                                                            \
            --*--p;                                                                                \
            (*p)++;                                                                                \
            ++*p;                                                                                  \
        }                                                                                          \
        printf("%g %g %g %g %s\n", (double)a[0], (double)a[1], (double)a[2], (double)a[3], #NAME); \
    }

TYPE_TEST(test_char, char)
TYPE_TEST(test_schar, signed char)
TYPE_TEST(test_uchar, unsigned char)
TYPE_TEST(test_short, short)
TYPE_TEST(test_ushort, unsigned short)
TYPE_TEST(test_int, int)
TYPE_TEST(test_unsigned, unsigned)
TYPE_TEST(test_long, long)
TYPE_TEST(test_float, float)
TYPE_TEST(test_double, double)

struct counter { unsigned char small; short medium; int large; struct { int deep[3]; } inner; };

static void copy(char *to, const char *from)
{
    while ((*to++ = *from++) != 0)
        ;
}

static int backwards(const int *a, int n)
{
    const int *p = a + n;
    int result = 0;
    while (n-- > 0)
        result = result * 10 + *--p;
    return result;
}

int main(void)
{
    struct counter c = {255, 32767, -1, {{1, 2, 3}}};
    struct counter *p = &c;
    unsigned char wrap = 0;
    char text[16];
    static const int digits[] = {1, 2, 3, 4, 5};
    int i = 0, n;
    test_char(); test_schar(); test_uchar(); test_short(); test_ushort();
    test_int(); test_unsigned(); test_long(); test_float(); test_double();
    n = p->small++; printf("%d %d\n", n, c.small);
    n = ++p->medium; printf("%d %d\n", n, c.medium);
    n = c.large++; printf("%d %d\n", n, c.large);
    n = p->inner.deep[i++]--; printf("%d %d %d\n", n, i, c.inner.deep[0]);
    n = --c.inner.deep[i++]; printf("%d %d %d\n", n, i, c.inner.deep[1]);
    n = wrap--; printf("%d %d\n", n, wrap);
    n = ++wrap; printf("%d %d\n", n, wrap);
    copy(text, "increment");
    printf("%s %d\n", text, backwards(digits, 5));
    return 0;
}
