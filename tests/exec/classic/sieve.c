/* Prime numbers: a byte sieve, a bit sieve, trial division, and factorization. */
#include <stdio.h>

#define LIMIT 8000
static char composite[LIMIT + 1];
static unsigned bits[LIMIT / 64 + 1];

static int byte_sieve(void)
{
    int i, j, count = 0;
    for (i = 2; i * i <= LIMIT; i++)
        if (!composite[i])
            for (j = i * i; j <= LIMIT; j += i)
                composite[j] = 1;
    for (i = 2; i <= LIMIT; i++)
        count += !composite[i];
    return count;
}

static int bit_sieve(void)
{
    unsigned i, j;
    int count = 1;
    for (i = 3; i <= LIMIT; i += 2) {
        if (bits[i >> 6] & 1u << (i >> 1 & 31))
            continue;
        count++;
        if (i < 100)
            for (j = i * i; j <= LIMIT; j += 2 * i)
                bits[j >> 6] |= 1u << (j >> 1 & 31);
    }
    return count;
}

static int is_prime(unsigned n)
{
    unsigned d;
    if (n < 4)
        return n > 1;
    if (n % 2 == 0 || n % 3 == 0)
        return 0;
    for (d = 5; d * d <= n; d += 6)
        if (n % d == 0 || n % (d + 2) == 0)
            return 0;
    return 1;
}

static void factors(unsigned n)
{
    unsigned d;
    printf("%u =", n);
    for (d = 2; d * d <= n; d++) {
        int power = 0;
        while (n % d == 0) {
            n /= d;
            power++;
        }
        if (power)
            printf(power > 1 ? " %u^%d" : " %u", d, power);
    }
    if (n > 1)
        printf(" %u", n);
    printf("\n");
}

static unsigned modular_power(unsigned b, unsigned e, unsigned m)
{
    unsigned r = 1;
    for (b %= m; e; e >>= 1) {
        if (e & 1)
            r = r * b % m;
        b = b * b % m;
    }
    return r;
}

int main(void)
{
    int i, count = 0, fermat = 0;
    printf("%d %d\n", byte_sieve(), bit_sieve());
    for (i = 0; i < 4000; i++)
        count += is_prime((unsigned)i);
    for (i = 3; i < 2000; i += 2)
        fermat += modular_power(2, (unsigned)i - 1, (unsigned)i) == 1;
    printf("%d %d\n", count, fermat);
    factors(360); factors(9973); factors(123456); factors(65535); factors(1u << 20);
    return 0;
}
