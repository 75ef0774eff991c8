/* if and else in every nesting: dangling else, empty arms, equal arms, conditions already decided. */
#include <stdio.h>

static int grade(int points)
{
    if (points >= 90) return 'A';
    else if (points >= 80) return 'B';
    else if (points >= 70) return 'C';
    else if (points >= 60) return 'D';
    else return 'F';
}

static int dangling(int a, int b)
{
    int r = 0;
    if (a)
        if (b) r = 1;
        else r = 2;
    if (a) {
        if (b) r += 10;
    } else r += 20;
    return r;
}

static int same_arms(int x)
{
    int r;
    if (x > 3) r = x + 1; else r = x + 1;
    if (x) ; else r++;
    if (x > 5) { } else { }
    if (x == 2) { r *= 2; r += 3; } else { r -= 1; r += 3; }
    return r;
}

static int implied(int x, int y)
{
    int n = 0;
    if (x > 10) {
        if (x > 5) n += 1;
        if (x < 3) n += 2;
        if (x != 7) n += 4;
        if (x == y) {
            if (y > 10) n += 8;
        }
    }
    if (x == 4) {
        n += x * 16;
        if (x & 1) n += 1000;
    }
    if (x != y) n += 128; else if (x <= y && x >= y) n += 256;
    return n;
}

static int correlated(int a, int b)
{
    int flag = 0, r = 0;
    if (a > b) flag = 1;
    r += a;
    if (flag) r -= b; else r += b;
    if (!flag) r ^= 1;
    return r;
}

static int min3(int a, int b, int c)
{
    int m = a;
    if (b < m) m = b;
    if (c < m) m = c;
    return m;
}

static int leap(int year)
{
    if (year % 4) return 0;
    if (year % 100) return 1;
    if (year % 400) return 0;
    return 1;
}

static int branch_to_value(int x)
{
    int a, b = 5;
    if (x < 0) a = 1; else a = 0;
    if (x & 4) b = 7;
    if (x & 8) a |= 2;
    return a * 10 + b;
}

int main(void)
{
    int i, j;
    static const int years[] = {1900, 1996, 1999, 2000, 2100, 2024};
    for (i = 55; i < 100; i += 9)
        printf("%c", grade(i));
    printf("\n");
    for (i = 0; i < 4; i++)
        printf("%d ", dangling(i & 1, i & 2));
    for (i = 0; i < 8; i++)
        printf("%d ", same_arms(i));
    printf("\n");
    for (i = 0; i < 14; i += 2)
        for (j = 4; j < 13; j += 4)
            printf("%d,%d ", implied(i, j), correlated(i, j));
    printf("\n%d %d %d\n", min3(3, 2, 1), min3(1, 2, 3), min3(2, 1, 3));
    for (i = 0; i < 6; i++)
        printf("%d", leap(years[i]));
    printf("\n");
    for (i = -16; i < 16; i += 5)
        printf("%d ", branch_to_value(i));
    printf("\n");
    return grade(85) - 'A';
}
