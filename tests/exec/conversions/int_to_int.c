/* Every pair of integer types: by assignment, by cast, and by a cast of a cast. */
#include <stdio.h>

static const long samples[] = {0L, 1L, -1L, 127L, 128L, -128L, -129L, 255L, 256L, 32767L, 32768L, -32768L, -32769L,
                               65535L, 65536L, 0x7FFFFFFFL, -0x7FFFFFFFL - 1L, 0x12345678L};
#define COUNT ((int)(sizeof samples / sizeof samples[0]))

#define TO(T, x) ((unsigned)(T)(x))
#define FROM(NAME, F)                                                                              \
    static void NAME(void)                                                                         \
    {                                                                                              \
        unsigned hash = 0;                                                                         \
        int i;                                                                                     \
        for (i = 0; i < COUNT; i++) {                                                              \
            F f = (F)samples[i];                                                                   \
            char c; signed char sc; unsigned char uc; short s; unsigned short us;                  \
            int n; unsigned u; long l; unsigned long ul;                                           \
            c = f; sc = f; uc = f; s = f; us = f; n = f; u = f; l = f; ul = f;                     \
            hash = hash * 7 + (unsigned)c; hash = hash * 7 + (unsigned)sc;                         \
            hash = hash * 7 + uc; hash = hash * 7 + (unsigned)s;                                   \
            hash = hash * 7 + us; hash = hash * 7 + (unsigned)n;                                   \
            hash = hash * 7 + u; hash = hash * 7 + (unsigned)l; hash = hash * 7 + (unsigned)ul;    \
            hash = hash * 7 + TO(char, f) + TO(signed char, f) + TO(unsigned char, f);             \
            hash = hash * 7 + TO(short, f) + TO(unsigned short, f) + TO(int, f);                   \
            hash = hash * 7 + TO(short, (signed char)f) + TO(unsigned short, (signed char)f);      \
            hash = hash * 7 + TO(signed char, (unsigned short)f) + TO(unsigned, (short)f);         \
            hash = hash * 7 + TO(unsigned char, (short)(signed char)f);                            \
            hash = hash * 7 + TO(short, (unsigned char)f) + TO(int, (unsigned short)(unsigned char)f); \
        }                                                                                          \
        printf("%s %08x\n", #NAME, hash);                                                          \
    }

FROM(from_char, char)
FROM(from_schar, signed char)
FROM(from_uchar, unsigned char)
FROM(from_short, short)
FROM(from_ushort, unsigned short)
FROM(from_int, int)
FROM(from_unsigned, unsigned)
FROM(from_long, long)
FROM(from_ulong, unsigned long)

static void plain(int x)
{
    printf("%d: %d %d %d %d", x, (signed char)x, (unsigned char)x, (short)x, (unsigned short)x);
    printf(" %d %d %d", (signed char)(x + 1), (short)(x * 3 / 3), (unsigned char)(x >> 4));
    printf(" %d %d\n", (signed char)x == x, (unsigned short)x == x);
}

int main(void)
{
    int i;
    from_char(); from_schar(); from_uchar(); from_short(); from_ushort(); from_int(); from_unsigned(); from_long();
    from_ulong();
    for (i = 0; i < 15; i++)
        plain((int)samples[i]);
    return 0;
}
