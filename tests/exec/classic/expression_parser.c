/* A tokenizer, a recursive parser that builds trees in a pool, an evaluator, folding, and a printer. */
#include <ctype.h>
#include <stdio.h>
#include <string.h>

enum kind { NUMBER, VARIABLE, NEGATE, BINARY, CONDITION };
struct node { enum kind kind; char op; int value; struct node *left, *right, *third; };

static struct node pool[200];
static int used, errors;
static const char *text;
static int variables[26];

static struct node *make(enum kind kind, char op, struct node *left, struct node *right)
{
    struct node *n = &pool[used++];
    memset(n, 0, sizeof *n);
    n->kind = kind;
    n->op = op;
    n->left = left;
    n->right = right;
    return n;
}

static char peek(void)
{
    while (*text == ' ')
        text++;
    return *text;
}

static int accept(char c)
{
    if (peek() != c)
        return 0;
    text++;
    return 1;
}

static struct node *condition(void);

static struct node *primary(void)
{
    struct node *n;
    char c = peek();
    if (isdigit((unsigned char)c)) {
        n = make(NUMBER, 0, 0, 0);
        while (isdigit((unsigned char)*text))
            n->value = n->value * 10 + (*text++ - '0');
        return n;
    }
    if (islower((unsigned char)c)) {
        n = make(VARIABLE, c, 0, 0);
        text++;
        return n;
    }
    if (accept('(')) {
        n = condition();
        if (!accept(')'))
            errors++;
        return n;
    }
    if (accept('-'))
        return make(NEGATE, '-', primary(), 0);
    errors++;
    if (c)
        text++;
    return make(NUMBER, 0, 0, 0);
}

static int priority(char op)
{
    switch (op) {
    case '*': case '/': case '%': return 4;
    case '+': case '-': return 3;
    case '<': case '>': return 2;
    case '=': return 1;
    default: return 0;
    }
}

static struct node *binary(int level)
{
    struct node *left = primary();
    for (;;) {
        char op = peek();
        int p = priority(op);
        if (p == 0 || p < level)
            return left;
        text++;
        left = make(BINARY, op, left, binary(p + 1));
    }
}

static struct node *condition(void)
{
    struct node *n = binary(1);
    if (accept('?')) {
        struct node *c = make(CONDITION, '?', n, condition());
        if (!accept(':'))
            errors++;
        c->third = condition();
        return c;
    }
    return n;
}

static int evaluate(const struct node *n)
{
    int l, r;
    switch (n->kind) {
    case NUMBER: return n->value;
    case VARIABLE: return variables[n->op - 'a'];
    case NEGATE: return -evaluate(n->left);
    case CONDITION: return evaluate(n->left) ? evaluate(n->right) : evaluate(n->third);
    case BINARY: break;
    }
    l = evaluate(n->left);
    r = evaluate(n->right);
    switch (n->op) {
    case '+': return l + r;
    case '-': return l - r;
    case '*': return l * r;
    case '/': return r ? l / r : 0;
    case '%': return r ? l % r : 0;
    case '<': return l < r;
    case '>': return l > r;
    case '=': return l == r;
    }
    return 0;
}

static int fold(struct node *n)
{
    int folded = 0;
    if (!n || n->kind == NUMBER || n->kind == VARIABLE)
        return 0;
    folded += fold(n->left);
    folded += fold(n->right);
    folded += fold(n->third);
    if (n->left->kind == NUMBER && (!n->right || n->right->kind == NUMBER) && (!n->third || n->third->kind == NUMBER)) {
        n->value = evaluate(n);
        n->kind = NUMBER;
        folded++;
    }
    return folded;
}

static void print(const struct node *n)
{
    switch (n->kind) {
    case NUMBER: printf("%d", n->value); break;
    case VARIABLE: printf("%c", n->op); break;
    case NEGATE: printf("(-"); print(n->left); printf(")"); break;
    case BINARY: printf("("); print(n->left); printf("%c", n->op); print(n->right); printf(")"); break;
    case CONDITION: print(n->left); printf("?"); print(n->right); printf(":"); print(n->third); break;
    }
}

int main(void)
{
    static const char *const inputs[] = {"1+2*3", "(1+2)*3-4/2", "a*a+b*b-2*a*b", "-(a - 7) % 5", "a<b?a:b", "2*3+x*(4-1)",
                                         "a=3 ? b=4 ? 1 : 2 : 3", "((((z))))", "1 + ", "10-4-3", "100/7%5*-2"};
    unsigned i;
    variables[0] = 3; variables[1] = 4; variables[23] = -9;
    for (i = 0; i < sizeof inputs / sizeof inputs[0]; i++) {
        struct node *root;
        int before, after, folded;
        used = errors = 0;
        text = inputs[i];
        root = condition();
        before = evaluate(root);
        folded = fold(root);
        after = evaluate(root);
        print(root);
        printf(" = %d %d (%d folded, %d nodes, %d errors)\n", before, after, folded, used, errors);
    }
    return 0;
}
