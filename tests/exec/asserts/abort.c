/* abort from inside a loop and a callback, after output was flushed. */
#include <stdio.h>
#include <stdlib.h>

static int visited;
static int compare(const void *a, const void *b)
{
    visited++;
    if (*(const char *)a == '!' || *(const char *)b == '!') {
        printf("found after some comparisons: %d\n", visited > 0);
        fflush(stdout);
        abort();
    }
    return *(const char *)a - *(const char *)b;
}

int main(void)
{
    char text[] = "abcdefgh", other[] = "xyz!abc";
    qsort(text, 8, 1, compare);
    printf("%s\n", text);
    fflush(stdout);
    qsort(other, 7, 1, compare);
    printf("never\n");
    return 0;
}
