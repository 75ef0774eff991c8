/* Fields across bytes, zero-width fields, fields beside plain members, in unions and nested structures. */
#include <stdio.h>
#include <string.h>

struct crossing { unsigned a:7, b:10, c:12, d:20, e:15; };
struct zero { unsigned a:3; unsigned :0; unsigned b:5; char c; unsigned :4; unsigned d:2; };
struct beside { char x; unsigned a:9; char y; unsigned b:4; short z; unsigned c:17; };
struct typed { unsigned char a:3; unsigned char b:6; unsigned short c:9; unsigned short d:7; signed char e:4; };
union overlay { unsigned word; struct { unsigned sign:1, exponent:8, rest:23; } f; struct { unsigned n0:4, n1:4, n2:4; } n; };
struct outer { struct { unsigned p:5, q:11; } in; unsigned r:6; struct { int s:9; } more[2]; };

static void dump(const char *name, const void *p, unsigned n)
{
    const unsigned char *b = p;
    printf("%s:", name);
    while (n--)
        printf(" %02x", *b++);
    printf("\n");
}

static unsigned flip(union overlay v)
{
    v.f.sign ^= 1;
    v.f.exponent += 3;
    return v.word;
}

static void nested(struct outer *o)
{
    int i;
    for (i = 0; i < 2; i++) {
        o->more[i].s = i ? -200 : 255;
        o->in.q += 700;
        o->r -= 5;
    }
    o->in.p = o->in.q;
}

int main(void)
{
    struct crossing c;
    struct zero z;
    struct beside b;
    struct typed t;
    union overlay o;
    struct outer out;
    memset(&c, 0, sizeof c); memset(&z, 0, sizeof z); memset(&b, 0, sizeof b); memset(&t, 0, sizeof t);
    memset(&out, 0, sizeof out);
    c.a = 0x55; c.b = 0x2AA; c.c = 0x9C3; c.d = 0xFEDCB; c.e = 0x5A5A;
    dump("crossing", &c, sizeof c);
    c.b = 0; dump("crossing", &c, sizeof c);
    c.d = 1; dump("crossing", &c, sizeof c);
    printf("%x %x %x %x %x\n", c.a, c.b, c.c, c.d, c.e);
    z.a = 5; z.b = 21; z.c = 'c'; z.d = 2;
    dump("zero", &z, sizeof z);
    b.x = 'x'; b.a = 0x1FF; b.y = 'y'; b.b = 9; b.z = -2; b.c = 0x12345;
    dump("beside", &b, sizeof b);
    b.a = 0x100; b.y = 0; b.c++;
    dump("beside", &b, sizeof b);
    t.a = 6; t.b = 33; t.c = 300; t.d = 99; t.e = -5;
    printf("%d %d %d %d %d\n", t.a, t.b, t.c, t.d, t.e);
    t.b += 40; t.c *= 3; t.e -= 5;
    printf("%d %d %d %d %d\n", t.a, t.b, t.c, t.d, t.e);
    o.word = 0x3F8000A5u;
    printf("%x %x %x %x %x %x\n", o.f.sign, o.f.exponent, o.f.rest, o.n.n0, o.n.n1, o.n.n2);
    o.n.n1 = 3;
    printf("%08x %08x\n", o.word, flip(o));
    nested(&out);
    printf("%u %u %u %d %d\n", out.in.p, out.in.q, out.r, out.more[0].s, out.more[1].s);
    return 0;
}
