/* Induction variables: several in step, derived ones, pointers beside indices, use after the loop. */
#include <stdio.h>

static int data[64];
static short halves[64];
static struct { char tag; int value; short extra; } records[16];

static int derived(int n)
{
    int i, s = 0;
    for (i = 0; i < n; i++)
        s += i * 12 + (i * 4 + 3) * (n - i) - (i << 2);
    return s + i * 12;
}

static void fill(int n)
{
    int i, j = 5, k = 100;
    for (i = 0; i < n; i++) {
        data[i] = j * 2 + k;
        halves[i] = (short)(data[i] - i);
        j += 3;
        k -= 2;
    }
    data[n - 1] += j + k;
}

static int by_pointer(const int *p, int n)
{
    const int *end = p + n;
    int s = 0, weight = 1;
    while (p < end) {
        s += *p++ * weight;
        weight = -weight;
    }
    return s;
}

static int two_pointers(int *a, short *b, int n)
{
    int s = 0;
    short *last = b + n - 1;
    while (n--)
        s += *a++ - *last--;
    return s;
}

static int strided(int n)
{
    int i, s = 0;
    for (i = 0; i + 3 < n; i += 4)
        s += data[i] - data[i + 1] + data[i + 2] * 2 - data[i + 3];
    for (; i < n; i++)
        s += data[i];
    return s;
}

static int members(int n)
{
    int i, s = 0;
    for (i = 0; i < n; i++) {
        records[i].tag = (char)('a' + i);
        records[i].value = i * i;
        records[i].extra = (short)(records[i].value - i);
    }
    for (i = n - 1; i >= 0; i--)
        s = s * 3 + records[i].value + records[i].extra + records[i].tag;
    return s;
}

static int unsigned_index(unsigned n)
{
    unsigned i;
    int s = 0;
    for (i = n; i-- > 0;)
        s = s * 5 % 10007 + data[i];
    return s;
}

static int narrow_index(void)
{
    unsigned char i;
    signed char j;
    int s = 0;
    for (i = 10; i < 20; i++)
        s += data[i] * i;
    for (j = 15; j >= 0; j = (signed char)(j - 3))
        s -= halves[j];
    return s;
}

static int secondary(int n)
{
    int i, square = 0, odd = 1, triangle = 0;
    for (i = 0; i < n; i++) {
        square += odd;
        odd += 2;
        triangle += i;
    }
    return square * 1000 + triangle + odd;
}

int main(void)
{
    fill(50);
    printf("%d %d\n", derived(20), derived(0));
    printf("%d %d %d\n", data[0], data[25], data[49]);
    printf("%d %d\n", by_pointer(data, 50), by_pointer(data + 3, 7));
    printf("%d %d %d\n", two_pointers(data, halves, 50), strided(50), strided(11));
    printf("%d\n", members(10));
    printf("%d %d %d\n", unsigned_index(50), narrow_index(), secondary(30));
    return 0;
}
