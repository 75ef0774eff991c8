/* memcpy, memset, strcpy and structure copies beside loads and stores of what they read and write. */
#include <stdio.h>
#include <string.h>

struct rec { int a; short b; char name[10]; };
static struct rec g1 = {1, 2, "first"}, g2;
static int a[8], b[8];
static char text[16];

static int around_copy(void)
{
    int x, y;
    b[0] = 7; b[1] = 8;
    x = a[0];
    memcpy(a, b, 8);
    y = a[0];
    return x * 10 + y;
}

static int store_before_copy(int v)
{
    int local[4], i;
    for (i = 0; i < 4; i++)
        local[i] = v + i;
    local[2] = 99;
    memcpy(a, local, sizeof local);
    local[2] = 1;
    return a[2] * 100 + local[2];
}

static int dead_looking_store(void)
{
    int x = 5, y;
    memcpy(&y, &x, sizeof y);
    x = 6;
    return y * 10 + x;
}

static int bits_of(float f)
{
    int i;
    memcpy(&i, &f, sizeof i);
    return i;
}

static int cleared(int n)
{
    int v[6], i, t = 0;
    for (i = 0; i < 6; i++)
        v[i] = i + n;
    memset(v + 1, 0, 3 * sizeof(int));
    for (i = 0; i < 6; i++)
        t = t * 10 + v[i];
    return t;
}

static int string_copy(const char *from)
{
    char before = text[1];
    strcpy(text, from);
    return before * 1000 + text[1] + (int)strlen(text);
}

static int structure_copy(struct rec *p)
{
    int old = g2.a;
    *p = g1;
    p->a += 10;
    g1.a = g2.a + 1;
    return old * 1000 + g2.a * 10 + p->b;
}

static int copy_chain(void)
{
    struct rec x = {5, 6, "x"}, y, z;
    z = y = x;
    x.a = 100;
    y.b = 7;
    return x.a + y.a * 10 + z.b + y.b + z.name[0];
}

static int overlapping(void)
{
    char s[] = "0123456789";
    memmove(s + 2, s, 5);
    memmove(s, s + 1, 4);
    return s[0] * 10000 + s[3] * 100 + s[6] - (s[9] == '9');
}

static int in_loop(int n)
{
    struct rec r = {0, 0, ""}, saved;
    int i, t = 0;
    for (i = 0; i < n; i++) {
        r.a += i;
        saved = r;
        r.b = (short)(saved.a * 2);
        memcpy(&r.name[i & 7], "ab", 2);
        t += saved.b + saved.name[0];
    }
    return t + r.a;
}

static void *result_used(void)
{
    char *p = memcpy(text, "result", 7);
    p[0] = 'R';
    return strcpy(p + 6, "s");
}

static int compare_after(void)
{
    int same;
    memcpy(b, a, sizeof a);
    same = memcmp(a, b, sizeof a) == 0;
    b[7]++;
    return same * 10 + (memcmp(a, b, sizeof a) == 0);
}

int main(void)
{
    printf("%d ", around_copy());
    printf("%d\n", around_copy());
    printf("%d %d %x\n", store_before_copy(4), dead_looking_store(), bits_of(-1.5f));
    printf("%d\n", cleared(2));
    printf("%d ", string_copy("one"));
    printf("%d\n", string_copy("three"));
    printf("%d ", structure_copy(&g2));
    printf("%d ", structure_copy(&g2));
    printf("%d\n", structure_copy(&g1));
    printf("%d %d %d\n", copy_chain(), overlapping(), in_loop(9));
    printf("%s ", (char *)result_used());
    printf("%s %d\n", text, compare_after());
    return 0;
}
