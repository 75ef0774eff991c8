/* What calls change and read: escaped addresses, static locals, recursion, exits. */
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

struct state { int a, b; };
static struct state *kept, file_state;
static int *kept_int;

static void keep(struct state *s) { kept = s; }
static void keep_member(int *p) { kept_int = p; }
static int poke(int v) { int old = kept ? kept->a : -1; if (kept) kept->a = v; return old; }
static int poke_int(int v) { int old = *kept_int; *kept_int = v; return old; }
static int *larger(int *p, int *q) { return *p > *q ? p : q; }
static int pure(int v) { return v * 2; }

static int escaped(void)
{
    struct state s, quiet;
    int r, x, t[3];
    quiet.a = 1; s.a = 1; s.b = 2;
    keep(&s);
    s.a = 3; r = poke(4); r = r * 10 + s.a;
    quiet.b = pure(quiet.a); s.a = 5; poke(6); s.a = s.a + quiet.b;
    keep_member(&s.b);
    s.b = 7; r = r * 10 + poke_int(8) + s.b;
    keep_member(&x);
    x = 1; r = r * 10 + poke_int(2); x += 5; x = poke_int(9) + x; x = 3; poke_int(4);
    keep_member(t + 1);
    t[1] = 5; t[0] = poke_int(6); t[1] += 1; t[2] = poke_int(1); t[1] = 0;
    r = r * 10 + t[0] + t[1] + t[2];
    *larger(&s.a, &s.b) = 0; r = r * 10 + s.a + s.b + x;
    kept = 0;
    return r;
}

static int counter(int depth)
{
    static int runs, level;
    static struct state st;
    int before, after;
    runs = runs + 1; level = depth; st.a = depth; st.b = runs;
    before = st.a;
    if (depth > 0) counter(depth - 1);
    after = st.a;
    level = level + 10; st.b = st.b + level;
    st.a = 1; st.a = before * 10 + after + st.b;
    return st.a + runs;
}

static int own_static(int v)
{
    static int last = 3, seen[2];
    int *p = &seen[1], r;
    r = last; last = v; last = v + 1; last += r;
    seen[0] = v; *p = seen[0]; seen[0] = last; p[0]++;
    return r * 100 + seen[0] + seen[1];
}

static void report(void) { printf("at exit %d %d\n", file_state.a, file_state.b); }

static int never_back(int n)
{
    struct state s;
    s.a = n; s.b = 1;
    if (n > 100) {
        file_state.a = 77; s.a = 5;
        exit(file_state.a - 77 + s.b - 1);
    }
    file_state.a = s.a;
    s.a = 2;
    if (n > 10) never_back(n * 2);
    file_state.b = s.a + file_state.a;
    return file_state.b;
}

int main(void)
{
    printf("%d\n", escaped());
    printf("%d ", counter(3)); printf("%d\n", counter(0));
    printf("%d ", own_static(4)); printf("%d\n", own_static(6));
    atexit(report);
    printf("%d\n", never_back(4));
    return never_back(13);
}
