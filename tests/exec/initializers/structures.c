/* Static initial values of structures and unions: nesting, holes, arrays inside, missing braces. */
#include <stdio.h>
#include <string.h>

struct point { int x, y; };
struct holes { char a; int b; char c; short d; char e; double f; };
struct nested { struct point corner[2]; char name[5]; struct { short low, high; } range; const char *label; };
union value { int number; char text[8]; double real; };
struct tagged { char kind; union value v; };
struct list { int item; struct list *next; };
struct fields { unsigned a : 3; signed b : 5; unsigned : 0; unsigned c : 20; int d; unsigned e : 1, f : 7; };

static struct point origin;
static struct point p = {3, -4};
static struct point some[] = {{1, 2}, {3}, {5, 6}};
static struct point loose[3] = {1, 2, 3, 4};
static struct holes h = {'a', -5, 'c', 77, 'e', 0.125};
static struct nested n = {{{1, 2}, {3, 4}}, "name", {-7, 7}, "label"};
static struct nested open = {1, 2, 3, 4, 'o', 'p', 'e', 'n', 0, 8, 9, "open"};
static struct nested part = {{{9}}, "ab"};
static union value first = {0x41424344};
static union value none;
static struct tagged tags[3] = {{'i', {5}}, {'j', {-1}}};
static struct list tail = {3, 0}, mid = {2, &tail}, head = {1, &mid};
static struct fields bits = {5, -9, 0xABCDE, -1, 1, 100};
static struct fields bit_rows[2] = {{1, 2, 3, 4, 0, 5}, {7, 15}};
static const struct { int code; const char *text; double weight; } table[] = {
    {1, "one", 0.5}, {2, "two", 1.5}, {3, "three", 2.5}, {0, 0, 0}};
static struct ring { struct ring *self; int *inside; int value; } loop = {&loop, &loop.value, 6};

static void show_nested(const struct nested *q)
{
    printf("%d %d %d %d %s %d %d %s\n", q->corner[0].x, q->corner[0].y, q->corner[1].x, q->corner[1].y, q->name,
           q->range.low, q->range.high, q->label ? q->label : "(null)");
}

static void show_fields(const struct fields *q)
{
    printf("%u %d %x %d %u %u\n", q->a, q->b, q->c, q->d, q->e, q->f);
}

int main(void)
{
    struct list *l;
    unsigned i;
    printf("%d %d %d %d\n", origin.x, origin.y, p.x, p.y);
    for (i = 0; i < 3; i++)
        printf("%d,%d %d,%d ", some[i].x, some[i].y, loose[i].x, loose[i].y);
    printf("\n%c %d %c %d %c %g\n", h.a, h.b, h.c, h.d, h.e, h.f);
    show_nested(&n);
    show_nested(&open);
    show_nested(&part);
    printf("%.4s %d %d\n", first.text, none.number, (int)strlen(none.text));
    for (i = 0; i < 3; i++)
        printf("%d %d ", tags[i].kind, tags[i].v.number);
    for (l = &head; l; l = l->next)
        printf("%d", l->item);
    printf("\n");
    show_fields(&bits);
    show_fields(&bit_rows[0]);
    show_fields(&bit_rows[1]);
    for (i = 0; table[i].text; i++)
        printf("%d %s %g ", table[i].code, table[i].text, table[i].weight);
    printf("\n%d %d\n", loop.self->self->value, *loop.self->inside);
    return 0;
}
