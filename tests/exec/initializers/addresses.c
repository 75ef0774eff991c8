/* Initial values that are addresses: of objects, elements, members, functions, strings, themselves. */
#include <stdio.h>

static int numbers[5] = {10, 20, 30, 40, 50};
static struct item { char tag; int values[3]; struct item *link; } items[2];
static double weight = 2.5;

static int twice(int x) { return 2 * x; }
static int square(int x) { return x * x; }
static int minus(int x) { return -x; }

static int *first = numbers;
static int *third = &numbers[2];
static int *last = numbers + 4;
static int *end = &numbers[5];
static int *before_end = &numbers[5] - 2;
static int *member = &items[1].values[2];
static struct item *link = &items[1];
static char *bytes = (char *)numbers + 8;
static void *any = &weight;
static int (*operation)(int) = twice;
static int (*operations[])(int) = {twice, &square, minus, 0};
static const char *text = "pointer to text";
static const char *inner = "abcdef" + 3;
static const char *const words[] = {"alpha", "beta", "alpha" "bet", ""};
static char (*row)[4];
static char rows[3][4] = {"abc", "def", "ghi"};
static char (*second_row)[4] = &rows[1];
static int **indirect = &third;
static struct { const char *name; int (*call)(int); int *target; } commands[] = {
    {"twice", twice, &numbers[0]}, {"square", square, numbers + 1}, {"minus", minus, &items[0].values[0]}};
static unsigned difference = (unsigned)((char *)&((struct item *)0)->link - (char *)0);
static void *self = &self;
static struct pair { struct pair *other; int value; } left, right = {&left, 2}, left = {&right, 1};

int main(void)
{
    unsigned i;
    row = rows;
    printf("%d %d %d %d\n", *first, *third, *last, *before_end);
    printf("%d %d\n", (int)(end - first), (int)(member - items[1].values));
    *member = 77;
    link->tag = 't';
    printf("%d %c %d %g\n", items[1].values[2], items[1].tag, *(int *)bytes, *(double *)any);
    printf("%d", operation(21));
    for (i = 0; operations[i]; i++)
        printf(" %d", operations[i](9));
    printf("\n%s %s", text, inner);
    for (i = 0; i < 4; i++)
        printf(" [%s]", words[i]);
    printf("\n%s %s %c\n", *second_row, row[2], second_row[1][0]);
    **indirect += 5;
    indirect = &last;
    printf("%d %d\n", numbers[2], **indirect);
    for (i = 0; i < 3; i++) {
        *commands[i].target = commands[i].call((int)i + 3);
        printf("%s ", commands[i].name);
    }
    printf("%d %d %d\n", numbers[0], numbers[1], items[0].values[0]);
    printf("%u %d %d%d\n", difference, self == (void *)&self, left.other->value, right.other->value);
    return 0;
}
