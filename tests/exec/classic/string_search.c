/* Text searching: naive, with a failure table, with a skip table, by rolling hash; edit distance, longest common part. */
#include <stdio.h>
#include <string.h>

static char text[1200];

static void make_text(void)
{
    unsigned seed = 7;
    int i;
    for (i = 0; i < 1199; i++) {
        seed = seed * 1103515245u + 12345u;
        text[i] = (char)('a' + (seed >> 16) % 3);
    }
}

static int naive(const char *t, const char *p)
{
    int i, j, n = 0;
    for (i = 0; t[i]; i++) {
        for (j = 0; p[j] && t[i + j] == p[j]; j++)
            ;
        if (!p[j])
            n++;
    }
    return n;
}

static int by_failure(const char *t, const char *p)
{
    int fail[32], m = (int)strlen(p), i, k = 0, n = 0;
    fail[0] = 0;
    for (i = 1; i < m; i++) {
        while (k > 0 && p[i] != p[k])
            k = fail[k - 1];
        if (p[i] == p[k])
            k++;
        fail[i] = k;
    }
    for (k = 0; *t; t++) {
        while (k > 0 && (k == m || *t != p[k]))
            k = fail[k - 1];
        if (*t == p[k])
            k++;
        if (k == m)
            n++;
    }
    return n;
}

static int by_skip(const char *t, const char *p)
{
    unsigned char skip[256];
    int m = (int)strlen(p), length = (int)strlen(t), i, j, n = 0;
    memset(skip, m, sizeof skip);
    for (i = 0; i < m - 1; i++)
        skip[(unsigned char)p[i]] = (unsigned char)(m - 1 - i);
    for (i = m - 1; i < length;) {
        for (j = 0; j < m && t[i - j] == p[m - 1 - j]; j++)
            ;
        if (j == m) {
            n++;
            i++;
        } else
            i += skip[(unsigned char)t[i]];
    }
    return n;
}

static int by_hash(const char *t, const char *p)
{
    unsigned want = 0, have = 0, top = 1;
    int m = (int)strlen(p), i, n = 0;
    for (i = 0; i < m; i++) {
        want = want * 257u + (unsigned char)p[i];
        have = have * 257u + (unsigned char)t[i];
        if (i)
            top *= 257u;
    }
    for (i = 0;; i++) {
        if (have == want && memcmp(t + i, p, (size_t)m) == 0)
            n++;
        if (!t[i + m])
            return n;
        have = (have - (unsigned char)t[i] * top) * 257u + (unsigned char)t[i + m];
    }
}

static int distance(const char *a, const char *b)
{
    int row[40], i, j, n = (int)strlen(b);
    for (j = 0; j <= n; j++)
        row[j] = j;
    for (i = 0; a[i]; i++) {
        int diagonal = row[0];
        row[0] = i + 1;
        for (j = 0; j < n; j++) {
            int best = diagonal + (a[i] != b[j]);
            diagonal = row[j + 1];
            if (row[j] + 1 < best)
                best = row[j] + 1;
            if (diagonal + 1 < best)
                best = diagonal + 1;
            row[j + 1] = best;
        }
    }
    return row[n];
}

static int common(const char *a, const char *b)
{
    static short table[40][40];
    int i, j;
    for (i = 1; a[i - 1]; i++)
        for (j = 1; b[j - 1]; j++)
            table[i][j] = a[i - 1] == b[j - 1] ? (short)(table[i - 1][j - 1] + 1)
                          : table[i - 1][j] > table[i][j - 1] ? table[i - 1][j] : table[i][j - 1];
    return table[i - 1][(int)strlen(b)];
}

int main(void)
{
    static const char *const patterns[] = {"a", "ab", "abc", "aab", "cacb", "abcabc", "bbbbb", "ccaabbccaabb", "zz"};
    unsigned i;
    make_text();
    for (i = 0; i < sizeof patterns / sizeof patterns[0]; i++)
        printf("%s %d %d %d %d\n", patterns[i], naive(text, patterns[i]), by_failure(text, patterns[i]),
               by_skip(text, patterns[i]), by_hash(text, patterns[i]));
    printf("%d %d %d\n", distance("kitten", "sitting"), distance("", "abc"), distance("intention", "execution"));
    printf("%d\n", common("the quick brown fox jumps", "thin bricks from box pumps"));
    return 0;
}
