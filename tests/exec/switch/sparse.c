/* Sparse switches and extreme case values, selectors of each integer type. */
#include <limits.h>
#include <stdio.h>

static int extremes(int x)
{
    switch (x) {
    case INT_MIN: return 1;
    case INT_MIN + 1: return 2;
    case -100000: return 3;
    case -1: return 4;
    case 0: return 5;
    case 77: return 6;
    case 65536: return 7;
    case INT_MAX - 1: return 8;
    case INT_MAX: return 9;
    }
    return 0;
}

static int of_unsigned(unsigned x)
{
    switch (x) {
    case 0u: return 1;
    case 0x7FFFFFFFu: return 2;
    case 0x80000000u: return 3;
    case 0xFFFFFFFFu: return 4;
    case 1000000u: return 5;
    default: return 0;
    }
}

static int of_char(char x)
{
    switch (x) {
    case 'a': return 1;
    case 'z': return 2;
    case '\0': return 3;
    case -128: return 4;
    case '\377': return 5;
    case '\n': return 6;
    }
    return 0;
}

static int of_uchar(unsigned char x)
{
    switch (x) {
    case 0: return 1;
    case 128: return 2;
    case 255: return 3;
    case 300: return 4;
    }
    return 0;
}

static int of_short(short x)
{
    switch (x) {
    case -32768: return 1;
    case 32767: return 2;
    case 1234: return 3;
    default: return x < 0;
    }
}

enum token { END, NAME = 10, NUMBER = 20, PLUS = '+', MINUS = '-' };
static int of_enum(enum token t)
{
    switch (t) {
    case END: return 0;
    case NAME: return 1;
    case NUMBER: return 2;
    case PLUS:
    case MINUS: return 3;
    }
    return 4;
}

static int of_expression(int a, long b)
{
    switch (a * 3 + (int)b) {
    case 12: return 1;
    case 13: return 2;
    case 30: return 3;
    case 3000: return 4;
    default: return a > b ? 5 : 6;
    }
}

static int clusters(int x)
{
    switch (x) {
    case 1: return 11; case 2: return 12; case 3: return 13; case 4: return 14;
    case 100: return 21; case 101: return 22; case 102: return 23;
    case 5000: return 31; case 5001: return 32; case 5003: return 34;
    default: return -1;
    }
}

int main(void)
{
    static const int v[] = {INT_MIN, INT_MIN + 1, -100000, -32768, -129, -128, -1, 0, 10, 20, 43, 45, 77, 97, 122, 128, 255,
                            256, 300, 1234, 32767, 65536, 1000000, INT_MAX - 1, INT_MAX};
    unsigned i;
    for (i = 0; i < sizeof v / sizeof v[0]; i++)
        printf("%d: %d %d %d %d %d %d\n", v[i], extremes(v[i]), of_unsigned((unsigned)v[i]), of_char((char)v[i]),
               of_uchar((unsigned char)v[i]), of_short((short)v[i]), of_enum((enum token)(v[i] & 0x7F)));
    printf("%d %d %d %d %d\n", of_expression(4, 0), of_expression(4, 1), of_expression(10, 0), of_expression(1000, 0),
           of_expression(1, 2));
    for (i = 0; i < 6; i++)
        printf("%d %d %d %d ", clusters((int)i), clusters(98 + (int)i), clusters(4999 + (int)i), clusters(-(int)i));
    printf("\n");
    return 0;
}
