/* & | ^ ~ in the shapes that a simplifier knows: masks, De Morgan, absorption, merges, tests. */
#include <stdio.h>

static unsigned merge(unsigned a, unsigned b, unsigned mask) { return a ^ ((a ^ b) & mask); }
static unsigned select_bits(unsigned a, unsigned b, unsigned mask) { return (a & mask) | (b & ~mask); }
static int de_morgan(unsigned a, unsigned b) { return ~(a & b) == (~a | ~b) && ~(a | b) == (~a & ~b); }
static unsigned absorb(unsigned a, unsigned b) { return (a & (a | b)) + (a | (a & b)) * 2; }
static unsigned chains(unsigned x) { return ((x & 0xFF00FFu) | 0x1100u) & 0xFFF0FFFFu ^ 0x55u; }
static unsigned cleared(unsigned x) { return (x & 0xF0u & 0x0Fu) | (x ^ x) | (x & 0u); }
static unsigned all_ones(unsigned x) { return (x | ~x) & (x | 0xFFFFFFFFu); }

static int population(unsigned x)
{
    x = x - ((x >> 1) & 0x55555555u);
    x = (x & 0x33333333u) + ((x >> 2) & 0x33333333u);
    x = (x + (x >> 4)) & 0x0F0F0F0Fu;
    return (int)((x * 0x01010101u) >> 24);
}

static unsigned reverse(unsigned x)
{
    x = ((x >> 1) & 0x55555555u) | ((x & 0x55555555u) << 1);
    x = ((x >> 2) & 0x33333333u) | ((x & 0x33333333u) << 2);
    x = ((x >> 4) & 0x0F0F0F0Fu) | ((x & 0x0F0F0F0Fu) << 4);
    x = ((x >> 8) & 0x00FF00FFu) | ((x & 0x00FF00FFu) << 8);
    return (x >> 16) | (x << 16);
}

static int tests(int flags)
{
    int result = 0;
    if (flags & 1)
        result += 1;
    if (!(flags & 2))
        result += 10;
    if ((flags & 12) == 12)
        result += 100;
    if ((flags & 0x30) != 0x10)
        result += 1000;
    if (flags & 0x80000000)
        result += 10000;
    if ((flags ^ 0xFF) & 0x40)
        result += 100000;
    return result;
}

static int lowest_bit(int x) { return x & -x; }
static int is_power(unsigned x) { return x != 0 && (x & (x - 1)) == 0; }
static short narrow_masks(short s, unsigned char c) { return (short)((s & 0x0FF0) | (c ^ 0x0F) & 0xFF); }

int main(void)
{
    static const unsigned v[] = {0, 1, 0x80000000u, 0xFFFFFFFFu, 0x12345678u, 0xDEADBEEFu, 0x0F0F0F0Fu, 48};
    int i, j;
    for (i = 0; i < 8; i++) {
        unsigned a = v[i];
        printf("%08x: %d %08x %08x %x %x %d %d %d\n", a, population(a), reverse(a), chains(a), cleared(a),
               all_ones(a), lowest_bit((int)(a & 0x7FFFFFFF)), is_power(a), tests((int)a));
        for (j = 0; j < 8; j++) {
            unsigned b = v[j];
            if (!de_morgan(a, b) || merge(a, b, v[4]) != select_bits(b, a, v[4]))
                printf("rule broken for %x %x\n", a, b);
            if (absorb(a, b) != 3 * a)
                printf("absorption broken for %x %x\n", a, b);
        }
        printf("  %d\n", narrow_masks((short)a, (unsigned char)(a >> 8)));
    }
    return population(0xDEADBEEFu);
}
