/* Operators on char and short types: promotion to int, and results narrowed again on storing. */
#include <stdio.h>

#define SAMPLES 8
static const int samples[SAMPLES] = {0, 1, -1, 100, 127, -128, 200, 32767};

#define TEST_TYPE(NAME, T)                                                                         \
    static void test_##NAME(void)                                                                  \
    {                                                                                              \
        int i, j;                                                                                  \
        unsigned wide = 0, narrow = 0;                                                             \
        for (i = 0; i < SAMPLES; i++)                                                              \
            for (j = 0; j < SAMPLES; j++) {                                                        \
                T a = (T)samples[i];                                                               \
                T b = (T)samples[j];                                                               \
                T c;                                                                               \
                wide = wide * 17 + (unsigned)(a + b);                                              \
                wide = wide * 17 + (unsigned)(a - b);                                              \
                wide = wide * 17 + (unsigned)(a * (b & 0x3FFF));                                   \
                wide = wide * 17 + (unsigned)(a < b) + (unsigned)(a == b);                         \
                wide = wide * 17 + (unsigned)~a + (unsigned)-b + (unsigned)!a;                     \
                c = (T)(a + b);                                                                    \
                narrow = narrow * 17 + (unsigned)c;                                                \
                c = (T)(a * (b & 0x3FFF));                                                         \
                narrow = narrow * 17 + (unsigned)c;                                                \
                if (b != 0) {                                                                      \
                    c = (T)(a / b);                                                                \
                    narrow = narrow * 17 + (unsigned)c;                                            \
                    c = (T)(a % b);                                                                \
                    narrow = narrow * 17 + (unsigned)c;                                            \
                }                                                                                  \
                c = (T)(a ^ b);                                                                    \
                narrow = narrow * 17 + (unsigned)c + (unsigned)(T)(a | b) + (unsigned)(T)(a & b);  \
            }                                                                                      \
        printf("%-6s %08x %08x size %d\n", #NAME, wide, narrow, (int)sizeof(T));                   \
    }

TEST_TYPE(char, char)
TEST_TYPE(schar, signed char)
TEST_TYPE(uchar, unsigned char)
TEST_TYPE(short, short)
TEST_TYPE(ushort, unsigned short)

static unsigned char rotate_left(unsigned char x, int n) { return (unsigned char)((x << n) | (x >> (8 - n))); }
static short clamp(int x) { return (short)(x > 32767 ? 32767 : x < -32768 ? -32768 : x); }
static signed char sum_bytes(const signed char *p, int n)
{
    signed char total = 0;
    while (n-- > 0)
        total = (signed char)(total + *p++);
    return total;
}

int main(void)
{
    static const signed char bytes[] = {100, 100, 100, -1, -128, 7};
    int i;
    test_char();
    test_schar();
    test_uchar();
    test_short();
    test_ushort();
    for (i = 1; i < 8; i++)
        printf("%02x ", rotate_left(0xB1, i));
    printf("\n%d %d %d\n", clamp(40000), clamp(-40000), clamp(123));
    for (i = 0; i <= 6; i++)
        printf("%d ", sum_bytes(bytes, i));
    printf("\n");
    return 0;
}
