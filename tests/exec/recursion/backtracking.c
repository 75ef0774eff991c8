/* Search by recursion with state in arrays and globals: permutations, subsets, partitions, a maze. */
#include <stdio.h>
#include <string.h>

static int order[6], taken[6], found;
static unsigned hash;

static void permute(int at, int n)
{
    int i;
    if (at == n) {
        unsigned h = 0;
        for (i = 0; i < n; i++)
            h = h * 10 + (unsigned)order[i];
        hash = hash * 31 + h;
        found++;
        return;
    }
    for (i = 0; i < n; i++) {
        if (taken[i])
            continue;
        taken[i] = 1;
        order[at] = i;
        permute(at + 1, n);
        taken[i] = 0;
    }
}

static void permute_string(char *s, int at)
{
    int i;
    if (!s[at + 1]) {
        hash = hash * 33 + (unsigned char)s[0] * 7u + (unsigned char)s[at];
        found++;
        return;
    }
    for (i = at; s[i]; i++) {
        char t = s[at]; s[at] = s[i]; s[i] = t;
        permute_string(s, at + 1);
        t = s[at]; s[at] = s[i]; s[i] = t;
    }
}

static int subsets(const int *v, int n, int target)
{
    if (n == 0)
        return target == 0;
    return subsets(v + 1, n - 1, target) + subsets(v + 1, n - 1, target - *v);
}

static int partitions(int n, int largest)
{
    int k, t = 0;
    if (n == 0)
        return 1;
    for (k = n < largest ? n : largest; k > 0; k--)
        t += partitions(n - k, k);
    return t;
}

static char maze[9][12] = {"###########", "#.....#...#", "#.###.#.#.#", "#.#...#.#.#", "#.#.###.#.#", "#.#.....#.#", "#.#######.#",
                           "#.........#", "###########"};
static int path(int r, int c, int tr, int tc)
{
    static const signed char dr[4] = {0, 1, 0, -1}, dc[4] = {1, 0, -1, 0};
    int d, n, best = 0;
    if (r == tr && c == tc)
        return 1;
    maze[r][c] = '+';
    for (d = 0; d < 4; d++) {
        int nr = r + dr[d], nc = c + dc[d];
        if (maze[nr][nc] == '.') {
            n = path(nr, nc, tr, tc);
            if (n && (!best || n + 1 < best))
                best = n + 1;
        }
    }
    maze[r][c] = '.';
    return best;
}

static int fill(char grid[][12], int r, int c, char to)
{
    if (grid[r][c] != '.')
        return 0;
    grid[r][c] = to;
    return 1 + fill(grid, r, c + 1, to) + fill(grid, r + 1, c, to) + fill(grid, r, c - 1, to) + fill(grid, r - 1, c, to);
}

int main(void)
{
    char s[] = "abcde";
    static const int v[] = {3, 34, 4, 12, 5, 2, 8, 7, 1, 9};
    permute(0, 5);
    printf("%d %08x\n", found, hash);
    found = 0;
    permute_string(s, 0);
    printf("%d %08x %s\n", found, hash, s);
    printf("%d %d %d\n", subsets(v, 10, 20), subsets(v, 10, 0), partitions(20, 20));
    printf("%d %d\n", path(1, 1, 1, 9), path(1, 1, 5, 3));
    printf("%d", fill(maze, 1, 1, 'o'));
    printf(" %s\n", maze[3]);
    return 0;
}
