/* The Mandelbrot set in fixed-point integers and in floating point, with integer square roots and sines beside it. */
#include <stdio.h>

#define UNIT 4096

static int iterate_fixed(int cr, int ci)
{
    int zr = 0, zi = 0, n;
    for (n = 0; n < 60; n++) {
        int rr = zr * zr / UNIT, ii = zi * zi / UNIT;
        if (rr + ii > 4 * UNIT)
            return n;
        zi = 2 * zr * zi / UNIT + ci;
        zr = rr - ii + cr;
    }
    return 60;
}

static int iterate_real(double cr, double ci)
{
    double zr = 0, zi = 0;
    int n = 0;
    while (zr * zr + zi * zi <= 4 && n < 60) {
        double t = zr * zr - zi * zi + cr;
        zi = 2 * zr * zi + ci;
        zr = t;
        n++;
    }
    return n;
}

static unsigned integer_root(unsigned x)
{
    unsigned r = 0, bit = 1u << 30;
    while (bit > x)
        bit >>= 2;
    for (; bit; bit >>= 2)
        if (x >= r + bit) {
            x -= r + bit;
            r = (r >> 1) + bit;
        } else
            r >>= 1;
    return r;
}

/* Rotation by steps of arctan(2^-k): sine and cosine in units of 1/65536. */
static void rotate(int angle, int *cosine, int *sine)
{
    static const int arctan[14] = {51472, 30386, 16055, 8150, 4091, 2047, 1024, 512, 256, 128, 64, 32, 16, 8};
    int x = 39797, y = 0, k;
    for (k = 0; k < 14; k++) {
        int dx = x >> k, dy = y >> k;
        if (angle >= 0) {
            x -= dy;
            y += dx;
            angle -= arctan[k];
        } else {
            x += dy;
            y -= dx;
            angle += arctan[k];
        }
    }
    *cosine = x;
    *sine = y;
}

int main(void)
{
    static const char shades[] = " .:-=+*#%@";
    int row, column, i, differ = 0, c, s;
    for (row = -9; row <= 9; row += 1) {
        char line[48];
        for (column = 0; column < 46; column++) {
            int cr = (column - 32) * UNIT / 16, ci = row * UNIT / 8;
            int n = iterate_fixed(cr, ci);
            line[column] = shades[n == 60 ? 0 : 1 + n % 9];
            if (column % 5 == 0)
                differ += n != iterate_real(cr / 4096.0, ci / 4096.0);
        }
        line[46] = 0;
        printf("%s\n", line);
    }
    printf("%d\n", differ < 20);
    for (i = 0; i < 5; i++)
        printf("%u ", integer_root((unsigned)i * 99999999u + (unsigned)i));
    for (i = -90000; i <= 90000; i += 45000) {
        rotate(i, &c, &s);
        printf("%d,%d ", c, s);
    }
    printf("\n");
    return 0;
}
