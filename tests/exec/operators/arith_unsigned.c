/* unsigned and unsigned long: arithmetic that wraps, division of large values, unary minus. */
#include <limits.h>
#include <stdio.h>

static const unsigned values[] = {0u,      1u,          2u,          3u,          7u,         10u,
                                  255u,    65535u,      65536u,      0x7FFFFFFFu, 0x80000000u, 0x80000001u,
                                  0xAAAAAAAAu, 0xFFFFFFFEu, 0xFFFFFFFFu};
#define COUNT (sizeof values / sizeof values[0])

static void row(unsigned a, unsigned b)
{
    unsigned hash = a + b;
    hash = hash * 33u + (a - b);
    hash = hash * 33u + a * b;
    hash = hash * 33u + (-a);
    if (b) {
        hash = hash * 33u + a / b;
        hash = hash * 33u + a % b;
    }
    printf("%x ", hash);
}

static unsigned long collatz(unsigned long n)
{
    unsigned long steps = 0;
    while (n != 1ul) {
        n = n % 2ul ? 3ul * n + 1ul : n / 2ul;
        ++steps;
    }
    return steps;
}

static unsigned average(unsigned a, unsigned b) { return (a & b) + (a ^ b) / 2; }

int main(void)
{
    unsigned i, j;
    for (i = 0; i < COUNT; i++) {
        for (j = 0; j < COUNT; j += 2)
            row(values[i], values[j]);
        printf("\n");
    }
    printf("%lu %lu %lu\n", collatz(27), collatz(97), collatz(871));
    printf("%u %u\n", average(UINT_MAX, UINT_MAX - 2), average(1, 4));
    printf("%u %u %u\n", 0u - 1u, UINT_MAX + 2u, UINT_MAX * UINT_MAX);
    printf("%u %u\n", UINT_MAX / 10u, UINT_MAX % 10u);
    {
        unsigned u = 5;
        int s = -3;
        printf("%u %d %u\n", u + s, (int)(u * s), s / u);
    }
    return 0;
}
