/* Pointers to pointers, arrays of arrays, pointers to arrays, arrays of pointers, decayed parameters. */
#include <stdio.h>

static int matrix[3][4] = {{1, 2, 3, 4}, {5, 6, 7, 8}, {9, 10, 11, 12}};
static int cube[2][3][4];
static const char *words[] = {"delta", "alpha", "charlie", "bravo", 0};

static int sum_rows(int (*rows)[4], int n)
{
    int t = 0, i;
    for (; n > 0; n--, rows++)
        for (i = 0; i < 4; i++)
            t = t * 2 + (*rows)[i];
    return t;
}

static int sum_cube(int c[][3][4], int n)
{
    int i, j, k, t = 0;
    for (i = 0; i < n; i++)
        for (j = 0; j < 3; j++)
            for (k = 0; k < 4; k++)
                t += c[i][j][k] * (i + j - k);
    return t;
}

static void redirect(int **p, int *to) { *p = to; }
static void redirect_twice(int ***p, int **to) { ***p += **to; *p = to; }
static void swap(const char **a, const char **b) { const char *t = *a; *a = *b; *b = t; }

static int compare(const char *a, const char *b)
{
    while (*a && *a == *b)
        a++, b++;
    return *a - *b;
}

static void sort(const char **list)
{
    const char **p, **q;
    for (p = list; *p; p++)
        for (q = p + 1; *q; q++)
            if (compare(*p, *q) > 0)
                swap(p, q);
}

static int *row_of(int i) { return matrix[i]; }
static int (*rows_from(int i))[4] { return &matrix[i]; }

static void transpose(int to[4][3], int from[3][4])
{
    int i, j;
    for (i = 0; i < 3; i++)
        for (j = 0; j < 4; j++)
            to[j][i] = from[i][j];
}

int main(void)
{
    int a = 1, b = 2, *p = &a, *q = &b, **pp = &p, **qq = &q, ***ppp = &pp;
    int turned[4][3], i, *diagonal[3], (*grid)[4] = matrix;
    char text[3][8] = {"one", "two", "three"}, *s;
    **pp = 10;
    ***ppp += 5;
    redirect(pp, &b);
    *p += 100;
    printf("%d %d %d %d\n", a, b, **pp, *p == *q);
    redirect(&p, &a);
    redirect_twice(&pp, qq);
    redirect_twice(ppp != &pp ? 0 : &qq, &p);
    printf("%d %d %d %d %d\n", a, b, **pp, **qq, ***ppp);
    printf("%d %d\n", sum_rows(matrix, 3), sum_rows(matrix + 1, 1));
    for (i = 0; i < 24; i++)
        cube[i / 12][i / 4 % 3][i % 4] = i;
    printf("%d %d %d\n", sum_cube(cube, 2), *(*(*(cube + 1) + 2) + 3), cube[1][0][0] - (*cube)[2][1]);
    sort(words);
    for (i = 0; words[i]; i++)
        printf("%s %c ", words[i], *(words[i] + 1));
    printf("\n%d %d %d\n", row_of(2)[3], rows_from(1)[0][2], (*rows_from(0))[1]);
    transpose(turned, matrix);
    printf("%d %d %d\n", turned[3][2], turned[0][1], (*turned)[2]);
    for (i = 0; i < 3; i++)
        diagonal[i] = &grid[i][i];
    for (i = 0; i < 3; i++)
        *diagonal[i] *= -1;
    printf("%d %d %d %d\n", matrix[0][0], matrix[1][1], matrix[2][2], diagonal[2] - diagonal[0]);
    for (i = 0; i < 3; i++)
        for (s = text[i]; *s; s++)
            *s = (char)(*s - 'a' + 'A');
    printf("%s %s %s %d\n", text[0], text[1], *(text + 2), (int)(sizeof text / sizeof *text));
    return 0;
}
