/* Queens on a board in three ways (arrays, bit masks, a stack), and a knight's tour by the rule of fewest exits. */
#include <stdio.h>

static int column[12], up[24], down[24], place[12];

static int by_arrays(int row, int n)
{
    int c, count = 0;
    if (row == n)
        return 1;
    for (c = 0; c < n; c++)
        if (!column[c] && !up[row + c] && !down[row - c + n - 1]) {
            column[c] = up[row + c] = down[row - c + n - 1] = 1;
            place[row] = c;
            count += by_arrays(row + 1, n);
            column[c] = up[row + c] = down[row - c + n - 1] = 0;
        }
    return count;
}

static int by_masks(unsigned all, unsigned columns, unsigned left, unsigned right)
{
    unsigned open = all & ~(columns | left | right);
    int count = 0;
    if (columns == all)
        return 1;
    while (open) {
        unsigned bit = open & (0u - open);
        open ^= bit;
        count += by_masks(all, columns | bit, (left | bit) << 1, (right | bit) >> 1);
    }
    return count;
}

static int safe(const signed char *q, int row)
{
    int i;
    for (i = 0; i < row; i++)
        if (q[i] == q[row] || q[i] - q[row] == i - row || q[i] - q[row] == row - i)
            return 0;
    return 1;
}

static int by_stack(int n)
{
    signed char q[12];
    int row = 0, count = 0;
    q[0] = -1;
    while (row >= 0) {
        do
            q[row]++;
        while (q[row] < n && !safe(q, row));
        if (q[row] == n)
            row--;
        else if (row == n - 1)
            count++;
        else
            q[++row] = -1;
    }
    return count;
}

static int board[6][6];
static const signed char dx[8] = {1, 2, 2, 1, -1, -2, -2, -1}, dy[8] = {-2, -1, 1, 2, 2, 1, -1, -2};

static int is_free(int x, int y) { return x >= 0 && x < 6 && y >= 0 && y < 6 && !board[y][x]; }
static int exits(int x, int y)
{
    int k, n = 0;
    for (k = 0; k < 8; k++)
        n += is_free(x + dx[k], y + dy[k]);
    return n;
}

static int tour(int x, int y)
{
    int step = 1;
    board[y][x] = step;
    for (;;) {
        int best = -1, fewest = 9, k;
        for (k = 0; k < 8; k++)
            if (is_free(x + dx[k], y + dy[k])) {
                int n = exits(x + dx[k], y + dy[k]);
                if (n < fewest) {
                    fewest = n;
                    best = k;
                }
            }
        if (best < 0)
            return step;
        x += dx[best];
        y += dy[best];
        board[y][x] = ++step;
    }
}

int main(void)
{
    int n, i;
    for (n = 4; n <= 7; n++) {
        unsigned all = (1u << n) - 1;
        printf("%d: %d %d %d\n", n, by_arrays(0, n), by_masks(all, 0, 0, 0), by_stack(n));
    }
    printf("%d\n", tour(0, 0));
    for (i = 0; i < 6; i++)
        printf("%2d %2d %2d %2d %2d %2d\n", board[i][0], board[i][1], board[i][2], board[i][3], board[i][4], board[i][5]);
    return 0;
}
