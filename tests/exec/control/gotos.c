/* goto forwards, backwards, into and out of blocks and loops; loops that have two entries. */
#include <stdio.h>

static int backward(int n)
{
    int s = 0;
again:
    s += n;
    if (--n > 0)
        goto again;
    return s;
}

static int skip_code(int x)
{
    int r = 1;
    if (x == 0) goto end;
    r = 2;
    if (x == 1) goto middle;
    r += 10;
middle:
    r += 100;
    if (x == 2) goto end;
    r += 1000;
end:
    return r;
}

static int into_loop(int n)
{
    int s = 0, i = 3;
    if (n & 1)
        goto inside;
    for (i = 0; i < n; i++) {
        s += 10;
    inside:
        s += i;
    }
    return s;
}

/* Neither label dominates the other: a loop without a single head. */
static int two_entries(int a, int n)
{
    int s = 0;
    if (a)
        goto second;
first:
    s += 1;
    if (s > n)
        return s;
second:
    s += 3;
    if (s % 5)
        goto first;
    s += 2;
    goto first;
}

static int out_of_three(int limit)
{
    int i, j, k, steps = 0;
    for (i = 0; i < 5; i++)
        for (j = 0; j < 5; j++)
            for (k = 0; k < 5; k++) {
                if (++steps == limit)
                    goto out;
                if (k > i + j)
                    goto next_i;
            }
next_i:
out:
    return steps * 100 + i;
}

static int into_block(int x)
{
    int r = 0;
    if (x > 0)
        goto deep;
    r = 1;
    {
        int local;
        r += 2;
    deep:
        local = x * 2;
        r += local;
    }
    return r;
}

static int chain(int x)
{
    goto c;
a:
    x += 1;
    goto d;
b:
    x *= 2;
    goto a;
c:
    x -= 3;
    goto b;
d:
    return x;
}

static int retry(int *attempts)
{
    int n = 0;
restart:
    n++;
    switch (n) {
    case 1: case 2: goto restart;
    case 3: ++*attempts; goto restart;
    case 4: goto done;
    }
    return -1;
done:
    return n;
}

static int cleanup(int fail_at)
{
    int state = 0;
    state |= 1;
    if (fail_at == 1) goto undo_1;
    state |= 2;
    if (fail_at == 2) goto undo_2;
    state |= 4;
    if (fail_at == 3) goto undo_3;
    return state;
undo_3:
    state &= ~4;
undo_2:
    state &= ~2;
undo_1:
    state &= ~1;
    return state - fail_at;
}

int main(void)
{
    int i, attempts = 0, r;
    printf("%d\n", backward(10));
    for (i = 0; i < 4; i++)
        printf("%d %d %d %d\n", skip_code(i), into_loop(i + 4), into_block(i), cleanup(i));
    printf("%d %d\n", two_entries(0, 20), two_entries(1, 20));
    printf("%d %d\n", out_of_three(7), out_of_three(1000));
    r = retry(&attempts);
    printf("%d %d %d\n", chain(10), r, attempts);
    return 0;
}
