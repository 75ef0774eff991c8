/* Loops over arrays of each type: sums, products, extremes, searches, copies, overlapping moves. */
#include <stdio.h>

#define N 37
static signed char c[N];
static unsigned char b[N];
static short s[N];
static unsigned short w[N];
static int v[N];
static unsigned u[N];
static float f[N];
static double d[N];

static void fill(void)
{
    int i;
    unsigned seed = 12345;
    for (i = 0; i < N; i++) {
        seed = seed * 1103515245u + 12345u;
        c[i] = (signed char)(seed >> 16);
        b[i] = (unsigned char)(seed >> 17);
        s[i] = (short)(seed >> 15);
        w[i] = (unsigned short)(seed >> 14);
        v[i] = (int)(seed >> 8) - 8000000;
        u[i] = seed;
        f[i] = (float)((int)(seed >> 20) - 2048) / 8.0f;
        d[i] = ((int)(seed >> 16) - 32768) / 16.0;
    }
}

#define REDUCE(NAME, A, T, WIDE, FORMAT)                                                           \
    static void NAME(void)                                                                         \
    {                                                                                              \
        int i, at = 0;                                                                             \
        WIDE sum = 0, alternate = 0;                                                               \
        T low = A[0], high = A[0];                                                                 \
        for (i = 0; i < N; i++) {                                                                  \
            sum += A[i];                                                                           \
            alternate = A[i] - alternate;                                                          \
            if (A[i] < low) low = A[i];                                                            \
            if (A[i] > high) { high = A[i]; at = i; }                                              \
        }                                                                                          \
        printf(#A " " FORMAT " " FORMAT " " FORMAT " " FORMAT " %d\n", sum, alternate, (WIDE)low, (WIDE)high, at); \
    }

REDUCE(reduce_c, c, signed char, int, "%d")
REDUCE(reduce_b, b, unsigned char, int, "%d")
REDUCE(reduce_s, s, short, int, "%d")
REDUCE(reduce_w, w, unsigned short, int, "%d")
REDUCE(reduce_v, v, int, int, "%d")
REDUCE(reduce_u, u, unsigned, unsigned, "%u")
REDUCE(reduce_f, f, float, double, "%.6g")
REDUCE(reduce_d, d, double, double, "%.6g")

static void convert_all(void)
{
    int i;
    for (i = 0; i < N; i++) {
        s[i] = c[i];
        w[i] = b[i];
        v[i] = s[i] * w[i];
        f[i] = v[i];
        d[i] = f[i] * 0.5;
        u[i] = (unsigned)(int)d[i] ^ b[i];
        c[i] = (signed char)u[i];
    }
}

static int dot(const int *p, const int *q, int n)
{
    int total = 0;
    while (n--)
        total += *p++ % 1000 * (*q++ % 1000);
    return total;
}

static void shift_down(int *p, int n, int by)
{
    int i;
    for (i = 0; i + by < n; i++)
        p[i] = p[i + by];
}

static void shift_up(int *p, int n, int by)
{
    int i;
    for (i = n - 1; i >= by; i--)
        p[i] = p[i - by];
}

static void spread(int *p, int n)
{
    int i;
    for (i = 1; i < n; i++)
        p[i] = p[i - 1] + 1;
}

int main(void)
{
    fill();
    reduce_c(); reduce_b(); reduce_s(); reduce_w(); reduce_v(); reduce_u(); reduce_f(); reduce_d();
    convert_all();
    reduce_c(); reduce_s(); reduce_v(); reduce_u(); reduce_f(); reduce_d();
    printf("%d %d\n", dot(v, v + 1, N - 1), dot(v, v, 0));
    shift_down(v, N, 3); reduce_v();
    shift_up(v, N, 5); reduce_v();
    spread(v, N); reduce_v();
    return 0;
}
