/* An assertion that fails ends the program at once, with all earlier output written. */
#include <assert.h>
#include <stdio.h>

static int depth(int n)
{
    assert(n != 3);
    return n == 0 ? 0 : 1 + depth(n - 1);
}

int main(void)
{
    printf("%d\n", depth(2));
    printf("before\n");
    fflush(stdout);
    depth(6);
    printf("after\n");
    return 0;
}
