/* Algebraic identities and chains of constants: what a rewriter may fold must keep its value. */
#include <limits.h>
#include <stdio.h>

static int neutral(int x) { return (x + 0) * 1 - 0 + (x / 1) + (x | 0) + (x & -1) + (x ^ 0) + (int)((unsigned)x << 0) + (x >> 0); }
static int zeros(int x) { return x * 0 + (x - x) + (x & 0) + (x ^ x) + x % 1; }
static int sums(int x) { return ((x + 3) + 5) - ((x - 2) - 7) + (10 - (x + 4)) + (6 - (9 - x)); }
static int products(int x) { return (x * 3) * 5 + (2 * x) * 4 - (x * 7 + x * 2) - 3 * (x + 2); }
static int negations(int x, int y) { return -(-x) + -(x - y) - (-y) + (-x) * (-y) + -(x * 3) + (0 - x); }
static int complements(int x) { return ~~x + ~(-x) - -(~x) + (~x + 1) + (x + ~x); }
static int factored(int x, int y, int z) { return x * y + x * z - (y + z) * x + (x * 4 + y * 4); }
static unsigned wraps(unsigned x) { return (x + 0xFFFFFFF0u) + 0x20u - (x - 5u) + (x * 0x10000u) * 0x10000u; }
static unsigned masks(unsigned x) { return ((x & 0xFFu) & 0x3Fu) + ((x | 0x0Fu) | 0xF0u) + ((x ^ 0xAAu) ^ 0x55u); }
static unsigned shift_pairs(unsigned x) { return ((x << 3) << 2) + ((x >> 4) >> 3) + ((x << 8) >> 8) + ((x >> 8) << 8); }
static unsigned shift_mask(unsigned x) { return ((x >> 4) & 0x0Fu) + ((x & 0xF0u) >> 4) + ((x << 4) & 0xF00u); }
static int compares(int x, int y)
{
    return (x - y == 0) + (x + 5 == y + 5) * 2 + (x - 3 > 0) * 4 + (-x == -y) * 8 + ((x ^ y) == 0) * 16 + (~x == ~y) * 32
           + (x * 2 == 6) * 64 + (3 < x) * 128 + (x == x) * 256 + (x != x) * 512 + (x <= x) * 1024 + (x < x) * 2048;
}
static int compares_masked(unsigned x)
{
    return ((x & 4) == 4) + ((x & 4) == 0) * 2 + ((x & 3) == 7) * 4 + ((x >> 31) == 1) * 8 + ((x | 8) == 0) * 16
           + ((x & 0xFF) < 256) * 32 + ((x >> 24) > 255) * 64 + (x % 4 == 3) * 128 + ((x & 1) != 0) * 256;
}
static int divisions(int x) { return x / 2 + x / 4 / 8 + x % 8 + x * 6 / 3 + (x / 5) * 5 + x % 5 - x / -3 + x % -7; }
static double floats(double x) { return (x + 0.0) * 1.0 - (-x) + x / 2.0 + x / 0.5 - x * 2.0 + (x - x); }

int main(void)
{
    static const int v[] = {0, 1, -1, 2, 3, 5, 7, -8, 100, 255, -1000, 12345};
    int i;
    for (i = 0; i < 12; i++) {
        int x = v[i], y = v[(i + 5) % 12];
        unsigned u = (unsigned)x * 2654435761u;
        printf("%d: %d %d %d %d %d %d %d", x, neutral(x), zeros(x), sums(x), products(x), negations(x, y), complements(x),
               factored(x, y, 3));
        printf(" %x %x %x %x", wraps(u), masks(u), shift_pairs(u), shift_mask(u));
        printf(" %x %x %d %g\n", compares(x, y), compares_masked(u), divisions(x), floats(x));
    }
    printf("%x\n", compares(INT_MAX, INT_MAX));
    return 0;
}
