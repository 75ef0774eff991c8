/* The game of life in bytes and in rows of bits, on a torus, both giving the same generations. */
#include <stdio.h>
#include <string.h>

#define ROWS 24
#define COLUMNS 32
static unsigned char now[ROWS][COLUMNS], then[ROWS][COLUMNS];
static unsigned bits[ROWS], next_bits[ROWS];

static void start(void)
{
    static const char *const pattern[] = {"..#.....", "#.#.....", ".##..###", "........", "..##....", ".##.....", "..#.....", "###.#..#"};
    int i, j;
    for (i = 0; i < 8; i++)
        for (j = 0; pattern[i][j]; j++)
            if (pattern[i][j] == '#') {
                now[i + 3][j + 10] = 1;
                bits[i + 3] |= 1u << (j + 10);
            }
}

static int neighbors(int r, int c)
{
    int i, j, n = 0;
    for (i = -1; i <= 1; i++)
        for (j = -1; j <= 1; j++)
            if (i || j)
                n += now[(r + i + ROWS) % ROWS][(c + j + COLUMNS) & (COLUMNS - 1)];
    return n;
}

static void step_bytes(void)
{
    int r, c;
    for (r = 0; r < ROWS; r++)
        for (c = 0; c < COLUMNS; c++) {
            int n = neighbors(r, c);
            then[r][c] = n == 3 || (n == 2 && now[r][c]);
        }
    memcpy(now, then, sizeof now);
}

static unsigned left(unsigned x) { return x << 1 | x >> 31; }
static unsigned right(unsigned x) { return x >> 1 | x << 31; }

static void add(unsigned x, unsigned *ones, unsigned *twos, unsigned *fours)
{
    unsigned carry = *ones & x, more;
    *ones ^= x;
    more = *twos & carry;
    *twos ^= carry;
    *fours |= more;
}

static void step_bits(void)
{
    int r;
    for (r = 0; r < ROWS; r++) {
        unsigned a = bits[r ? r - 1 : ROWS - 1], b = bits[r], c = bits[r + 1 < ROWS ? r + 1 : 0];
        unsigned ones = 0, twos = 0, fours = 0;
        add(left(a), &ones, &twos, &fours);
        add(a, &ones, &twos, &fours);
        add(right(a), &ones, &twos, &fours);
        add(left(b), &ones, &twos, &fours);
        add(right(b), &ones, &twos, &fours);
        add(left(c), &ones, &twos, &fours);
        add(c, &ones, &twos, &fours);
        add(right(c), &ones, &twos, &fours);
        next_bits[r] = twos & ~fours & (ones | b);
    }
    for (r = 0; r < ROWS; r++)
        bits[r] = next_bits[r];
}

static int population(void)
{
    int r, n = 0;
    for (r = 0; r < ROWS; r++) {
        unsigned x = bits[r];
        for (; x; x &= x - 1)
            n++;
    }
    return n;
}

static int agree(void)
{
    int r, c;
    for (r = 0; r < ROWS; r++)
        for (c = 0; c < COLUMNS; c++)
            if (now[r][c] != (bits[r] >> c & 1u))
                return 0;
    return 1;
}

int main(void)
{
    int generation, r, c;
    start();
    for (generation = 0; generation <= 20; generation++) {
        if (generation % 5 == 0)
            printf("%d: %d %d\n", generation, population(), agree());
        step_bytes();
        step_bits();
    }
    for (r = 0; r < ROWS; r += 3) {
        char line[COLUMNS + 1];
        for (c = 0; c < COLUMNS; c++)
            line[c] = now[r][c] ? '#' : '.';
        line[COLUMNS] = 0;
        printf("%s\n", line);
    }
    return population() & 127;
}
