/* Arrays and structures of float and double: dot products, matrices, statistics, conversions in loops. */
#include <stdio.h>

#define N 12
static float a[N], b[N];
static double x[N], m[4][4], inverse[4][4];
struct vector { float x, y, z; };

static void fill(void)
{
    int i;
    for (i = 0; i < N; i++) {
        a[i] = i * 0.5f - 2;
        b[i] = (float)(N - i) / 4;
        x[i] = a[i] * b[i] + i;
    }
}

static float dot(const float *p, const float *q, int n)
{
    float s = 0;
    while (n-- > 0)
        s += *p++ * *q++;
    return s;
}

static double mean(const double *p, int n) { double s = 0; int i; for (i = 0; i < n; i++) s += p[i]; return s / n; }
static double variance(const double *p, int n)
{
    double mid = mean(p, n), s = 0;
    int i;
    for (i = 0; i < n; i++)
        s += (p[i] - mid) * (p[i] - mid);
    return s / (n - 1);
}

static int invert(int n)
{
    int i, j, k;
    for (i = 0; i < n; i++)
        for (j = 0; j < n; j++)
            inverse[i][j] = i == j;
    for (k = 0; k < n; k++) {
        double pivot = m[k][k];
        if (pivot == 0)
            return 0;
        for (j = 0; j < n; j++) {
            m[k][j] /= pivot;
            inverse[k][j] /= pivot;
        }
        for (i = 0; i < n; i++)
            if (i != k) {
                double factor = m[i][k];
                for (j = 0; j < n; j++) {
                    m[i][j] -= factor * m[k][j];
                    inverse[i][j] -= factor * inverse[k][j];
                }
            }
    }
    return 1;
}

static struct vector cross(struct vector p, struct vector q)
{
    struct vector r;
    r.x = p.y * q.z - p.z * q.y;
    r.y = p.z * q.x - p.x * q.z;
    r.z = p.x * q.y - p.y * q.x;
    return r;
}

static void sort(double *p, int n)
{
    int i, j;
    for (i = 1; i < n; i++) {
        double v = p[i];
        for (j = i; j > 0 && p[j - 1] > v; j--)
            p[j] = p[j - 1];
        p[j] = v;
    }
}

static int quantize(const float *p, signed char *q, int n)
{
    int i, t = 0;
    for (i = 0; i < n; i++) {
        q[i] = (signed char)(p[i] * 8);
        t += q[i];
    }
    return t;
}

int main(void)
{
    struct vector p = {1, 2, 3}, q = {-2, 0.5f, 4}, r;
    signed char small[N];
    int i, j;
    fill();
    printf("%.6g %.6g %.6g\n", dot(a, b, N), mean(x, N), variance(x, N));
    for (i = 0; i < 4; i++)
        for (j = 0; j < 4; j++)
            m[i][j] = i == j ? 4 : (i + j) % 3 - 1;
    printf("%d\n", invert(4));
    for (i = 0; i < 4; i++)
        printf("%.4f %.4f %.4f %.4f\n", inverse[i][0] + 2, inverse[i][1] + 2, inverse[i][2] + 2, inverse[i][3] + 2);
    r = cross(p, q);
    printf("%g %g %g\n", r.x, r.y, cross(q, r).z);
    x[3] = 100;
    sort(x, N);
    printf("%.6g %.6g %.6g\n", x[0], x[5], x[N - 1]);
    printf("%d", quantize(a, small, N));
    printf(" %d\n", small[N - 1]);
    return 0;
}
