/* Additive and multiplicative operators on int and long: variables, parameters, constants folded. */
#include <limits.h>
#include <stdio.h>

static const int values[] = {0, 1, -1, 2, -2, 7, -7, 10, 100, -128, 255, 4096, -32768, 46340, 1000000};
#define COUNT ((int)(sizeof values / sizeof values[0]))

static int fits_product(int a, int b) { return (double)a * b < 2147483647.0 && (double)a * b > -2147483648.0; }

static void int_pairs(void)
{
    int i, j;
    unsigned hash = 0;
    for (i = 0; i < COUNT; i++)
        for (j = 0; j < COUNT; j++) {
            int a = values[i], b = values[j];
            hash = hash * 31 + (unsigned)(a + b);
            hash = hash * 31 + (unsigned)(a - b);
            if (fits_product(a, b))
                hash = hash * 31 + (unsigned)(a * b);
            if (b != 0) {
                hash = hash * 31 + (unsigned)(a / b);
                hash = hash * 31 + (unsigned)(a % b);
                if (a % b != a - a / b * b)
                    printf("remainder rule broken for %d %d\n", a, b);
            }
        }
    printf("int pairs %08x\n", hash);
}

static void long_pairs(void)
{
    int i, j;
    long sum = 0, mixed = 0;
    for (i = 0; i < COUNT; i++)
        for (j = 0; j < COUNT; j++) {
            long a = values[i];
            long b = values[j];
            sum += (a + b) % 1000;
            if (b != 0)
                mixed = (mixed + a / b - a % b) % 100003L;
        }
    printf("long pairs %ld %ld\n", sum, mixed);
}

static int polynomial(int x) { return ((3 * x - 5) * x + 7) * x - 11; }
static int mixed_signs(int a, int b, int c) { return -a + b - -c - (a - (b - c)) + (-(a + b)); }

int main(void)
{
    int x;
    int_pairs();
    long_pairs();
    for (x = -5; x <= 5; x++)
        printf("%d:%d:%d ", x, polynomial(x), mixed_signs(x, x * x, 3 - x));
    printf("\n");
    printf("%d %d %d %d\n", 7 / 2, -7 / 2, 7 / -2, -7 / -2);
    printf("%d %d %d %d\n", 7 % 2, -7 % 2, 7 % -2, -7 % -2);
    printf("%d %d %d\n", INT_MAX / 2 + INT_MAX / 2, INT_MIN / 2 - 1, INT_MIN + INT_MAX);
    x = INT_MAX;
    printf("%d %d %d\n", x - 1, x / 3, x % 10);
    x = INT_MIN;
    printf("%d %d %d %d\n", x + 1, x / 3, x % 10, x / 65536);
    return polynomial(3) & 127;
}
