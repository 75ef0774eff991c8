/* Initializers of automatic objects: constant and computed leaves, zero tails, re-run on each entry. */
#include <stdio.h>
#include <string.h>

struct point { int x, y; };
struct box { struct point a, b; char name[6]; short tags[3]; };

static int next(void) { static int n; return ++n; }

static int constants(int use)
{
    int a[5] = {1, 2, 3};
    short s[12] = {5, 4, 3, 2, 1, 0, -1, -2, -3, -4};
    unsigned char u[3] = {255, 256 - 1, 1};
    double d[2] = {0.5};
    int r = a[use] + s[use * 2] + u[use % 3] + (int)(d[use & 1] * 4) + a[4];
    a[use] = s[use] = 100;
    u[0]++;
    return r + a[use] + s[use] + u[0];
}

static int computed(int x, int y)
{
    int a[4] = {x, y, x * y, x - y};
    struct point p = {y, x};
    struct box b = {{x, 1}, {2, y}, "box", {(short)x, 7}};
    struct point q = p, *r = &q;
    int s = a[2] - a[3], t = s + r->x * 10;
    return t + b.a.x + b.b.y + b.tags[0] + b.tags[1] + b.tags[2] + b.name[1] + q.y;
}

static int texts(int i)
{
    char a[] = "automatic";
    char b[12] = "tail";
    char c[4] = {'a', 'b'};
    const char *p = "pointer";
    int n = 0, k;
    for (k = 4; k < 12; k++)
        n += b[k];
    a[i]++;
    printf("%s %s %s %s %d %d\n", a, b, c, p + i, (int)sizeof a, n);
    return (int)strlen(a) + a[i];
}

static int each_entry(int n)
{
    int i, t = 0;
    for (i = 0; i < n; i++) {
        int fresh[3] = {1, 1, 1};
        struct point p = {5};
        char tag[4] = "ab";
        fresh[i % 3] += i;
        p.y += fresh[0];
        tag[0] = (char)(tag[0] + i);
        t = t * 2 + fresh[0] + fresh[1] * 3 + p.x + p.y + tag[0];
    }
    return t;
}

static int big(int i)
{
    int table[40] = {1, 2, 4, 8, 16, 32, 64, 128, 256, 512, 1024, 2048};
    struct { char head; int body[10]; char tail; } s = {'h', {9, 8, 7}, 't'};
    table[i] += s.body[i % 3];
    return table[i] + table[39] + s.head + s.tail + s.body[9];
}

static int two_levels(int i, int j)
{
    int m[3][4] = {{1, 2}, {0}, {9, 10, 11, 12}};
    struct box boxes[2] = {{{1, 2}, {3, 4}, "first", {1}}, {{5}}};
    return m[i][j] * 100 + boxes[j & 1].a.x + boxes[i & 1].b.y + boxes[0].name[j];
}

int main(void)
{
    int a = next(), b = next(), c = a * 10 + b;
    int order[3] = {0}, k;
    for (k = 0; k < 3; k++)
        order[k] = next();
    printf("%d %d%d%d\n", c, order[0], order[1], order[2]);
    printf("%d %d\n", constants(1), constants(3));
    printf("%d %d\n", computed(6, 7), computed(-2, 3));
    printf("%d\n", texts(2));
    printf("%d\n", texts(0));
    printf("%d %d %d\n", each_entry(6), big(5), big(30));
    printf("%d %d %d\n", two_levels(0, 1), two_levels(1, 2), two_levels(2, 3));
    return 0;
}
