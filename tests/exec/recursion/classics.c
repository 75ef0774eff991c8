/* Recursive functions of many shapes: one call, two calls, tail calls, mutual, through a pointer. */
#include <stdio.h>

static int factorial(int n) { return n <= 1 ? 1 : n * factorial(n - 1); }
static int fibonacci(int n) { return n < 2 ? n : fibonacci(n - 1) + fibonacci(n - 2); }
static int ackermann(int m, int n)
{
    int inner;
    if (m == 0) return n + 1;
    if (n == 0) return ackermann(m - 1, 1);
    inner = ackermann(m, n - 1);
    return ackermann(m - 1, inner);
}
static int gcd(int a, int b) { return b == 0 ? a : gcd(b, a % b); }
static int gcd_if(int a, int b) { if (b == 0) return a; return gcd_if(b, a % b); }
static int sum_to(int n, int acc) { if (n == 0) return acc; return sum_to(n - 1, acc + n); }
static int swapped(int a, int b, int n) { if (n == 0) return a * 100 + b; return swapped(b, a + 1, n - 1); }
static void count_down(int n, int *steps) { if (n <= 0) return; ++*steps; count_down(n - 2, steps); }
static unsigned power(unsigned b, unsigned e)
{
    unsigned h;
    if (e == 0) return 1;
    h = power(b, e / 2);
    return e & 1 ? h * h * b : h * h;
}

static int is_odd(unsigned n);
static int is_even(unsigned n) { return n == 0 ? 1 : is_odd(n - 1); }
static int is_odd(unsigned n) { return n == 0 ? 0 : is_even(n - 1); }

static int female(int n);
static int male(int n) { return n == 0 ? 0 : n - female(male(n - 1)); }
static int female(int n) { return n == 0 ? 1 : n - male(female(n - 1)); }

static int moves;
static void hanoi(int n, char from, char to, char via)
{
    if (n == 0) return;
    hanoi(n - 1, from, via, to);
    moves = (moves * 7 + from * 3 + to) % 100003;
    hanoi(n - 1, via, to, from);
}

static int apply(int (*f)(int), int depth, int x) { return depth == 0 ? x : f(apply(f, depth - 1, x)); }
static int triple(int x) { return x * 3 + 1; }

static void digits(unsigned n, unsigned base)
{
    if (n >= base) digits(n / base, base);
    putchar("0123456789ABCDEF"[n % base]);
}

static int collatz(int n, int steps)
{
    if (n == 1) return steps;
    if (n & 1) return collatz(3 * n + 1, steps + 1);
    return collatz(n / 2, steps + 1);
}

static int address_of_parameter(int n, int *outer)
{
    int mine = n * 2;
    if (n == 0) return *outer;
    *outer += n;
    return address_of_parameter(n - 1, &mine) + *outer;
}

int main(void)
{
    int steps = 0, start = 1;
    printf("%d %d %d\n", factorial(10), fibonacci(18), ackermann(2, 5));
    printf("%d %d %d\n", gcd(1071, 462), gcd_if(17, 5), sum_to(1000, 0));
    printf("%d %d\n", swapped(1, 2, 7), swapped(1, 2, 8));
    count_down(21, &steps);
    printf("%d %u %u\n", steps, power(3, 13), power(7, 0));
    printf("%d %d %d %d\n", is_even(50), is_odd(50), male(20), female(20));
    hanoi(9, 'a', 'b', 'c');
    printf("%d %d\n", moves, apply(triple, 6, 1));
    digits(3735928559u, 16); putchar(' '); digits(1000, 7); putchar('\n');
    printf("%d %d\n", collatz(27, 0), address_of_parameter(6, &start));
    return gcd(84, 36);
}
