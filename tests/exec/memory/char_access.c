/* Bytes of everything: reading and changing objects through char pointers, little-endian order. */
#include <stdio.h>

struct mixed { char c; short s; int i; float f; };
static int word = 0x11223344;
static short halves[2] = {0x5566, 0x7788};

static unsigned sum_bytes(const void *p, unsigned n)
{
    const unsigned char *b = p;
    unsigned t = 0;
    while (n--)
        t = t * 3 + *b++;
    return t;
}

static int change_byte(int x, int at, int v)
{
    ((unsigned char *)&x)[at] = (unsigned char)v;
    return x;
}

static int low_byte(int x) { return *(char *)&x; }
static int low_half(int x) { return *(short *)&x; }
static int high_half(int x) { return ((unsigned short *)&x)[1]; }

static int store_word_read_byte(unsigned char *p)
{
    int t;
    word = 0x01020304;
    t = p[0] * 1000 + p[3];
    word = (int)((unsigned)word << 8);
    return t * 1000 + p[0] * 10 + p[1];
}

static int store_byte_read_word(char *p)
{
    int before = word;
    p[2] = 0x7F;
    return word - before;
}

static unsigned assemble(const unsigned char *p) { return p[0] | p[1] << 8 | p[2] << 16 | (unsigned)p[3] << 24; }
static unsigned assemble_big(const unsigned char *p) { return (unsigned)p[0] << 24 | p[1] << 16 | p[2] << 8 | p[3]; }

static void copy_bytes(void *to, const void *from, int n)
{
    char *t = to;
    const char *f = from;
    while (n-- > 0)
        *t++ = *f++;
}

static unsigned swap_loop(unsigned x)
{
    unsigned char *p = (unsigned char *)&x, *q = p + 3;
    while (p < q) {
        unsigned char t = *p;
        *p++ = *q;
        *q-- = t;
    }
    return x;
}

static int masks(unsigned x)
{
    return (int)(x & 0xFF) + (int)(x >> 8 & 0xFF) * 2 + (int)(x >> 24) * 3 + (int)((x & 0xFF0000) >> 16) * 5 + ((x & 0x8000) != 0);
}

static int narrow_tests(int *p)
{
    int n = 0;
    if (*p & 1) n += 1;
    if (*p & 0x100) n += 2;
    if ((*p & 0xFF00) == 0x3300) n += 4;
    if ((*p & 0x80) == 0) n += 8;
    if (((signed char)*p) < 0) n += 16;
    if ((short)*p == 0x3344) n += 32;
    *p |= 0x80;
    *p &= ~0x100;
    *p ^= 0x10000000;
    return n;
}

int main(void)
{
    struct mixed m = {'m', -2, 1000, 0.5f}, copy;
    double d = 1.0;
    float f = -2.0f;
    int i;
    for (i = 0; i < 4; i++)
        printf("%x %x ", ((unsigned char *)&word)[i], (unsigned)change_byte(word, i, 0xEE));
    printf("\n%d %d %d\n", low_byte(0x1281), low_half(0x12348765), high_half((int)0x87651234));
    printf("%u %u\n", sum_bytes(&word, 4), sum_bytes(halves, sizeof halves));
    printf("%u %u\n", sum_bytes(&d, sizeof d), sum_bytes(&f, sizeof f));
    printf("%d ", store_word_read_byte((unsigned char *)&word));
    printf("%d\n", store_byte_read_word((char *)&word));
    printf("%x %x\n", assemble((unsigned char *)halves), assemble_big((unsigned char *)halves));
    copy_bytes(&copy, &m, sizeof m);
    printf("%c %d %d %g\n", copy.c, copy.s, copy.i, copy.f);
    printf("%x %d\n", swap_loop(0xA1B2C3D4u), masks(0xA1B2C3D4u));
    word = 0x11223344;
    printf("%d ", narrow_tests(&word));
    printf("%x ", (unsigned)word);
    printf("%d\n", narrow_tests(&word));
    return 0;
}
