/* Switches inside loops and loops inside switches; break and continue each meet their own target. */
#include <ctype.h>
#include <stdio.h>

static int scan(const char *text, int *letters, int *digits, int *others)
{
    int lines = 0;
    *letters = *digits = *others = 0;
    for (; *text; text++) {
        switch (*text) {
        case '\n':
            lines++;
            continue;
        case '0': case '1': case '2': case '3': case '4': case '5': case '6': case '7': case '8': case '9':
            ++*digits;
            break;
        case '!':
            return -1;
        default:
            if (isalpha((unsigned char)*text)) {
                ++*letters;
                break;
            }
            ++*others;
        }
    }
    return lines;
}

/* A machine over states: 0 outside, 1 in a word, 2 in a number, 3 after a sign. */
static int states(const char *p)
{
    int state = 0, words = 0, numbers = 0;
    while (*p) {
        char ch = *p++;
        switch (state) {
        case 0:
            if (isdigit((unsigned char)ch)) state = 2;
            else if (isalpha((unsigned char)ch)) state = 1;
            else if (ch == '-') state = 3;
            break;
        case 1:
            if (isalnum((unsigned char)ch)) break;
            words++;
            state = 0;
            break;
        case 2:
            if (isdigit((unsigned char)ch)) break;
            numbers++;
            state = 0;
            break;
        case 3:
            state = isdigit((unsigned char)ch) ? 2 : 0;
        }
    }
    switch (state) {
    case 1: words++; break;
    case 2: numbers++;
    }
    return words * 100 + numbers;
}

static int loop_in_case(int kind, int n)
{
    int s = 0;
    switch (kind) {
    case 0:
        while (n > 0) {
            if (n == 3) break;
            s += n--;
        }
        s += 1000;
        break;
    case 1:
        for (; n > 0; n--) {
        case 2:
            s += 10 * n;
            if (s > 100) break;
        }
        s += 7;
    default:
        do
            s++;
        while (s % 5);
    }
    return s;
}

static int nested(int a, int b)
{
    switch (a) {
    case 0:
        switch (b) {
        case 0: return 0;
        case 1: break;
        default: return 2;
        }
        return 1;
    case 1: {
        int t = b * 2;
        switch (t) {
        case 2: t += 5; break;
        case 4: t += 6;
        }
        return t;
    }
    case 2:
        if (b) {
        case 3:
            return 30 + b;
        }
        return 20;
    }
    return -1;
}

int main(void)
{
    int l, d, o, i, lines;
    lines = scan("abc 12\nx-9 y\n", &l, &d, &o);
    printf("%d %d %d %d\n", lines, l, d, o);
    printf("%d\n", scan("ab!c", &l, &d, &o));
    printf("%d %d\n", states("one 2 three -44 f5 6x -z"), states("word"));
    for (i = 0; i < 4; i++)
        printf("%d %d  ", loop_in_case(i, 5), loop_in_case(i, 0));
    printf("\n");
    for (i = 0; i < 15; i++)
        printf("%d ", nested(i / 3, i % 3));
    printf("\n");
    return 0;
}
