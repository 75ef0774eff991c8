/* float and double: operators, single rounding, order of additions, comparison, conditions, loops. */
#include <math.h>
#include <stdio.h>

static float fadd(float a, float b) { return a + b; }
static float fmul(float a, float b) { return a * b; }
static double dmix(float a, double b) { return a * b + b / a - a; }

static float single_rounding(float a, float b, float c)
{
    float t = a * b;
    return t + c;
}

static int comparisons(double a, double b)
{
    return (a < b) | (a <= b) << 1 | (a > b) << 2 | (a >= b) << 3 | (a == b) << 4 | (a != b) << 5 | !(a < b) << 6 | !!a << 7;
}

static double horner(const double *c, int n, double x)
{
    double r = 0;
    while (n--)
        r = r * x + c[n];
    return r;
}

static double newton_root(double x)
{
    double r = x;
    int i;
    for (i = 0; i < 30; i++)
        r = (r + x / r) / 2;
    return r;
}

static float series(int n)
{
    float s = 0, term = 1;
    int i;
    for (i = 1; i <= n; i++) {
        s += term;
        term /= 2;
    }
    return s;
}

static double integrate(double (*f)(double), double a, double b, int n)
{
    double h = (b - a) / n, s = (f(a) + f(b)) / 2;
    int i;
    for (i = 1; i < n; i++)
        s += f(a + i * h);
    return s * h;
}

static double parabola(double x) { return x * x - x + 1; }
static double absolute(double x) { return x < 0 ? -x : x; }
static double clamp(double x, double low, double high) { return x < low ? low : x > high ? high : x; }

static void accumulate(float *f, double *d, int n)
{
    while (n-- > 0) {
        *f += 0.1f;
        *d += 0.1f;
    }
}

int main(void)
{
    static const double c[] = {1, -2, 0.5, 3};
    float f = 0;
    double d = 0;
    int i;
    printf("%.6g %.6g %.6g\n", fadd(16777216.0f, 1.0f), fmul(1.5f, 3.25f), dmix(2.5f, 0.75));
    printf("%.6g %.6g\n", single_rounding(1.0e10f, 1.0e-10f, -1.0f), single_rounding(3.0f, 5.0f, 0.125f));
    printf("%x %x %x %x\n", comparisons(1, 2), comparisons(2, 1), comparisons(1.5, 1.5), comparisons(0, -1));
    for (i = -2; i <= 2; i++)
        printf("%.6g ", horner(c, 4, i * 0.5));
    printf("\n%.6g %.6g %.6g\n", newton_root(2), newton_root(144), series(20));
    printf("%.5g\n", integrate(parabola, 0, 3, 1000));
    printf("%g %g %g %g\n", absolute(-2.5), clamp(5, 0, 1), clamp(-5, 0, 1), clamp(0.5, 0, 1));
    accumulate(&f, &d, 1000);
    printf("%.4f %.4f %d\n", f, d, f != d);
    f = 1.0f / 3.0f;
    printf("%d %d\n", f == 1.0 / 3.0, f == (float)(1.0 / 3.0));
    printf("%d %d %d\n", (int)(f * 3), (int)(f * 300), 0.1f + 0.2f == 0.3f);
    printf("%g %g %g %g\n", sqrt(6.25), fabs(-3.5), floor(-2.5), ceil(2.25));
    printf("%.5g %.5g %.5g %.5g\n", sin(0.5), cos(0.5), exp(1.0), log(10.0));
    printf("%g %g %.5g %g\n", pow(2, 10), fmod(7.5, 2), atan2(1, 1), ldexp(0.75, 4));
    if (f) printf("true ");
    if (!d) printf("never");
    while (d > 50) d -= 12.5;
    printf("%.4f\n", d);
    return (int)newton_root(49.5);
}
