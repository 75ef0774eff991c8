/* Designated initializers and compound literals, in static and automatic objects. */
#include <stdio.h>

struct point { int x, y; };
struct shape { const char *name; struct point at, size; int tags[4]; union { int i; float f; } u; unsigned bit : 3; };

static int sparse[10] = {[2] = 5, [7] = 6, 7, [0] = 1};
static int overridden[4] = {1, 2, 3, 4, [1] = 20, 30};
static int sized_by_last[] = {[5] = 1};
static struct shape shapes[3] = {
    [1] = {.size = {3, 4}, .name = "middle", .tags[2] = 9, .u.f = 0.5f},
    [0] = {"first", .at.y = 7, .bit = 5},
    [2].name = "last", [2].u.i = 11};
static struct point *pointed = &(struct point){8, 9};
static int *list = (int[]){4, 5, 6, 0};
static const char *names[] = {[3] = "three", [1] = "one"};
static char letters['z' + 1] = {['a'] = 1, ['e'] = 2, ['z'] = 3};

static int area(struct point p) { return p.x * p.y; }
static int total(const int *p) { int t = 0; while (*p) t += *p++; return t; }
static struct point moved(struct point p, int by) { return (struct point){.x = p.x + by, .y = p.y - by}; }
static int sum_shape(const struct shape *s) { return s->at.x + s->at.y + s->size.x + s->tags[2] + (int)s->bit; }

static int local(int n)
{
    int a[6] = {[1] = n, [4] = n * 2};
    struct shape s = {.tags = {[3] = n}, .at = {.y = n + 1}, .name = "local"};
    struct point *p = &(struct point){n, n};
    p->x += 5;
    return a[0] + a[1] + a[4] * 10 + a[5] + s.tags[3] + s.at.y + s.size.x + p->x * 100;
}

static int in_loop(int n)
{
    int t = 0;
    for (int i = 0; i < n; i++) {
        int *p = (int[3]){i, 1};
        p[2] += p[0] * 2;
        t = t * 3 + p[2] + p[1];
    }
    return t;
}

int main(void)
{
    for (int i = 0; i < 10; i++)
        printf("%d ", sparse[i]);
    printf("\n%d %d %d %d %d\n", overridden[0], overridden[1], overridden[2], overridden[3], (int)sizeof sized_by_last);
    for (int i = 0; i < 3; i++)
        printf("%s %d; ", shapes[i].name, sum_shape(&shapes[i]));
    printf("%g %d\n", shapes[1].u.f, shapes[2].u.i);
    printf("%d %d %s %s %d\n", pointed->x, total(list), names[1], names[3], names[2] == 0);
    printf("%d %d %d\n", letters['e'], letters['b'], letters['z']);
    printf("%d %d\n", area((struct point){6, 7}), total((int[]){1, 2, 3, 4, 0}));
    printf("%d %d\n", moved((struct point){1, 2}, 10).x, moved(*pointed, 3).y);
    printf("%d %d\n", local(3), in_loop(5));
    struct point p = (struct point){.y = 1};
    p = (struct point){p.y, p.x};
    printf("%d %d %s\n", p.x, p.y, (char[]){"literal"});
    return 0;
}
