/* Assertions that hold: what they tell about values must not change what the program does. */
#include <assert.h>
#include <stdio.h>

static int checks;
static int count(int x) { checks++; return x; }

static int range(int x)
{
    assert(x >= 0);
    if (x < 0) return -1;
    assert(x < 100 && x != 50);
    return x > 99 ? -2 : x * 2;
}

static int pointer(const int *p)
{
    assert(p);
    return p ? *p : -1;
}

static int equality(int a, int b)
{
    assert(a == b);
    a++;
    return a == b ? -1 : a + b;
}

static int in_loop(int n)
{
    int i, s = 0;
    assert(n > 0);
    for (i = 0; i < n; i++) {
        assert(i < n);
        s += i;
        assert(s >= i);
    }
    assert(i == n);
    return s;
}

static int in_branches(int x)
{
    int r;
    if (x & 1) {
        assert(x % 2 != 0);
        r = 1;
    } else {
        assert(x % 2 == 0);
        r = 2;
    }
    assert(r == 1 || r == 2);
    switch (x) {
    case 3: r = 30; break;
    case 4: r = 40; break;
    default: assert(x != 3 && x != 4);
    }
    return r;
}

static int with_effects(void)
{
    int x = 0;
    assert(count(1));
    assert(++x);
    assert((x = 5) == 5);
    return x;
}

static unsigned factorial(unsigned n)
{
    unsigned r;
    assert(n <= 12);
    r = n ? n * factorial(n - 1) : 1;
    assert(r >= n);
    return r;
}

static double real(double d)
{
    assert(d > 0.0);
    return d > 0 ? 1 / d : 0;
}

int main(void)
{
    int v = 9, i;
    printf("%d %d\n", range(0), range(99));
    printf("%d %d %d\n", pointer(&v), equality(4, 4), in_loop(10));
    for (i = 1; i < 6; i++)
        printf("%d ", in_branches(i));
    printf("\n%d", with_effects());
    printf(" %d\n", checks);
    printf("%u %g\n", factorial(10), real(0.5));
    assert("text is true");
    assert(1);
    return 0;
}
