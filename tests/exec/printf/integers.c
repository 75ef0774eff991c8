/* Integer conversions of printf with all flags, widths, precisions and length modifiers. */
#include <limits.h>
#include <stdio.h>

static void signed_forms(int x)
{
    printf("[%d] [%i] [%5d] [%-5d] [%05d] [%+d] [% d] [%.3d] [%6.3d] [%-6.3d] [%+6d] [% 06d] [%.0d]\n", x, x, x, x, x, x, x, x,
           x, x, x, x, x);
}

static void unsigned_forms(unsigned x)
{
    printf("[%u] [%o] [%x] [%X] [%#o] [%#x] [%#X] [%8u] [%-8x] [%08X] [%#08x] [%.5x] [%#.5o] [%12.8x] [%-#12x]\n", x, x, x, x, x,
           x, x, x, x, x, x, x, x, x, x);
}

static void modifiers(long l, short s, unsigned long ul, unsigned short us)
{
    printf("[%ld] [%8ld] [%lu] [%lx] [%lo] [%hd] [%hu] [%hx] [%-10ld] [%+ld]\n", l, l, ul, ul, ul, s, us, us, l, l);
}

static void stars(int width, int precision, int x)
{
    printf("[%*d] [%-*d] [%.*d] [%*.*d] [%0*d]\n", width, x, width, x, precision, x, width, precision, x, width, x);
}

int main(void)
{
    int n;
    signed_forms(0); signed_forms(7); signed_forms(-7); signed_forms(12345); signed_forms(INT_MAX); signed_forms(INT_MIN);
    unsigned_forms(0); unsigned_forms(1); unsigned_forms(0xBEEF); unsigned_forms(UINT_MAX);
    modifiers(123456L, -5, 4000000000ul, 65535);
    modifiers(LONG_MIN, 32767, 0ul, 0);
    stars(6, 3, 42); stars(-6, 4, -42); stars(0, -1, 7);
    n = printf("%d%%\n", 50);
    printf("%d\n", n);
    printf("%d %d %d %d\n", (char)200, (unsigned char)200, (short)40000, (unsigned short)40000);
    printf("%hhd %hhu %c\n", 300, 300, 65 + 256);
    return 0;
}
