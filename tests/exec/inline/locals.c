/* Parameters and locals of bodies: assigned, addressed, const, arrays and structs, many times over. */
#include <stdio.h>
#include <string.h>

struct point { int x, y; };
struct flags { unsigned a : 3, b : 5; int c : 4; };
static int table[4] = {1, 2, 3, 4};

static inline int fixed(const int x, const int *const p) { const int y = x * 2; const int a[3] = {1, y, 3}; return a[1] + *p + a[x & 1]; }
static inline int through(int x) { int *p = &x; int **q = &p; **q += 2; return x + *p; }
static inline int *escape(int *p) { return p; }
static inline int fill(int n) { int a[8], i, s = 0; for (i = 0; i < 8; i++) a[i] = i * n; for (i = 7; i >= 0; i--) s = s * 3 + a[i]; return s; }
static inline int zeroed(int n) { int a[5] = {0}; struct point p = {0}; a[n % 5] += n; p.y += a[n % 5]; return a[0] + a[1] * 2 + a[2] * 3 + p.x + p.y; }
static inline int fields(int v) { struct flags f; f.a = v; f.b = v >> 1; f.c = v; return f.a * 1000 + f.b * 10 + f.c; }
static inline void swap(int *a, int *b) { int t = *a; *a = *b; *b = t; }
static inline void copy(char *to, const char *from) { while ((*to++ = *from++)) ; }
static inline int sum(const struct point *p) { struct point q = *p; q.x += 1; return q.x + q.y; }
static inline int shadow(int x) { int y = x; { int x = y + 1; { int y = x + 1; x += y; } y += x; } return x + y; }
static inline int bump(int i) { table[i & 3] += i; return table[(i + 1) & 3]; }
static inline int reads(const int *p, int *q) { int a = *p; *q = 9; return a * 10 + *p; }
static inline unsigned mix(unsigned h, unsigned k) { register unsigned r = k * 0xcc9e2d51u; r = r << 15 | r >> 17; h ^= r; return h * 5 + 1; }
static inline int outer(int x) { int y = through(x); int z = shadow(y) - through(y); return z + fixed(x, &y); }
static inline const char *literal(int i) { static const char *const none = 0; (void)none; return i ? "a\0b" + 2 : "c"; }
static inline const char *plain(int i) { return i ? "a\0b" + 2 : "c"; }

int main(void)
{
    int i, x = 3, y = 8, r[3] = {1, 2, 3};
    char buffer[16];
    struct point p = {4, 5};
    unsigned h = 7;
    for (i = 0; i < 5; i++) {
        x = i;
        printf("%d %d %d %d %d\n", fixed(i, &y), through(x), x, fill(i), zeroed(i * 2));
        printf("%d %d %d %d\n", fields(i * 7), sum(&p), shadow(i), outer(i));
        swap(&r[i % 3], &r[(i + 1) % 3]);
        swap(&x, &y);
        h = mix(h, mix(h, i));
        y += bump(i);
        p.y = reads(&r[1], &r[i % 3]);
    }
    x = 5;
    *escape(&x) = through(*escape(&x)) + x;
    copy(buffer, "inlined");
    copy(buffer + strlen(buffer), plain(0));
    printf("%s %s %s %d %u\n", buffer, plain(1), literal(1), x, h);
    printf("%d %d %d %d %d %d\n", r[0], r[1], r[2], table[0], table[3], p.y);
    return reads(&x, &x) % 200;
}
