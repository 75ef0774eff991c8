/* Sorting algorithms over the same data: insertion, selection, bubble, shell, merge, quick, heap, radix. */
#include <stdio.h>
#include <string.h>

#define N 300
static int input[N], work[N], extra[N];

static void make_input(void)
{
    unsigned seed = 2024;
    int i;
    for (i = 0; i < N; i++) {
        seed = seed * 1664525u + 1013904223u;
        input[i] = (int)(seed >> 12) - 500000;
    }
    input[7] = input[200];
}

static void insertion(int *a, int n)
{
    int i, j;
    for (i = 1; i < n; i++) {
        int v = a[i];
        for (j = i - 1; j >= 0 && a[j] > v; j--)
            a[j + 1] = a[j];
        a[j + 1] = v;
    }
}

static void selection(int *a, int n)
{
    int i, j;
    for (i = 0; i < n - 1; i++) {
        int least = i, t;
        for (j = i + 1; j < n; j++)
            if (a[j] < a[least])
                least = j;
        t = a[i];
        a[i] = a[least];
        a[least] = t;
    }
}

static void bubble(int *a, int n)
{
    int swapped;
    do {
        int i;
        swapped = 0;
        for (i = 1; i < n; i++)
            if (a[i - 1] > a[i]) {
                int t = a[i];
                a[i] = a[i - 1];
                a[i - 1] = t;
                swapped = 1;
            }
        n--;
    } while (swapped);
}

static void shell(int *a, int n)
{
    int gap, i, j;
    for (gap = n / 2; gap > 0; gap /= 2)
        for (i = gap; i < n; i++) {
            int v = a[i];
            for (j = i; j >= gap && a[j - gap] > v; j -= gap)
                a[j] = a[j - gap];
            a[j] = v;
        }
}

static void merge(int *a, int n)
{
    int half = n / 2, i = 0, j = half, k = 0;
    if (n < 2)
        return;
    merge(a, half);
    merge(a + half, n - half);
    while (i < half && j < n)
        extra[k++] = a[j] < a[i] ? a[j++] : a[i++];
    while (i < half)
        extra[k++] = a[i++];
    memcpy(a, extra, (size_t)k * sizeof *a);
}

static void quick(int *low, int *high)
{
    int *i = low, *j = high, pivot;
    if (low >= high)
        return;
    pivot = low[(high - low) / 2];
    while (i <= j) {
        while (*i < pivot) i++;
        while (*j > pivot) j--;
        if (i <= j) {
            int t = *i;
            *i++ = *j;
            *j-- = t;
        }
    }
    quick(low, j);
    quick(i, high);
}
static void quick_all(int *a, int n) { quick(a, a + n - 1); }

static void sift(int *a, int root, int n)
{
    int v = a[root], child;
    while ((child = 2 * root + 1) < n) {
        if (child + 1 < n && a[child + 1] > a[child])
            child++;
        if (v >= a[child])
            break;
        a[root] = a[child];
        root = child;
    }
    a[root] = v;
}

static void heap(int *a, int n)
{
    int i;
    for (i = n / 2 - 1; i >= 0; i--)
        sift(a, i, n);
    for (i = n - 1; i > 0; i--) {
        int t = a[0];
        a[0] = a[i];
        a[i] = t;
        sift(a, 0, i);
    }
}

static void radix(int *a, int n)
{
    int shift, i;
    for (shift = 0; shift < 32; shift += 8) {
        int count[257] = {0};
        for (i = 0; i < n; i++)
            count[((unsigned)a[i] ^ 0x80000000u) >> shift & 255 ? (((unsigned)a[i] ^ 0x80000000u) >> shift & 255) + 1 : 1]++;
        for (i = 0; i < 256; i++)
            count[i + 1] += count[i];
        for (i = 0; i < n; i++)
            extra[count[((unsigned)a[i] ^ 0x80000000u) >> shift & 255]++] = a[i];
        memcpy(a, extra, (size_t)n * sizeof *a);
    }
}

int main(void)
{
    static const struct { const char *name; void (*sort)(int *, int); } sorts[] = {
        {"insertion", insertion}, {"selection", selection}, {"bubble", bubble}, {"shell", shell},
        {"merge", merge}, {"quick", quick_all}, {"heap", heap}, {"radix", radix}};
    unsigned k;
    int i;
    make_input();
    for (k = 0; k < sizeof sorts / sizeof sorts[0]; k++) {
        unsigned hash = 0;
        int ordered = 1;
        memcpy(work, input, sizeof work);
        sorts[k].sort(work, N);
        for (i = 0; i < N; i++) {
            hash = hash * 31 + (unsigned)work[i];
            ordered &= i == 0 || work[i - 1] <= work[i];
        }
        printf("%s %d %08x %d %d\n", sorts[k].name, ordered, hash, work[0], work[N - 1]);
    }
    return 0;
}
