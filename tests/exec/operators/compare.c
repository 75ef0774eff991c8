/* Relations of every arithmetic type and of mixed pairs, as values and as conditions. */
#include <stdio.h>

#define RELATIONS(a, b) (((a) < (b)) | ((a) <= (b)) << 1 | ((a) > (b)) << 2 | ((a) >= (b)) << 3 | ((a) == (b)) << 4 | ((a) != (b)) << 5)
#define BRANCHES(n, a, b)                                                                          \
    n = 0;                                                                                         \
    if ((a) < (b)) n += 1;                                                                         \
    if (!((a) <= (b))) n += 2;                                                                     \
    if ((a) > (b)) n += 4; else n += 8;                                                            \
    while ((a) >= (b)) { n += 16; break; }                                                         \
    n += (a) == (b) ? 32 : 64;                                                                     \
    n += !((a) != (b)) ? 128 : 256;

#define TEST(NAME, TA, TB)                                                                         \
    static void NAME(void)                                                                         \
    {                                                                                              \
        static const TA left[] = {(TA)0, (TA)1, (TA)-1, (TA)127, (TA)-128, (TA)65535};             \
        static const TB right[] = {(TB)0, (TB)1, (TB)-1, (TB)127, (TB)-128, (TB)65535};            \
        int i, j, n;                                                                               \
        unsigned hash = 0;                                                                         \
        for (i = 0; i < 6; i++)                                                                    \
            for (j = 0; j < 6; j++) {                                                              \
                TA a = left[i];                                                                    \
                TB b = right[j];                                                                   \
                BRANCHES(n, a, b)                                                                  \
                hash = hash * 37 + (unsigned)RELATIONS(a, b) * 5 + (unsigned)n;                    \
            }                                                                                      \
        printf("%s %08x\n", #NAME, hash);                                                          \
    }

TEST(char_char, char, char)
TEST(schar_uchar, signed char, unsigned char)
TEST(uchar_short, unsigned char, short)
TEST(short_ushort, short, unsigned short)
TEST(ushort_int, unsigned short, int)
TEST(int_int, int, int)
TEST(int_long, int, long)
TEST(long_ulong, long, unsigned long)
TEST(uint_uint, unsigned, unsigned)
TEST(schar_uint, signed char, unsigned)
TEST(short_ulong, short, unsigned long)
TEST(int_double, int, double)
TEST(schar_float, signed char, float)
TEST(float_float, float, float)
TEST(float_double, float, double)
TEST(double_double, double, double)
TEST(double_long, double, long)

static int between(int x, int low, int high) { return x >= low && x <= high; }
static int between_unsigned(int x) { return (unsigned)(x - 10) <= 20u; }
static int constants(unsigned u, signed char c, unsigned char b)
{
    int n = 0;
    if (u < 1) n += 1;
    if (u > 0x7FFFFFFF) n += 2;
    if (c < 128) n += 4;
    if (c == 200) n += 8;
    if (b >= 0) n += 16;
    if (b == 255) n += 32;
    if (c > -129) n += 64;
    if (b + 1 > b) n += 128;
    return n;
}

int main(void)
{
    int i;
    char_char(); schar_uchar(); uchar_short(); short_ushort(); ushort_int(); int_int(); int_long(); long_ulong();
    uint_uint(); schar_uint(); short_ulong(); int_double(); schar_float(); float_float(); float_double();
    double_double(); double_long();
    for (i = 8; i < 34; i += 3)
        printf("%d%d ", between(i, 10, 30), between_unsigned(i));
    printf("\n%d %d %d\n", constants(0, -1, 255), constants(0x80000000u, 127, 0), constants(1, -128, 200));
    return 0;
}
