/* Unsigned bit fields of every width from 1 to 32, at every position that the layout gives them. */
#include <stdio.h>
#include <string.h>

struct rising { unsigned a1:1, a2:2, a3:3, a4:4, a5:5, a6:6, a7:7, a8:8, a9:9, a10:10, a11:11, a12:12, a13:13, a14:14,
    a15:15, a16:16; };
struct falling { unsigned b32:32, b31:31, b30:30, b29:29, b28:28, b27:27, b26:26, b25:25, b24:24, b23:23, b22:22, b21:21,
    b20:20, b19:19, b18:18, b17:17; };

static struct rising r;
static struct falling f;

static unsigned bytes_hash(const void *p, unsigned n)
{
    const unsigned char *c = p;
    unsigned h = 0;
    while (n--)
        h = h * 131 + *c++;
    return h;
}

static void fill_rising(unsigned v)
{
    r.a1 = v; r.a2 = v + 1; r.a3 = v * 3; r.a4 = v; r.a5 = v ^ 9; r.a6 = v; r.a7 = v * 5; r.a8 = v >> 1; r.a9 = v;
    r.a10 = v * 7; r.a11 = v; r.a12 = v + 100; r.a13 = v; r.a14 = v * 9; r.a15 = v; r.a16 = v * 11;
}

static unsigned sum_rising(void)
{
    return r.a1 + r.a2 * 2 + r.a3 * 3 + r.a4 * 4 + r.a5 * 5 + r.a6 * 6 + r.a7 * 7 + r.a8 * 8 + r.a9 * 9 + r.a10 * 10
           + r.a11 * 11 + r.a12 * 12 + r.a13 * 13 + r.a14 * 14 + r.a15 * 15 + r.a16 * 16;
}

static void fill_falling(struct falling *p, unsigned v)
{
    p->b32 = v; p->b31 = ~v; p->b30 = v * 3; p->b29 = v; p->b28 = v * 5; p->b27 = v; p->b26 = ~v; p->b25 = v;
    p->b24 = v * 7; p->b23 = v; p->b22 = v; p->b21 = ~v; p->b20 = v * 9; p->b19 = v; p->b18 = v * 11; p->b17 = v;
}

static unsigned sum_falling(const struct falling *p)
{
    unsigned h = p->b32;
    h = h * 3 + p->b31; h = h * 3 + p->b30; h = h * 3 + p->b29; h = h * 3 + p->b28; h = h * 3 + p->b27;
    h = h * 3 + p->b26; h = h * 3 + p->b25; h = h * 3 + p->b24; h = h * 3 + p->b23; h = h * 3 + p->b22;
    h = h * 3 + p->b21; h = h * 3 + p->b20; h = h * 3 + p->b19; h = h * 3 + p->b18; h = h * 3 + p->b17;
    return h;
}

static void single_ones(void)
{
    memset(&r, 0, sizeof r);
    r.a1 = 1; printf("%08x ", bytes_hash(&r, sizeof r)); r.a1 = 0;
    r.a7 = 127; printf("%08x ", bytes_hash(&r, sizeof r)); r.a7 = 0;
    r.a11 = 1024; printf("%08x ", bytes_hash(&r, sizeof r)); r.a11 = 0;
    r.a16 = 65535; printf("%08x ", bytes_hash(&r, sizeof r)); r.a16 = 0;
    printf("%08x\n", bytes_hash(&r, sizeof r));
}

int main(void)
{
    unsigned v;
    printf("%d %d\n", (int)sizeof r, (int)sizeof f);
    for (v = 1; v < 0x80000000u; v = v * 13 + 7) {
        fill_rising(v);
        fill_falling(&f, v);
        printf("%08x %u %08x %08x\n", v, sum_rising(), sum_falling(&f), bytes_hash(&f, sizeof f));
        if (v > 0x20000000u)
            break;
    }
    single_ones();
    r.a3 = 9;
    r.a5 = 33;
    printf("%u %u %d\n", r.a3, r.a5, r.a3 - 2 < 0);
    return 0;
}
