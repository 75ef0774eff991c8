/* Recursion beside static locals, globals and address-taken locals: each activation keeps its own. */
#include <stdio.h>

static int level, deepest;

static int nested(int n)
{
    static int calls;
    int mine, before = ++calls;
    level++;
    if (level > deepest)
        deepest = level;
    mine = n > 0 ? nested(n - 1) + nested(n - 2) : before;
    level--;
    return (mine + calls - before + level) % 10007;
}

static int *chain_head;
static int chained(int n)
{
    int slot = n, *outer = chain_head, result;
    if (n == 0) {
        int *p = chain_head, t = 0;
        while (p) {
            t = t * 3 + *p;
            *p += 1;
            p = 0;
        }
        return t;
    }
    chain_head = &slot;
    result = chained(n - 1);
    chain_head = outer;
    return result * 2 + slot;
}

struct frame { struct frame *up; int value; };
static int frames(struct frame *up, int n)
{
    struct frame here;
    int t = 0;
    here.up = up;
    here.value = n * n;
    if (n > 0)
        t = frames(&here, n - 1);
    else {
        struct frame *p;
        for (p = &here; p; p = p->up) {
            t += p->value;
            p->value++;
        }
    }
    return t + here.value;
}

static int local_arrays(int n)
{
    int a[8], i, t = 0;
    for (i = 0; i < 8; i++)
        a[i] = n * i;
    if (n > 0)
        t = local_arrays(n - 1);
    for (i = 0; i < 8; i++)
        t = (t * 3 + a[i]) % 65521;
    return t;
}

static int once;
static int reentrant(int n)
{
    int saved = once;
    once = n;
    if (n > 0) {
        int r = reentrant(n - 1);
        return r + once * 10 + saved;
    }
    return once + saved;
}

static const char *text;
static int expression(void);
static int factor(void)
{
    int v = 0;
    if (*text == '(') {
        text++;
        v = expression();
        text++;
        return v;
    }
    while (*text >= '0' && *text <= '9')
        v = v * 10 + *text++ - '0';
    return v;
}
static int term(void)
{
    int v = factor();
    while (*text == '*' || *text == '/') {
        char op = *text++;
        int w = factor();
        v = op == '*' ? v * w : v / w;
    }
    return v;
}
static int expression(void)
{
    int v = term();
    while (*text == '+' || *text == '-') {
        char op = *text++;
        int w = term();
        v = op == '+' ? v + w : v - w;
    }
    return v;
}
static int evaluate(const char *t) { text = t; return expression(); }

int main(void)
{
    printf("%d ", nested(10));
    printf("%d %d\n", level, deepest);
    printf("%d\n", chained(6));
    printf("%d\n", frames(0, 7));
    printf("%d ", local_arrays(12));
    printf("%d\n", reentrant(5));
    printf("%d ", evaluate("2+3*4"));
    printf("%d ", evaluate("(2+3)*(4-(1+1))"));
    printf("%d\n", evaluate("100/7/2-3*(2-9)"));
    return 0;
}
