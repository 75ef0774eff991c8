/* Pointers to integers and back, between pointer types, to _Bool, and pointers compared. */
#include <stdio.h>
#include <string.h>

struct pair { int a, b; };
static int numbers[10];
static struct pair pairs[4];

static unsigned distance(void *from, void *to) { return (unsigned)to - (unsigned)from; }
static int is_aligned(const void *p, unsigned n) { return ((unsigned)p & (n - 1)) == 0; }

static int *round_trip(int *p)
{
    unsigned word = (unsigned)p;
    long value = (long)word;
    char *bytes = (char *)value;
    void *any = bytes;
    return any;
}

static int add(int a, int b) { return a + b; }
static int sub(int a, int b) { return a - b; }

static int call_as(void *p)
{
    int (*f)(int, int) = (int (*)(int, int))p;
    return f(9, 4);
}

int main(void)
{
    int i;
    char *bytes = (char *)numbers;
    unsigned char raw[8];
    _Bool b;
    struct pair *q = pairs;
    for (i = 0; i < 10; i++)
        numbers[i] = i * 0x01010101;
    printf("%u %u %u\n", distance(numbers, numbers + 3), distance(&pairs[1], &pairs[3].b), distance(bytes, bytes + 7));
    printf("%d %d\n", is_aligned(numbers, 4), is_aligned(bytes + 1, 2));
    printf("%d %d\n", *round_trip(numbers + 5) == numbers[5], round_trip(numbers) == numbers);
    printf("%d %d\n", call_as((void *)add), call_as((void *)sub));
    printf("%d %d\n", bytes[4 * 7], ((short *)numbers)[6]);
    *(int *)(bytes + 8) = 0x11223344;
    printf("%x %x\n", numbers[2], ((unsigned short *)numbers)[5]);
    memcpy(raw, numbers + 2, 8);
    printf("%02x %02x %02x %02x %02x\n", raw[0], raw[1], raw[2], raw[3], raw[4]);
    b = q;
    printf("%d ", b);
    b = (struct pair *)0;
    printf("%d ", b);
    b = 0.25;
    printf("%d ", b);
    b = 256;
    printf("%d\n", b);
    printf("%d %d %d\n", q == pairs, (void *)q != (void *)&q->a, &q[1] > &q[0]);
    printf("%d %d\n", (int)(&q[3] - q), (int)((char *)&q[3] - (char *)q));
    printf("%d\n", ((struct pair *)(void *)&numbers[6])->b == numbers[7]);
    return 0;
}
