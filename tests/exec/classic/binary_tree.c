/* A search tree with removal, a balanced tree with rotations, and walks in several orders. */
#include <stdio.h>

struct node { int key, height; struct node *left, *right; };
static struct node pool[400];
static int used, rotations;

static struct node *fresh(int key)
{
    struct node *n = &pool[used++];
    n->key = key;
    n->height = 1;
    n->left = n->right = 0;
    return n;
}

static struct node *insert(struct node *n, int key)
{
    if (!n)
        return fresh(key);
    if (key < n->key)
        n->left = insert(n->left, key);
    else if (key > n->key)
        n->right = insert(n->right, key);
    return n;
}

static struct node *remove_key(struct node *n, int key)
{
    if (!n)
        return 0;
    if (key < n->key)
        n->left = remove_key(n->left, key);
    else if (key > n->key)
        n->right = remove_key(n->right, key);
    else if (!n->left)
        return n->right;
    else if (!n->right)
        return n->left;
    else {
        struct node *least = n->right;
        while (least->left)
            least = least->left;
        n->key = least->key;
        n->right = remove_key(n->right, least->key);
    }
    return n;
}

static int height(const struct node *n) { return n ? n->height : 0; }
static void measure(struct node *n)
{
    int l = height(n->left), r = height(n->right);
    n->height = (l > r ? l : r) + 1;
}
static struct node *rotate_right(struct node *n)
{
    struct node *up = n->left;
    n->left = up->right;
    up->right = n;
    measure(n);
    measure(up);
    rotations++;
    return up;
}
static struct node *rotate_left(struct node *n)
{
    struct node *up = n->right;
    n->right = up->left;
    up->left = n;
    measure(n);
    measure(up);
    rotations++;
    return up;
}
static struct node *balance(struct node *n)
{
    int lean;
    measure(n);
    lean = height(n->left) - height(n->right);
    if (lean > 1) {
        if (height(n->left->left) < height(n->left->right))
            n->left = rotate_left(n->left);
        return rotate_right(n);
    }
    if (lean < -1) {
        if (height(n->right->right) < height(n->right->left))
            n->right = rotate_right(n->right);
        return rotate_left(n);
    }
    return n;
}
static struct node *insert_balanced(struct node *n, int key)
{
    if (!n)
        return fresh(key);
    if (key < n->key)
        n->left = insert_balanced(n->left, key);
    else if (key > n->key)
        n->right = insert_balanced(n->right, key);
    return balance(n);
}

static int depth(const struct node *n)
{
    int l, r;
    if (!n)
        return 0;
    l = depth(n->left);
    r = depth(n->right);
    return (l > r ? l : r) + 1;
}
static unsigned in_order(const struct node *n, unsigned h)
{
    return n ? in_order(n->right, in_order(n->left, h) * 31u + (unsigned)n->key) : h;
}
static int count(const struct node *n) { return n ? 1 + count(n->left) + count(n->right) : 0; }

static int breadth_first(const struct node *root)
{
    const struct node *queue[200];
    int head = 0, tail = 0, h = 0;
    queue[tail++] = root;
    while (head < tail) {
        const struct node *n = queue[head++];
        h = (h * 7 + n->key) % 30011;
        if (n->left)
            queue[tail++] = n->left;
        if (n->right)
            queue[tail++] = n->right;
    }
    return h;
}

static int find(const struct node *n, int key)
{
    int steps = 0;
    while (n && n->key != key) {
        n = key < n->key ? n->left : n->right;
        steps++;
    }
    return n ? steps : -steps - 1;
}

int main(void)
{
    struct node *plain = 0, *even = 0;
    int i;
    for (i = 0; i < 150; i++)
        plain = insert(plain, i * 7919 % 1009);
    printf("%d %d %08x %d\n", count(plain), depth(plain), in_order(plain, 0), breadth_first(plain));
    for (i = 0; i < 150; i += 2)
        plain = remove_key(plain, i * 7919 % 1009);
    plain = remove_key(plain, -5);
    printf("%d %d %08x %d\n", count(plain), depth(plain), in_order(plain, 0), find(plain, 7919 % 1009));
    for (i = 0; i < 150; i++)
        even = insert_balanced(even, i < 75 ? i : 1000 - i);
    printf("%d %d %08x %d %d\n", count(even), depth(even), in_order(even, 0), rotations, breadth_first(even));
    printf("%d %d\n", find(even, 33), find(even, 500));
    return 0;
}
