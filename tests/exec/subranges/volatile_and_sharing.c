/* Volatile accesses neither vanish nor hide reads; one object under several declarations. */
#include <stdio.h>

struct port { volatile int status; int data; volatile char log[2]; };
struct port p1, p2, *pp = &p1;
volatile struct port device;
int shared, level;
struct plain { int a, b; } linked;

static int volatile_members(int v)
{
    struct port s, t;
    int r;
    s.status = v; s.data = 1; s.log[0] = 2; s.log[1] = 3;
    t = s; r = t.status * 10 + t.log[1];
    t.status = 5; t = s; r = r * 10 + t.status;
    s.status = 1; s.status = 2; s.data = s.status;
    p1 = t; r = r * 10 + p1.status; p1 = s;
    return r * 10 + p1.status + s.data;
}

static int through_volatile(int v)
{
    int x = v, y;
    volatile int *q = &x;
    volatile int *g = &shared;
    *q = 2; y = x; x = 3; y = y * 10 + *q; x = 4;
    shared = 5; y = y * 10 + *g; shared = 6;
    *g = 7; y = y * 10 + shared; shared = 8; *g = 9; shared = *g + 1;
    device.data = 1; device.data = 2; y += device.data;
    return y * 10 + x + shared;
}

static int declared_again(void)
{
    int r;
    linked.a = 1; level = 1;
    {
        extern struct plain linked;
        extern int level;
        linked.a = 2; level = 2;
    }
    r = linked.a * 10 + level;
    linked.b = 3; level = 3;
    {
        extern struct plain linked;
        extern int level;
        r = r * 100 + linked.b * 10 + level;
    }
    linked.b = 4; level = 4;
    return r;
}

static int constants(int n)
{
    static const struct plain fixed = {3, 4};
    const struct plain once = {n, n + 1};
    const int *view = &shared;
    int r = 0, i;
    shared = 1; r += *view; shared = 2; r = r * 10 + *view;
    for (i = 0; i < 3; i++) {
        const struct plain each = {i, n};
        r += each.a * each.b;
    }
    return r * 100 + fixed.a + once.a + once.b;
}

enum tiny { ZERO, ONE, MANY = 300 };
struct kinds { enum tiny e; void *vp; const char *cp; int (*fn)(int); float f; double d; };
static int twice(int v) { return v * 2; }
struct kinds gk;

static int kinds(int v)
{
    gk.e = MANY; gk.vp = &gk.e; gk.cp = "text"; gk.fn = twice; gk.f = v / 3.0; gk.d = gk.f;
    v = gk.e + (gk.vp == &gk.e) + (gk.cp[1] == 'e') + gk.fn(3);
    gk.vp = 0; gk.e = ONE; gk.f = 16777217;
    return v * 10 + (gk.vp == 0) + gk.e + (gk.f == 16777216.0f) + (gk.d == gk.f);
}

int main(void)
{
    printf("%d\n", volatile_members(6));
    printf("%d\n", through_volatile(1));
    printf("%d\n", declared_again());
    printf("%d\n", constants(4));
    printf("%d\n", kinds(7));
    return pp->data != 2;
}
