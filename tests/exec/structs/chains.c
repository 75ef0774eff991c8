/* Self-referential structures: lists, rings and trees in a pool; long member chains; pointers to members. */
#include <stdio.h>

struct node { int key; struct node *next, *prev; };
struct tree { struct tree *left, *right; short value; char color; };
struct a { struct b { struct c { int v[2]; struct a *back; } c; short pad; } b; int x; };

static struct node nodes[10];
static struct tree pool[32];
static int used;

static struct node *build(int n)
{
    int i;
    struct node *head = 0;
    for (i = 0; i < n; i++) {
        nodes[i].key = i * i % 7;
        nodes[i].next = head;
        nodes[i].prev = 0;
        if (head)
            head->prev = &nodes[i];
        head = &nodes[i];
    }
    return head;
}

static struct node *reversed(struct node *p)
{
    struct node *r = 0;
    while (p) {
        struct node *next = p->next;
        p->next = r;
        p->prev = next;
        r = p;
        p = next;
    }
    return r;
}

static struct node *remove_key(struct node *head, int key)
{
    struct node **link = &head;
    while (*link) {
        if ((*link)->key == key)
            *link = (*link)->next;
        else
            link = &(*link)->next;
    }
    return head;
}

static void print(const struct node *p)
{
    for (; p; p = p->next)
        printf("%d ", p->key);
    printf("\n");
}

static void insert(struct tree **t, int v)
{
    while (*t)
        t = v < (*t)->value ? &(*t)->left : &(*t)->right;
    *t = &pool[used++];
    (*t)->value = (short)v;
    (*t)->color = (char)("rb"[v & 1]);
}

static int depth(const struct tree *t)
{
    int l, r;
    if (!t)
        return 0;
    l = depth(t->left);
    r = depth(t->right);
    return 1 + (l > r ? l : r);
}

static int in_order(const struct tree *t, int acc)
{
    return t ? in_order(t->right, in_order(t->left, acc) * 3 % 9973 + t->value + t->color) : acc;
}

static int chain(struct a *p)
{
    p->b.c.back = p;
    p->b.c.v[1] = 5;
    p->b.c.back->b.c.back->x += p->b.c.v[1];
    p->b.c.back->b.c.v[0] = p->x * 2;
    return p->b.c.v[0] + p->x;
}

int main(void)
{
    struct node *list = build(10);
    struct tree *root = 0;
    struct a big = {{{{1, 2}, 0}, 3}, 4};
    int i, *element;
    print(list);
    list = reversed(list);
    print(list);
    list = remove_key(list, 2);
    print(list);
    for (i = 0; i < 20; i++)
        insert(&root, i * 37 % 41);
    printf("%d %d %d\n", depth(root), in_order(root, 0), used);
    printf("%d\n", chain(&big));
    element = &big.b.c.v[0];
    *element += 100;
    element[1] -= 1;
    printf("%d %d\n", big.b.c.v[0], big.b.c.v[1]);
    return 0;
}
