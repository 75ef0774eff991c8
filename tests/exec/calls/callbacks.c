/* qsort and bsearch with comparison routines of several kinds; callbacks with state. */
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

struct record { char name[8]; int score; double weight; };

static int comparisons;
static int by_int(const void *a, const void *b)
{
    int x = *(const int *)a, y = *(const int *)b;
    return x < y ? -1 : x > y;
}
static int by_int_down(const void *a, const void *b) { return by_int(b, a); }
static int by_text(const void *a, const void *b) { return strcmp(*(const char *const *)a, *(const char *const *)b); }
static int by_char(const void *a, const void *b) { return *(const unsigned char *)a - *(const unsigned char *)b; }
static int by_score(const void *a, const void *b)
{
    const struct record *p = a, *q = b;
    comparisons++;
    if (p->score != q->score)
        return q->score - p->score;
    return strcmp(p->name, q->name);
}
static int by_weight(const void *a, const void *b)
{
    double d = ((const struct record *)a)->weight - ((const struct record *)b)->weight;
    return d < 0 ? -1 : d > 0;
}

static void for_each(int *p, int n, void (*f)(int *, void *), void *state) { while (n--) f(p++, state); }
static void add_to(int *p, void *sum) { *(int *)sum += *p; }
static void scale_by(int *p, void *factor) { *p *= *(const int *)factor; }
struct extreme { int low, high, seen; };
static void extremes(int *p, void *state)
{
    struct extreme *e = state;
    if (!e->seen++ || *p < e->low) e->low = *p;
    if (e->seen == 1 || *p > e->high) e->high = *p;
}

int main(void)
{
    int v[] = {42, -7, 19, 0, 1000, -350, 8, 19, 3, 77}, n = 10, i, key, sum = 0, factor = 3, *hit;
    const char *words[] = {"pear", "apple", "fig", "banana", "cherry"};
    char letters[] = "sphinxofblackquartz";
    struct record r[] = {{"ann", 5, 2.5}, {"bob", 9, 0.5}, {"cid", 5, 1.5}, {"dee", 7, 3.5}};
    struct extreme e = {0, 0, 0};
    qsort(v, (size_t)n, sizeof v[0], by_int);
    for (i = 0; i < n; i++)
        printf("%d ", v[i]);
    for (key = -7; key <= 77; key += 42) {
        hit = bsearch(&key, v, (size_t)n, sizeof v[0], by_int);
        printf("%d ", hit ? *hit == key : -1);
    }
    qsort(v, (size_t)n, sizeof v[0], by_int_down);
    printf("%d %d\n", v[0], v[9]);
    qsort(words, 5, sizeof words[0], by_text);
    qsort(letters, strlen(letters), 1, by_char);
    for (i = 0; i < 5; i++)
        printf("%s ", words[i]);
    printf("%s\n", letters);
    qsort(r, 4, sizeof r[0], by_score);
    for (i = 0; i < 4; i++)
        printf("%s %d ", r[i].name, r[i].score);
    qsort(r, 4, sizeof r[0], by_weight);
    for (i = 0; i < 4; i++)
        printf("%s %g ", r[i].name, r[i].weight);
    printf("%d\n", comparisons > 3);
    for_each(v, n, add_to, &sum);
    for_each(v, 3, scale_by, &factor);
    for_each(v, n, extremes, &e);
    printf("%d %d %d %d\n", sum, e.low, e.high, e.seen);
    return 0;
}
