/* register and auto objects of each type, const tables and parameters, more locals than registers. */
#include <stdio.h>

static const unsigned char weights[8] = {1, 2, 4, 8, 16, 32, 64, 128};
static const char *const days[] = {"Mon", "Tue", "Wed"};
const double factor = 2.5;

static int many_locals(int a, int b)
{
    int c = a + b, d = a - b, e = a * b, f = a ^ b, g = a & b, h = a | b;
    int i = c + d, j = c - e, k = d * 3, l = e + f, m = f - g, n = g + h, o = h - i, p = i + j;
    int q = j - k, r = k + l, s = l - m, t = m + n, u = n - o, v = o + p, w = p - q, x = q + r;
    register int y = a, z = b;
    y += c * 2 + d * 3 + e * 5 + f * 7 + g * 11 + h * 13;
    z += i + j * 2 + k * 3 + l * 4 + m * 5 + n * 6 + o * 7 + p * 8;
    z ^= q + r * 2 + s * 3 + t * 4 + u * 5 + v * 6 + w * 7 + x * 8;
    return y * 3 - z + a - b + c + x;
}

static double many_doubles(double a, float b)
{
    register double c = a + b;
    register float d = b * 2;
    double e = a - d, f = c * 0.5, g = e + f, h = c - g;
    auto double i = h * 2 + d;
    return a + b * 2 + c * 4 + d * 8 + e + f * 2 + g * 4 + h * 8 + i;
}

static int weighted(const int *values, const int n, const int *const limit)
{
    register int i, s = 0;
    register const int *p = values;
    for (i = 0; i < n; i++)
        s += *p++ * weights[i & 7];
    return s > *limit ? *limit : s;
}

static int across_call(register int a, register char c, register short s)
{
    register unsigned char b = (unsigned char)a;
    int before = a + c + s + b;
    printf("%d %d %d %d\n", a, c, s, b);
    return before == a + c + s + b;
}

static int loop_pressure(int n)
{
    int a = 1, b = 2, c = 3, d = 4, e = 5, f = 6, g = 7, h = 8, t;
    while (n-- > 0) {
        t = a + b;
        a = b ^ c;
        b = c + d;
        c = d - e;
        d = e * 3 & 0xFFFF;
        e = f + g;
        f = g ^ t;
        g = h + 1;
        h = (t + n) & 0xFF;
    }
    return a + b + c + d + e + f + g + h;
}

int main(void)
{
    static const int values[] = {5, 4, 3, 2, 1, 0, -1, -2, 9, 10};
    int limit = 10000;
    const int k = values[2];
    int i, s = 0;
    printf("%d %d\n", many_locals(3, 4), many_locals(-100, 77));
    printf("%g\n", many_doubles(1.5, 0.25f));
    printf("%d ", weighted(values, 10, &limit));
    limit = 20;
    printf("%d\n", weighted(values, 10, &limit));
    printf("%d\n", across_call(300, (char)-5, 1000));
    printf("%d %d\n", loop_pressure(25), loop_pressure(0));
    for (i = 0; i < 3; i++) {
        const int square = values[i] * values[i];
        s += square * k;
    }
    printf("%d %s %g\n", s, days[1], factor * 2);
    return 0;
}
