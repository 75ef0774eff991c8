/* Values that a return or a parameter cuts, extends or converts, tested, used and dropped. */
#include <stdio.h>

static inline char low(int v) { return v; }
static inline signed char slow(int v) { return v; }
static inline unsigned char ulow(int v) { return v; }
static inline short mid(unsigned v) { return v; }
static inline unsigned short umid(int v) { return v; }
static inline _Bool truth(double d) { return d; }
static inline unsigned whole(double d) { return d; }
static inline int cut(double d) { return d; }
static inline float single(double d) { return d; }
static inline double twice(float f) { return f + f; }
static inline int takes_char(signed char c) { return c * 2; }
static inline int takes_uchar(unsigned char c) { c += 1; return c; }
static inline int takes_short(short s, unsigned short u) { return s - u; }
static inline unsigned takes_unsigned(unsigned u) { return u >> 28; }
static inline char *at(void *p, int i) { return (char *)p + i; }
static inline int empty(const char *p) { return !p || !*p; }
enum color { RED, GREEN = 200, BLUE = -5 };
static inline enum color next(enum color c) { return c == RED ? GREEN : BLUE; }
static inline int old_style(c, f) char c; float f; { return c + (int)f; }

int main(void)
{
    int values[] = {0, 1, -1, 127, 128, 255, 256, 257, 511, 32768, 65535, 65536, 70000, -70000}, i, hits = 0;
    char text[] = "text";
    for (i = 0; i < (int)(sizeof values / sizeof *values); i++) {
        int v = values[i];
        if (low(v)) hits |= 1 << i;
        if (!umid(v)) hits += 3;
        if (mid(v) && slow(v) > 0) hits += 5;
        hits ^= truth(v) ? truth(v / 512.0) : truth(0.25);
        printf("%d %d %d %d %d %d\n", low(v), slow(v) + 1, ulow(v), mid(v), umid(v), hits);
        printf("%d %d %d %u\n", takes_char(v), takes_uchar(v), takes_short(v, v), takes_unsigned(v));
        low(v);
    }
    printf("%u %d %.8g %.8g\n", whole(3e9), cut(-2.75), single(0.1), twice(0.1));
    printf("%s %d %d %d\n", at(text, 1), empty(0), empty(at(text, 4)), empty(text));
    printf("%d %d %d\n", next(RED), next(GREEN), next(next(RED)) == BLUE);
    printf("%d\n", old_style(300, 2.9));
    return low(256) || !low(-1);
}
