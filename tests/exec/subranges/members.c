/* Members and whole structures: what a load may take from an earlier store, which stores are dead. */
#include <stdio.h>

struct pair { int a, b; };
struct nested { int head; struct pair in; short x, y; char tail[4]; };
struct pair g1, g2;
struct nested gn;
int hits;

static int read_g1(void) { return g1.a * 10 + g1.b; }
static void set_g1(int v) { g1.a = v; }
static struct pair made(int v) { struct pair p; p.a = v; p.b = v + 1; hits++; return p; }
static int sum_of(struct pair p) { int s = p.a; p.a = 0; s += p.b; p.b = 1; return s * 2 + p.a + p.b; }

static int forwarded(int x, int y)
{
    struct pair s;
    int r;
    s.a = 1; s.b = x + y;
    r = s.a + s.b * 3;
    s.b = s.b + s.a;
    s.a += s.b; s.a++; s.b <<= s.a & 3;
    return r * 1000 + s.a * 10 + s.b;
}

static int whole_copies(int x)
{
    struct pair s, t, u;
    s.a = x; s.b = 2;
    t = s;              /* reads what s.a and s.b have stored */
    s.a = 5;
    u = t;
    t.a = 9;
    s = u;              /* overwrites s.a = 5 */
    t.b = s.a;
    return s.a + t.a * 10 + t.b * 100 + u.b * 1000;
}

static int parameter(struct pair p)
{
    p.a = 1; g1 = p; p.a = 2; g2 = p; p.a = 3;
    return g1.a * 100 + g2.a * 10 + p.a;
}

static int passed_and_returned(int v)
{
    struct pair s, t;
    int r;
    s.a = v; s.b = 4;
    r = sum_of(s);
    s.b = 6;
    t = made(v);        /* dead but for the call */
    t = s;
    s = made(s.a);
    t.b += made(t.b).b;
    return r + s.a + s.b + t.a * 3 + t.b * 7;
}

static int around_calls(int v)
{
    int r;
    g1.a = v; g1.b = 1;
    r = read_g1();
    g1.a = 2;
    set_g1(7);
    r = r * 10 + g1.a;
    g1.b = 3; g1.b = 4;
    return r * 10 + g1.b;
}

static int by_pointer(struct pair *p, struct pair *q)
{
    int r;
    p->a = 1; q->a = 2; r = p->a;
    g1.b = 5; p->b = 6; r = r * 10 + g1.b;
    *p = g2; p->a = 3; *q = *p; p->a = 4;
    return r * 100 + q->a * 10 + g2.b;
}

/* Reads of a part trim what is overwritten; reads inside drop it. */
static int partial(int v)
{
    struct nested n, m;
    int r;
    n.head = v; n.in.a = 1; n.in.b = 2; n.x = 3; n.y = 4; n.tail[1] = 5; n.tail[2] = 6;
    m = n;
    n.in.b = 20; r = n.in.b + n.y;
    n.in.a = 30; n.in.b = 31;
    g2 = n.in;
    n = m;
    r = r * 100 + n.tail[1] * 10 + n.tail[2] + g2.a;
    n.in = g2;
    n.x = (short)(n.x + n.in.b);
    gn = n; gn.in.a = 8; gn.y = n.x;
    return r * 10 + gn.in.a + gn.in.b + n.in.a + gn.y + m.in.b;
}

/* A member narrower than what is stored in it. */
static int narrow(int v)
{
    struct { unsigned char u; signed char c; short s; unsigned short us; float f; } t;
    int a, b;
    t.u = v; t.c = v; t.s = v * 300; t.us = t.s;
    a = t.u + t.c + t.s + t.us;
    t.u = 300; t.c = 200; t.s = 70000; t.us = -1; t.f = 0.1;
    b = t.u + t.c + t.s + t.us;
    v = t.c += 100;
    b += (t.u -= 50) + t.u++ + --t.c;
    return a + b * 3 + v + (t.f == 0.1) + (t.f == 0.1f) * 2 + t.u;
}

/* Within one statement: chains, values of dead stores, and what conditions evaluate perhaps. */
static int embedded(int v)
{
    struct pair s, t;
    char *names[2];
    int r, i;
    s.a = s.b = v;
    t.a = (t.b = v + 1) + s.b;
    r = (s.a = 300) + (t.b = s.b) + (t.a *= 2);
    for (i = 0; i < 3; i++)
        if ((s.b = v + i) > 4 && (t.b = s.b) != 5)
            r += s.b;
        else
            r += t.b += i ? (s.a = i) : s.a;
    names[0] = "first"; names[1] = names[0];
    r += names[1] == names[0];
    r += (hits = 3, s.a) + (t = s).b; s.a = 0;
    return r * 10 + s.a + t.a + names[1][1];
}

static int fall_through(int n)
{
    struct pair s;
    s.a = 1; s.b = 2;
    if (n > 3) { s.a = n; s.b = 0; }
    while (n-- > 0) { s.b += s.a; s.a = n; if (n == 2) continue; s.a += 5; }
    s.a -= s.b;
    return s.a;
}

int main(void)
{
    static struct pair p = {3, 8}, q = {1, 9};
    printf("%d %d\n", forwarded(3, 4), forwarded(-3, 8));
    printf("%d\n", whole_copies(7));
    printf("%d\n", parameter(p));
    printf("%d ", passed_and_returned(5)); printf("%d\n", hits);
    printf("%d\n", around_calls(6));
    printf("%d\n", by_pointer(&p, &q)); printf("%d\n", by_pointer(&p, &p));
    printf("%d\n", by_pointer(&g1, &g2)); printf("%d\n", by_pointer(&g1, &g1));
    printf("%d %d\n", partial(1), partial(-4));
    printf("%d %d\n", narrow(77), narrow(-200));
    printf("%d %d\n", embedded(2), embedded(-5));
    printf("%d %d %d\n", fall_through(2), fall_through(6), fall_through(0));
    return 0;
}
