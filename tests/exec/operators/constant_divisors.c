/* Multiplication, division and remainder by constants of all kinds, signed and unsigned. */
#include <limits.h>
#include <stdio.h>

static unsigned hash;
static void mix(int x) { hash = (hash << 5 | hash >> 27) ^ (unsigned)x; }

#define DIVIDE(K) mix(x / (K)); mix(x % (K)); mix((int)(u / (unsigned)(K))); mix((int)(u % (unsigned)(K)));
#define MULTIPLY(K) mix((int)(u * (unsigned)(K)));

static void divide_all(int x, unsigned u)
{
    DIVIDE(1) DIVIDE(2) DIVIDE(3) DIVIDE(4) DIVIDE(5) DIVIDE(7) DIVIDE(8) DIVIDE(10) DIVIDE(12) DIVIDE(16)
    DIVIDE(25) DIVIDE(60) DIVIDE(64) DIVIDE(100) DIVIDE(127) DIVIDE(128) DIVIDE(255) DIVIDE(256) DIVIDE(641)
    DIVIDE(1000) DIVIDE(1024) DIVIDE(32768) DIVIDE(65535) DIVIDE(65536) DIVIDE(1000000) DIVIDE(0x40000000)
    DIVIDE(INT_MAX)
}

static void divide_negative(int x)
{
    mix(x / -2); mix(x % -2); mix(x / -3); mix(x % -3); mix(x / -8); mix(x % -8); mix(x / -10); mix(x % -10);
    mix(x / -128); mix(x % -128); mix(x / -1000); mix(x % -1000); mix(x / INT_MIN); mix(x % INT_MIN);
    if (x != INT_MIN) { mix(x / -1); mix(x % -1); }
}

static void multiply_all(unsigned u)
{
    MULTIPLY(0) MULTIPLY(1) MULTIPLY(2) MULTIPLY(3) MULTIPLY(5) MULTIPLY(6) MULTIPLY(7) MULTIPLY(9) MULTIPLY(10)
    MULTIPLY(12) MULTIPLY(15) MULTIPLY(17) MULTIPLY(24) MULTIPLY(31) MULTIPLY(33) MULTIPLY(60) MULTIPLY(100)
    MULTIPLY(127) MULTIPLY(255) MULTIPLY(257) MULTIPLY(640) MULTIPLY(1000) MULTIPLY(4095) MULTIPLY(65537)
    MULTIPLY(-1) MULTIPLY(-2) MULTIPLY(-3) MULTIPLY(-7) MULTIPLY(-8) MULTIPLY(-100) MULTIPLY(0x80000000u)
}

static int narrow_divisions(signed char c, unsigned char b, short s, unsigned short w)
{
    return c / 4 + c % 4 * 10 + b / 16 + b % 16 * 3 + s / 8 - s % 8 + w / 32 - w % 32 + c / -2 + b / 255 + w / 1000;
}

int main(void)
{
    static const int v[] = {0, 1, -1, 2, -2, 3, 7, -7, 8, -8, 9, 99, -100, 127, -128, 1023, -1024, 65535, -65536,
                            999999, -1000001, 0x3FFFFFFF, INT_MAX, INT_MAX - 1, INT_MIN, INT_MIN + 1};
    unsigned i;
    for (i = 0; i < sizeof v / sizeof v[0]; i++) {
        hash = 1;
        divide_all(v[i], (unsigned)v[i]);
        printf("%d: %08x ", v[i], hash);
        divide_negative(v[i]);
        printf("%08x ", hash);
        multiply_all((unsigned)v[i]);
        printf("%08x %d\n", hash, narrow_divisions((signed char)v[i], (unsigned char)v[i], (short)v[i], (unsigned short)v[i]));
    }
    return 0;
}
