/* Shifts of every integer type by constants and variables, and pairs of shifts that extract fields. */
#include <stdio.h>

static int extract_signed(int x, int low, int width) { return (int)((unsigned)x << (32 - low - width)) >> (32 - width); }
static unsigned extract_unsigned(unsigned x, int low, int width) { return x << (32 - low - width) >> (32 - width); }
static int low_byte_signed(int x) { return (int)((unsigned)x << 24) >> 24; }
static unsigned low_half(unsigned x) { return x << 16 >> 16; }
static unsigned middle(unsigned x) { return (x >> 8) & 0xFFu; }
static int double_right(int x) { return x >> 3 >> 4; }
static unsigned too_far(unsigned x) { return x >> 20 >> 20; }
static unsigned rotate(unsigned x, int n) { return n ? (x << n) | (x >> (32 - n)) : x; }

static void narrow(void)
{
    signed char c = -100;
    unsigned char uc = 200;
    short s = -20000;
    unsigned short us = 50000;
    int n;
    for (n = 0; n < 8; n++) {
        printf("%d %d %d %d | ", c >> n, uc >> n, s >> n, us >> n);
        printf("%d %d ", uc << n, us << n);
        printf("%d %d\n", (unsigned char)(uc << n), (short)(us << n));
    }
    c >>= 2;
    uc >>= 2;
    s >>= 2;
    us >>= 2;
    printf("%d %d %d %d\n", c, uc, s, us);
    uc <<= 3;
    us <<= 3;
    printf("%d %d\n", uc, us);
}

static void by_types(int x, unsigned char n, short m, long k, unsigned u)
{
    printf("%d %d %d %d\n", x << n, x >> m, x << k, x >> u);
}

int main(void)
{
    static const unsigned v[] = {0x12345678u, 0x87654321u, 0xFFFFFFFFu, 0x80000000u, 1u};
    int i, n;
    for (i = 0; i < 5; i++) {
        unsigned u = v[i];
        int s = (int)u;
        for (n = 0; n < 32; n += 5)
            printf("%x %x %d ", u << n, u >> n, s >> n);
        printf("\n%d %u %d %x %x %d %x\n", extract_signed(s, 4, 9), extract_unsigned(u, 4, 9), low_byte_signed(s),
               low_half(u), middle(u), double_right(s), too_far(u));
        printf("%x %x %x\n", rotate(u, 0), rotate(u, 7), rotate(u, 31));
    }
    narrow();
    by_types(1234, 3, 2, 5L, 1u);
    printf("%d %d %u %d\n", 1 << 10, -64 >> 3, 0xF0000000u >> 28, 1 << 3 << 2);
    return 0;
}
