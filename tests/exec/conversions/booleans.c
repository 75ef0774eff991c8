/* _Bool: conversions to it, arithmetic with it, as parameter, result, member, array and bit field. */
#include <stdio.h>

struct flags { _Bool a; char pad; _Bool b; _Bool bit : 1; unsigned rest : 7; };
static _Bool global = 42;
static _Bool table[4] = {0, 1, 2, -1};

static _Bool negate(_Bool x) { return !x; }
static _Bool from_int(int x) { return x; }
static _Bool from_double(double x) { return x; }
static _Bool from_pointer(const void *p) { return p; }
static int count(const _Bool *p, int n)
{
    int total = 0;
    while (n-- > 0)
        total += *p++;
    return total;
}

int main(void)
{
    struct flags f = {3, 'x', 0, 1, 100};
    _Bool b = 0;
    int i;
    printf("%d %d\n", global, count(table, 4));
    for (i = -2; i <= 2; i++)
        printf("%d%d ", from_int(i), negate(from_int(i)));
    printf("%d %d %d %d\n", from_double(0.0), from_double(0.001), from_pointer(&f), from_pointer(0));
    b += 5; printf("%d ", b);
    b -= 1; printf("%d ", b);
    b |= 4; printf("%d ", b);
    b ^= 1; printf("%d ", b);
    b++; printf("%d ", b);
    b++; printf("%d ", b);
    b *= 0; printf("%d\n", b);
    f.b = 0x100;
    f.bit = f.a + f.b > 5;
    printf("%d %d %d %d\n", f.a, f.b, f.bit, f.rest);
    f.bit = 2;
    f.a = (unsigned char)256;
    printf("%d %d %d\n", f.a, f.bit, (int)sizeof(_Bool));
    printf("%d %d %d\n", b < 1, (b ? 10 : 20) + (_Bool)7, ~(_Bool)9);
    return table[2] + table[3];
}
