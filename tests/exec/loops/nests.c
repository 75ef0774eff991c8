/* Nests of loops: triangular bounds, breaks from inner ones, exits by goto and by flag, long chains. */
#include <stdio.h>

static int grid[8][9];

static void triangle(int n)
{
    int i, j;
    for (i = 0; i < n; i++)
        for (j = 0; j <= i; j++)
            grid[i][j] = i * 10 + j;
    for (i = 0; i < n; i++)
        for (j = i + 1; j < n; j++)
            grid[i][j] = -grid[j][i];
}

static int search(int key, int *row, int *column)
{
    int i, j, found = 0;
    for (i = 0; i < 8 && !found; i++)
        for (j = 0; j < 9; j++)
            if (grid[i][j] == key) {
                *row = i;
                *column = j;
                found = 1;
                break;
            }
    return found;
}

static int search_goto(int key)
{
    int i, j;
    for (i = 7; i >= 0; i--)
        for (j = 8; j >= 0; j--)
            if (grid[i][j] == key)
                goto found;
    return -1;
found:
    return i * 100 + j;
}

static int five_deep(int n)
{
    int a, b, c, d, e, count = 0;
    for (a = 0; a < n; a++)
        for (b = a; b < n; b++)
            for (c = b; c < n; c++)
                for (d = c; d < n; d++)
                    for (e = d; e < n; e++)
                        if ((a + b + c + d + e) % 3 == 0)
                            count++;
    return count;
}

static int mixed_kinds(int n)
{
    int total = 0, i = 0;
    while (i < n) {
        int j = 0;
        do {
            int k;
            for (k = j; k < 6; k++) {
                if (k == 4)
                    break;
                if ((i + j + k) & 1)
                    continue;
                total += i * j - k;
            }
            total += k;
            if (total > 150)
                break;
        } while (++j < i);
        i++;
    }
    return total;
}

static int sequence_of_loops(int n)
{
    int i, s = 0;
    for (i = 0; i < n; i++) s += i;
    for (i = 0; i < n; i++) s ^= i * 3;
    for (i = n; i > 0; i--) s -= i & 3;
    for (; i < n; i++) s += s & 1;
    return s;
}

static int pythagorean(int limit)
{
    int a, b, c, found = 0;
    for (c = 1; c <= limit; c++)
        for (b = 1; b < c; b++)
            for (a = 1; a < b; a++)
                if (a * a + b * b == c * c)
                    found = found * 7 % 10007 + a + b + c;
    return found;
}

int main(void)
{
    int r = -1, c = -1, ok;
    triangle(8);
    ok = search(-63, &r, &c);
    printf("%d %d %d\n", ok, r, c);
    ok = search(999, &r, &c);
    printf("%d %d %d\n", ok, r, c);
    printf("%d %d\n", search_goto(53), search_goto(1234));
    printf("%d %d %d %d\n", five_deep(7), mixed_kinds(9), sequence_of_loops(13), pythagorean(40));
    return 0;
}
