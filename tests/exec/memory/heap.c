/* Objects from malloc: structures, growing arrays, matrices of pointers, freed and reused. */
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

struct item { struct item *next; int key; char label[1]; };
struct vector { int *data; int size, room; };

static struct item *add(struct item *head, const char *label, int key)
{
    struct item *p = malloc(sizeof *p + strlen(label));
    p->next = head;
    p->key = key;
    strcpy(p->label, label);
    return p;
}

static int release(struct item *p)
{
    int n = 0;
    while (p) {
        struct item *next = p->next;
        n += p->key;
        free(p);
        p = next;
    }
    return n;
}

static void push(struct vector *v, int x)
{
    if (v->size == v->room) {
        v->room = v->room ? v->room * 2 : 2;
        v->data = realloc(v->data, (size_t)v->room * sizeof *v->data);
    }
    v->data[v->size++] = x;
}

static int **matrix(int rows, int columns)
{
    int **m = malloc((size_t)rows * sizeof *m), i;
    for (i = 0; i < rows; i++)
        m[i] = calloc((size_t)columns, sizeof **m);
    return m;
}

static char *repeat(const char *s, int n)
{
    size_t length = strlen(s);
    char *r = malloc(length * (size_t)n + 1), *p = r;
    while (n-- > 0) {
        memcpy(p, s, length);
        p += length;
    }
    *p = 0;
    return r;
}

static int sieve(int n)
{
    char *composite = calloc((size_t)n + 1, 1);
    int i, j, count = 0;
    for (i = 2; i <= n; i++) {
        if (composite[i])
            continue;
        count++;
        for (j = i * 2; j <= n; j += i)
            composite[j] = 1;
    }
    free(composite);
    return count;
}

int main(void)
{
    struct item *list = 0, *p;
    struct vector v = {0, 0, 0};
    int **m, i, j, t = 0;
    char *text;
    list = add(list, "one", 1);
    list = add(list, "a longer label", 2);
    list = add(list, "", 3);
    for (p = list; p; p = p->next)
        printf("%d:%s ", p->key, p->label);
    printf("%d\n", release(list));
    for (i = 0; i < 100; i++)
        push(&v, i * i);
    for (i = 0; i < v.size; i += 9)
        t += v.data[i];
    printf("%d %d %d\n", t, v.size, v.room);
    free(v.data);
    m = matrix(6, 5);
    for (i = 0; i < 6; i++)
        for (j = 0; j < 5; j++)
            m[i][j] += i * j + (i ? m[i - 1][j] : 1);
    printf("%d %d\n", m[5][4], m[3][0]);
    for (i = 0; i < 6; i++)
        free(m[i]);
    free(m);
    text = repeat("ab-", 5);
    printf("%s %d\n", text, sieve(1000));
    free(text);
    free(0);
    return 0;
}
