/* Pointers to functions: tables, parameters, results, members, comparison, each result type. */
#include <stdio.h>

typedef int binary(int, int);
typedef double (*real)(double);
struct operation { char symbol; binary *apply; int priority; };
struct object { const struct methods *m; int state; };
struct methods { int (*get)(const struct object *); void (*set)(struct object *, int); };

static int add(int a, int b) { return a + b; }
static int subtract(int a, int b) { return a - b; }
static int multiply(int a, int b) { return a * b; }
static int divide(int a, int b) { return b ? a / b : 0; }
static int maximum(int a, int b) { return a > b ? a : b; }

static const struct operation table[] = {{'+', add, 1}, {'-', subtract, 1}, {'*', multiply, 2}, {'/', divide, 2}, {'m', &maximum, 0}};

static binary *find(char symbol)
{
    int i;
    for (i = 0; i < 5; i++)
        if (table[i].symbol == symbol)
            return table[i].apply;
    return 0;
}

static int fold(binary *f, const int *v, int n)
{
    int r = *v;
    while (--n > 0)
        r = f(r, *++v);
    return r;
}

static int (*pick(int n))(int, int) { return n > 0 ? add : n < 0 ? subtract : multiply; }

static double half(double x) { return x / 2; }
static double next(double x) { return x + 1; }
static double compose(real f, real g, double x) { return (*f)((**g)(x)); }
static double repeat(real f, int n, double x) { while (n--) x = f(x); return x; }

static int get_plain(const struct object *o) { return o->state; }
static void set_plain(struct object *o, int v) { o->state = v; }
static int get_scaled(const struct object *o) { return o->state * 10; }
static void set_scaled(struct object *o, int v) { o->state = v / 10; }
static const struct methods plain = {get_plain, set_plain}, scaled = {get_scaled, set_scaled};

static char to_char(int x) { return (char)x; }
static short to_short(int x) { return (short)x; }
static unsigned char to_byte(int x) { return (unsigned char)x; }
static float to_float(int x) { return x * 0.5f; }

static int counter;
static void tick(void) { counter++; }
static void tock(void) { counter *= 2; }
static void run(void (*const *program)(void)) { while (*program) (*program++)(); }

static int interpret(const char *p)
{
    int acc = 0;
    while (*p) {
        binary *f = find(*p++);
        if (f)
            acc = f(acc, *p++ - '0');
    }
    return acc;
}

int main(void)
{
    static const int v[] = {7, 3, 9, 2};
    static void (*const program[])(void) = {tick, tock, tick, tick, tock, 0};
    struct object objects[2] = {{&plain, 5}, {&scaled, 5}};
    char (*pc)(int) = to_char;
    short (*ps)(int) = to_short;
    unsigned char (*pb)(int) = to_byte;
    float (*pf)(int) = to_float;
    int i;
    for (i = 0; i < 5; i++)
        printf("%c %d; ", table[i].symbol, fold(table[i].apply, v, 4));
    printf("\n%d %d %d\n", pick(1)(5, 6), pick(-1)(5, 6), pick(0)(5, 6));
    printf("%d %d\n", find('+') == add, find('?') == 0);
    printf("%g %g %g\n", compose(half, next, 5), compose(next, half, 5), repeat(half, 5, 64));
    for (i = 0; i < 2; i++) {
        struct object *o = &objects[i];
        o->m->set(o, o->m->get(o) + 40);
        printf("%d %d ", o->state, o->m->get(o));
    }
    printf("\n%d %d %d %g\n", pc(300), ps(70000), pb(-1), pf(5));
    run(program);
    printf("%d %d\n", counter, interpret("+9*3-5m4/2"));
    return 0;
}
