/* Static locals and file-scope statics: one object for all calls, private names, initial values. */
#include <stdio.h>

static int file_counter = 5;
static int never_written = 42;
static int written_once;
static const int limits[3] = {10, 20, 30};

static int counter(void)
{
    static int n = 100;
    return n++;
}

static int same_name(void)
{
    static int n;
    n += 3;
    return n;
}

static int in_blocks(int which)
{
    if (which) {
        static int n = 7;
        n *= 2;
        return n;
    } else {
        static int n = 1;
        n += 1;
        return n;
    }
}

static int *cell(int i)
{
    static int cells[4] = {1, 2, 3, 4};
    return &cells[i & 3];
}

static const char *name(int i)
{
    static const char *const names[] = {"zero", "one", "two"};
    static char buffer[8];
    if (i < 3)
        return names[i];
    buffer[0] = '#';
    buffer[1] = (char)('0' + i);
    buffer[2] = 0;
    return buffer;
}

static int fibonacci(int n)
{
    static int known[30];
    static int hits;
    if (n < 0)
        return hits;
    if (n < 2)
        return n;
    if (known[n]) {
        hits++;
        return known[n];
    }
    known[n] = fibonacci(n - 1);
    known[n] += fibonacci(n - 2);
    return known[n];
}

static struct { int uses; struct { char tag; short level; } now; } state = {1, {'x', -3}};

static int step(void)
{
    static struct { int a[3]; int at; } ring = {{5, 6, 7}, 0};
    int v = ring.a[ring.at];
    ring.a[ring.at] = v + 10;
    ring.at = (ring.at + 1) % 3;
    state.uses++;
    state.now.level = (short)(state.now.level - 1);
    return v;
}

static int unused_result(void) { static int calls; return ++calls; }

int main(void)
{
    int i, a, b;
    a = counter();
    b = counter();
    printf("%d %d\n", a, b);
    for (i = 0; i < 3; i++) {
        a = same_name();
        b = in_blocks(i & 1);
        printf("%d %d %d\n", a, b, counter());
    }
    *cell(1) += 40;
    *cell(5) += 400;
    printf("%d %d %d\n", *cell(0), *cell(1), *cell(9));
    printf("%s %s\n", name(2), name(7));
    a = fibonacci(25);
    printf("%d %d\n", a, fibonacci(-1));
    for (i = 0; i < 7; i++)
        printf("%d ", step());
    printf("%d %c %d\n", state.uses, state.now.tag, state.now.level);
    file_counter += never_written;
    written_once = file_counter;
    unused_result();
    unused_result();
    printf("%d %d %d %d\n", file_counter, written_once, limits[1], unused_result());
    return 0;
}
