/* Floating conversions of printf: e f g with flags, widths and precisions, on binary-exact values. */
#include <stdio.h>

static void forms(double x)
{
    printf("[%f] [%.2f] [%10.3f] [%-10.1f] [%010.2f] [%+.1f] [% .1f] [%.0f] [%#.0f]\n", x, x, x, x, x, x, x, x, x);
    printf("[%e] [%.2e] [%12.3E] [%+.0e] [%g] [%.3g] [%10.4g] [%-10.2G] [%#.3g]\n", x, x, x, x, x, x, x, x, x);
}

int main(void)
{
    static const double v[] = {1, -1, 0.5, 1.5, 2.5, -2.5, 100, 1234.5, 0.0625, 123456, 1234567, 1e10, 0.000125, 65536.25};
    float f = 0.375f;
    double d = 3.75;
    unsigned i;
    printf("[%f] [%e] [%g] [%.0f] [%5.1f]\n", 0.0, 0.0, 0.0, 0.0, 0.0);
    for (i = 0; i < sizeof v / sizeof v[0]; i++)
        forms(v[i]);
    printf("%g %.3f %e\n", f, f, (double)f);
    printf("%*.*f|%-*.*e|\n", 10, 2, d, 12, 1, d);
    printf("%d %f %s %g %c\n", 1, 2.5, "three", 4.0, '5');
    printf("%.1f %.1f %.1f %.1f\n", 0.25, 0.75, 1.25, -0.25);
    printf("%Lg\n", (long double)8.5);
    return 0;
}
