/* Arrays of structures with odd sizes: indexing, member loops, copies between elements, sorting. */
#include <stdio.h>
#include <string.h>

struct person { char name[7]; unsigned char age; short height; };
struct odd { char c[3]; };
struct cell { struct odd o[2]; int n; struct { short s; char t; } inner[2]; };

static struct person people[5] = {{"Ann", 30, 170}, {"Bob", 25, 180}, {"Cleo", 41, 165}, {"Dan", 25, 175}, {"Eve", 7, 120}};
static struct cell cells[3][2];

static int before(const struct person *a, const struct person *b)
{
    return a->age != b->age ? a->age < b->age : strcmp(a->name, b->name) < 0;
}

static void sort(struct person *p, int n)
{
    int i, j;
    for (i = 1; i < n; i++) {
        struct person moving = p[i];
        for (j = i; j > 0 && before(&moving, &p[j - 1]); j--)
            p[j] = p[j - 1];
        p[j] = moving;
    }
}

static void rotate(struct odd *o, int n)
{
    struct odd first = o[0];
    int i;
    for (i = 0; i + 1 < n; i++)
        o[i] = o[i + 1];
    o[n - 1] = first;
}

static int total_height(const struct person *p, const struct person *end)
{
    int t = 0;
    for (; p < end; ++p)
        t += p->height * 2 - p->age;
    return t;
}

static void fill_cells(void)
{
    int i, j, k;
    for (i = 0; i < 3; i++)
        for (j = 0; j < 2; j++) {
            struct cell *c = &cells[i][j];
            c->n = i * 10 + j;
            for (k = 0; k < 2; k++) {
                c->o[k].c[i % 3] = (char)('A' + i * 4 + j * 2 + k);
                c->inner[k].s = (short)(c->n - k * 300);
                c->inner[k].t = (char)k;
            }
        }
}

static int walk(struct cell *c, int n)
{
    int t = 0;
    do {
        t = t * 3 + c->n + c->inner[1].s + c->o[1].c[0] + c->o[0].c[1] - c->inner[1].t;
        c++;
    } while (--n);
    return t;
}

int main(void)
{
    struct odd odds[4] = {{"ab"}, {"cd"}, {"ef"}, {"gh"}};
    struct person copy[5];
    int i;
    memcpy(copy, people, sizeof copy);
    sort(people, 5);
    for (i = 0; i < 5; i++)
        printf("%s %d %d; ", people[i].name, people[i].age, people[i].height);
    printf("\n%d %d\n", total_height(people, people + 5), total_height(copy + 1, &copy[3]));
    rotate(odds, 4);
    rotate(odds, 4);
    for (i = 0; i < 4; i++)
        printf("%s ", odds[i].c);
    printf("%d %d\n", (int)sizeof odds, (int)sizeof cells);
    fill_cells();
    cells[2][1] = cells[0][1];
    cells[1][0].inner[0] = cells[2][0].inner[1];
    printf("%d %d\n", walk(cells[0], 6), walk(&cells[1][1], 2));
    printf("%d %d\n", cells[1][0].inner[0].s, (int)(&cells[2][1] - &cells[0][0]));
    return copy[4].age;
}
