/* Pointer arithmetic on elements of many sizes: addition, difference, comparison, negative indices. */
#include <stdio.h>

struct three { char c[3]; };
struct seven { char c[7]; };
struct twelve { int a, b; short s; };

static char chars[40];
static short shorts[40];
static int ints[40];
static double doubles[40];
static struct three threes[40];
static struct seven sevens[40];
static struct twelve twelves[40];

#define WALK(NAME, A)                                                                              \
    static void NAME(int i, int j)                                                                 \
    {                                                                                              \
        int k = 2;                                                                                 \
        __typeof__(A[0]) *p = A + i, *q = &A[j], *r = p;                                           \
        r += 3; r -= 1; r++; --r; r += k; r -= k - 1;                                              \
        printf("%d %d %d %d %d%d%d%d\n", (int)(q - p), (int)(r - A), (int)((char *)q - (char *)p), \
               (int)(&q[-1] - &p[k]), p < q, p == A + i, q >= r, p + (j - i) != q);                \
    }

WALK(walk_chars, chars)
WALK(walk_shorts, shorts)
WALK(walk_ints, ints)
WALK(walk_doubles, doubles)
WALK(walk_threes, threes)
WALK(walk_sevens, sevens)
WALK(walk_twelves, twelves)

static int sum_between(const int *from, const int *to)
{
    int t = 0;
    while (from != to)
        t += *from++;
    return t;
}

static int negative(const int *middle, int n)
{
    int i, t = 0;
    for (i = -n; i <= n; i++)
        t += middle[i] * i;
    return t + middle[-n] + *(middle - 1) + 2[middle];
}

static const int *lower_bound(const int *low, const int *high, int key)
{
    while (low < high) {
        const int *mid = low + (high - low) / 2;
        if (*mid < key)
            low = mid + 1;
        else
            high = mid;
    }
    return low;
}

static void reverse(char *p, char *end)
{
    while (p < --end) {
        char t = *p;
        *p++ = *end;
        *end = t;
    }
}

static int types_of_index(const int *p, signed char c, unsigned char b, short s, unsigned u, long l)
{
    return p[c] + p[b] * 2 + p[s] * 3 + p[u] * 4 + *(p + l) * 5 + p[c + s] + p[b - c];
}

static int conditional(int *a, int *b, int which)
{
    *(which ? a : b) += 10;
    (which ? a : b)[1] = 7;
    return *a * 1000 + *b + (which > 1 ? a : b)[0];
}

int main(void)
{
    int i, two[2] = {1, 2}, other[2] = {3, 4};
    for (i = 0; i < 40; i++)
        ints[i] = i * 3;
    walk_chars(3, 20); walk_shorts(3, 20); walk_ints(3, 20); walk_doubles(3, 20); walk_threes(3, 20);
    walk_sevens(3, 20); walk_twelves(3, 20); walk_ints(20, 3); walk_sevens(30, 5);
    printf("%d %d\n", sum_between(ints, ints + 40), sum_between(ints + 7, ints + 7));
    printf("%d\n", negative(ints + 20, 9));
    printf("%d %d %d\n", (int)(lower_bound(ints, ints + 40, 50) - ints), (int)(lower_bound(ints, ints + 40, -1) - ints),
           (int)(lower_bound(ints, ints + 40, 1000) - ints));
    for (i = 0; i < 11; i++)
        chars[i] = (char)('a' + i);
    reverse(chars, chars + 11);
    printf("%s\n", chars);
    printf("%d\n", types_of_index(ints + 5, -5, 7, 3, 10u, 20L));
    printf("%d", conditional(two, other, 1));
    printf(" %d\n", conditional(two, other, 0));
    return 0;
}
