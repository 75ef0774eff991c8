/* Matrices of integers and doubles: product in three loop orders, power, determinant, transposition. */
#include <stdio.h>

#define N 20
typedef int matrix[N][N];
static matrix a, b, c, d;
static double x[N][N], y[N][N], z[N][N];

static void fill(matrix m, int seed)
{
    int i, j;
    for (i = 0; i < N; i++)
        for (j = 0; j < N; j++)
            m[i][j] = (i * seed + j * 3) % 17 - 8;
}

static void multiply_ijk(matrix to, matrix p, matrix q)
{
    int i, j, k;
    for (i = 0; i < N; i++)
        for (j = 0; j < N; j++) {
            int s = 0;
            for (k = 0; k < N; k++)
                s += p[i][k] * q[k][j];
            to[i][j] = s;
        }
}

static void multiply_ikj(matrix to, matrix p, matrix q)
{
    int i, j, k;
    for (i = 0; i < N; i++)
        for (j = 0; j < N; j++)
            to[i][j] = 0;
    for (i = 0; i < N; i++)
        for (k = 0; k < N; k++)
            for (j = 0; j < N; j++)
                to[i][j] += p[i][k] * q[k][j];
}

static void multiply_pointers(int *to, const int *p, const int *q, int n)
{
    int i, j;
    for (i = 0; i < n; i++)
        for (j = 0; j < n; j++) {
            const int *row = p + i * n, *column = q + j, *end = row + n;
            int s = 0;
            for (; row < end; row++, column += n)
                s += *row * *column;
            *to++ = s;
        }
}

static int same(matrix p, matrix q)
{
    int i, j;
    for (i = 0; i < N; i++)
        for (j = 0; j < N; j++)
            if (p[i][j] != q[i][j])
                return 0;
    return 1;
}

static int trace(matrix p) { int i, t = 0; for (i = 0; i < N; i++) t += p[i][i]; return t; }

static void real_product(void)
{
    int i, j, k;
    for (i = 0; i < N; i++)
        for (j = 0; j < N; j++) {
            x[i][j] = (i - j) * 0.5;
            y[i][j] = (i + j) * 0.25 + 1;
        }
    for (i = 0; i < N; i++)
        for (j = 0; j < N; j++)
            for (k = 0; k < N; k++)
                z[i][j] += x[i][k] * y[k][j];
}

static double determinant(int n)
{
    double m[6][6], det = 1;
    int i, j, k;
    for (i = 0; i < n; i++)
        for (j = 0; j < n; j++)
            m[i][j] = i == j ? 4.0 : (i * 2 + j) % 3;
    for (k = 0; k < n; k++) {
        det *= m[k][k];
        for (i = k + 1; i < n; i++) {
            double f = m[i][k] / m[k][k];
            for (j = k; j < n; j++)
                m[i][j] -= f * m[k][j];
        }
    }
    return det;
}

static void fibonacci_matrix(int n)
{
    unsigned m[2][2] = {{1, 1}, {1, 0}}, r[2][2] = {{1, 0}, {0, 1}}, t[2][2];
    int i, j;
    while (n > 0) {
        if (n & 1) {
            for (i = 0; i < 2; i++)
                for (j = 0; j < 2; j++)
                    t[i][j] = r[i][0] * m[0][j] + r[i][1] * m[1][j];
            for (i = 0; i < 4; i++)
                r[i / 2][i % 2] = t[i / 2][i % 2];
        }
        for (i = 0; i < 2; i++)
            for (j = 0; j < 2; j++)
                t[i][j] = m[i][0] * m[0][j] + m[i][1] * m[1][j];
        for (i = 0; i < 4; i++)
            m[i >> 1][i & 1] = t[i >> 1][i & 1];
        n >>= 1;
    }
    printf("%u\n", r[0][1]);
}

int main(void)
{
    fill(a, 5);
    fill(b, 7);
    multiply_ijk(c, a, b);
    multiply_ikj(d, a, b);
    printf("%d %d\n", same(c, d), trace(c));
    multiply_pointers(&d[0][0], &a[0][0], &b[0][0], N);
    printf("%d %d\n", same(c, d), c[N - 1][3]);
    real_product();
    printf("%g %g %g\n", z[0][0], z[3][7], z[N - 1][N - 1]);
    printf("%.6g\n", determinant(6));
    fibonacci_matrix(40);
    return 0;
}
