/* Declarations anywhere, in for, after labels and in switches; // comments; mixed with statements. */
#include <stdint.h>
#include <stdio.h>

static int scopes(int n)
{
    int total = 0;
    for (int i = 0; i < n; i++)
        for (int j = i; j < n; j++) {
            int product = i * j;
            total += product;
            int square = product * product;
            total += square % 7;
        }
    int i = 100;
    total += i;
    for (int i = 0, k = 10; i < k; i++, k--)
        total += i * k;
    if (total > 5) {
        int i = total / 2;
        total -= i;
    }
    return total + i;
}

static int in_switch(int x)
{
    switch (x) {
        int kept;
    case 1:
        kept = 5;
        return kept + x;
    case 2: {
        int own = 7;
        kept = own;
    }
    default:
        kept = 9;
        return kept * x;
    }
}

static int jumps(int n)
{
    int r = 0;
again:;
    int fresh = n * 2;
    r += fresh;
    if (--n > 0)
        goto again;
    return r;
}

static int fixed_sizes(void)
{
    int8_t a = (int8_t)200;
    uint8_t b = (uint8_t)-1;
    int16_t c = (int16_t)40000;
    uint16_t d = (uint16_t)-1;
    int32_t e = INT32_MAX;
    uint32_t f = UINT32_MAX;
    return a + b + c + d + (e == INT32_MAX) + (f == 0xFFFFFFFFu);
}

static int restricted(int *restrict p, const int *restrict q, int n)
{
    int t = 0;
    for (int i = 0; i < n; i++) {
        p[i] += q[i];
        t += p[i];
    }
    return t;
}

static int array_parameter(int v[static 3]) { return v[0] + v[1] + v[2]; }

struct flexible { int count; short data[]; };
static union { struct flexible f; int room[8]; } storage;

static int fill(struct flexible *f, int n)
{
    f->count = n;
    for (int i = 0; i < n; i++)
        f->data[i] = (short)(i * i - 3);
    int t = 0;
    for (int i = f->count - 1; i >= 0; i--)
        t = t * 2 + f->data[i];
    return t;
}

struct outer { int a; struct { int b; union { int c; unsigned char d[4]; }; }; };

int main(void)
{
    printf("%d %d\n", scopes(6), scopes(0)); // a comment to the end of the line
    printf("%d %d %d\n", in_switch(1), in_switch(2), in_switch(3));
    printf("%d %d\n", jumps(4), fixed_sizes());
    int v[3] = {1, 2, 3}, w[3] = {10, 20, 30};
    printf("%d", restricted(v, w, 3));
    printf(" %d\n", array_parameter(v));
    printf("%d %d\n", fill(&storage.f, 10), (int)sizeof(struct flexible));
    struct outer o = {1, {2, {0x01020304}}};
    o.b += o.d[0] + o.a;
    printf("%d %d\n", o.b, o.d[3]);
    printf("%s %d\n", __func__, 0x1p3 == 8.0);
    return 0;
}
