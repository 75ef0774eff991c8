/* Structures of many sizes, even and odd, as arguments, results, copies and array elements. */
#include <stdio.h>
#include <string.h>

#define SIZED(N)                                                                                   \
    struct s##N { unsigned char b[N]; };                                                           \
    static struct s##N global##N, array##N[3];                                                     \
    static struct s##N make##N(int seed)                                                           \
    {                                                                                              \
        struct s##N r;                                                                             \
        int i;                                                                                     \
        for (i = 0; i < N; i++)                                                                    \
            r.b[i] = (unsigned char)(seed + i * 3);                                                \
        return r;                                                                                  \
    }                                                                                              \
    static int sum##N(struct s##N x, int k)                                                        \
    {                                                                                              \
        int i, t = k;                                                                              \
        for (i = 0; i < N; i++)                                                                    \
            t = (t * 5 + x.b[i]) % 100003;                                                         \
        x.b[0] = 0;                                                                                \
        return t;                                                                                  \
    }                                                                                              \
    static struct s##N pass##N(char before, struct s##N x, short after)                            \
    {                                                                                              \
        x.b[N - 1] = (unsigned char)(x.b[N - 1] + before + after);                                 \
        return x;                                                                                  \
    }                                                                                              \
    static void test##N(void)                                                                      \
    {                                                                                              \
        struct s##N local = make##N(N), copy, *p = &array##N[1];                                   \
        copy = local;                                                                              \
        global##N = copy;                                                                          \
        array##N[2] = array##N[0] = global##N;                                                     \
        *p = pass##N(1, local, 2);                                                                 \
        local.b[0]++;                                                                              \
        printf("%d: %d %d %d", N, sum##N(local, 1), sum##N(copy, 1), sum##N(*p, 1));               \
        printf(" %d %d", sum##N(pass##N(3, make##N(7), 4), 2), make##N(50).b[N / 2]);              \
        copy = *p = array##N[2];                                                                   \
        printf(" %d %d\n", memcmp(&copy, &global##N, sizeof copy), (int)sizeof array##N);          \
    }

SIZED(1) SIZED(2) SIZED(3) SIZED(4) SIZED(5) SIZED(6) SIZED(7) SIZED(8) SIZED(9) SIZED(11) SIZED(12) SIZED(13)
SIZED(15) SIZED(16) SIZED(17) SIZED(20) SIZED(23) SIZED(24) SIZED(31) SIZED(32) SIZED(33) SIZED(40)

int main(void)
{
    test1(); test2(); test3(); test4(); test5(); test6(); test7(); test8(); test9(); test11(); test12(); test13();
    test15(); test16(); test17(); test20(); test23(); test24(); test31(); test32(); test33(); test40();
    return 0;
}
