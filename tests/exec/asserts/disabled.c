/* With NDEBUG an assertion is nothing at all, its operand is not evaluated. */
#define NDEBUG
#include <assert.h>
#include <stdio.h>

static int calls;
static int effect(void) { return ++calls > 100; }

int main(void)
{
    int i;
    for (i = 0; i < 5; i++)
        assert(effect());
    if (i == 5)
        assert(0);
    else
        calls = 50;
    printf("%d\n", calls);
    return calls;
}
