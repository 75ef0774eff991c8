/* sizeof of everything, enumerations in arithmetic, switch and tables; unevaluated operands. */
#include <stddef.h>
#include <stdio.h>

enum color { RED, GREEN = 5, BLUE, LAST = BLUE + 10 };
enum sign { MINUS = -1, ZERO, PLUS };
enum bits { BIT0 = 1 << 0, BIT3 = 1 << 3, BOTH = BIT0 | BIT3, BIG = 0x7FFFFFFF };

struct mixed { char c; short s; char d; int i; char e; double f; char g; };
union either { char text[7]; int number; short pair[3]; };
typedef int matrix[3][5];

static enum color next(enum color c)
{
    switch (c) {
    case RED: return GREEN;
    case GREEN: return BLUE;
    case BLUE: return LAST;
    default: return RED;
    }
}

static enum sign sign_of(int x) { return x < 0 ? MINUS : x > 0 ? PLUS : ZERO; }
static const char *names[] = {"red", 0, 0, 0, 0, "green", "blue"};

int main(void)
{
    enum color c = RED;
    int i = 3, touched = 0;
    char text[] = "sizeof";
    matrix m;
    struct mixed x;
    printf("%d %d %d %d %d %d %d %d\n", (int)sizeof(char), (int)sizeof(short), (int)sizeof(int), (int)sizeof(long),
           (int)sizeof(float), (int)sizeof(double), (int)sizeof(void *), (int)sizeof(enum color));
    printf("%d %d %d %d %d\n", (int)sizeof text, (int)sizeof "abc", (int)sizeof m, (int)sizeof m[0], (int)sizeof m[0][0]);
    printf("%d %d %d\n", (int)sizeof(struct mixed), (int)sizeof x, (int)sizeof(union either));
    printf("%d %d %d %d\n", (int)offsetof(struct mixed, s), (int)offsetof(struct mixed, i), (int)offsetof(struct mixed, f),
           (int)offsetof(struct mixed, g));
    printf("%d %d %d %d\n", (int)sizeof(i++), (int)sizeof(touched = 5), (int)sizeof 'a', (int)sizeof(1.0f));
    printf("%d %d %d %d\n", i, touched, (int)sizeof(text[0] + 1), (int)(sizeof names / sizeof names[0]));
    for (i = 0; i < 6; i++) {
        printf("%d ", c);
        c = next(c);
    }
    printf("%d %d %d\n", sign_of(-9), sign_of(0), sign_of(44));
    printf("%s %s %s\n", names[RED], names[GREEN], names[BLUE]);
    printf("%d %d %d %d\n", BOTH, BIT3 * 2 + BLUE, LAST, BIG);
    i = GREEN;
    c = (enum color)(i + 1);
    i = sign_of(-5) * 10 + (c == BLUE);
    printf("%d\n", i);
    m[1][2] = 4;
    x.e = 'e';
    return m[1][2] + x.e;
}
