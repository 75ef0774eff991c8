/* Each operator and type on volatile operands, so that nothing is folded before run time. */
#include <stdio.h>

static volatile signed char c = -7;
static volatile unsigned char b = 200;
static volatile short s = -3000;
static volatile unsigned short w = 50000;
static volatile int i = 123456, zero = 0, three = 3;
static volatile unsigned u = 4000000000u;
static volatile float f = 2.5f;
static volatile double d = -0.75;
static volatile struct { unsigned x : 5; int y : 7; } field = {17, -20};
static int *volatile vp;
static int target[3] = {5, 6, 7};

static void binary(void)
{
    printf("%d %d %d %d %d\n", c + b, s - w, c * s, i / s, i % b);
    printf("%u %u %u %u\n", u + i, u - w, u / 7, u % 1000);
    printf("%d %d %d %d\n", c & 15, b | 1, s ^ w, ~i);
    printf("%d %d %d %u %u\n", b << three, s >> three, c >> 1, u << three, u >> three);
    printf("%d%d%d%d%d%d\n", c < b, s <= w, i > s, u >= 0u, c == b, w != s);
    printf("%d %d %d\n", zero && c, zero || c, !zero);
    printf("%g %g %g %g\n", f + d, f * d, d / f, i - d);
    printf("%d %d\n", f > d, d == f);
    printf("%d %d %d\n", zero ? c : b, three ? (int)f : zero, -c);
}

static void assignments(void)
{
    c += 100; b += 100; s *= 5; w /= 3; i -= s; u >>= 4; f *= 3; d -= f;
    printf("%d %d %d %d %d %u %g %g\n", c, b, s, w, i, u, f, d);
    c++; --b; s--; ++w; i++; u--; f++; d--;
    printf("%d %d %d %d %d %u %g %g\n", c, b, s, w, i, u, f, d);
    c |= 3; b ^= 255; s &= 0xFF0; w %= 1000; i <<= 2; u |= 1u << 31;
    printf("%d %d %d %d %d %u\n", c, b, s, w, i, u);
    field.x += 20;
    field.y -= 50;
    printf("%d %d\n", field.x, field.y);
}

static void conversions(void)
{
    c = (signed char)i; b = (unsigned char)s; s = (short)i; w = (unsigned short)c;
    printf("%d %d %d %d\n", c, b, s, w);
    f = i; d = u; i = (int)f; u = (unsigned)c;
    printf("%g %g %d %u\n", f, d, i, u);
}

int main(void)
{
    binary();
    assignments();
    conversions();
    vp = target;
    *vp += 10;
    vp++;
    *vp++ = 60;
    printf("%d %d %d %d\n", target[0], target[1], *vp, (int)(vp - target));
    return 0;
}
