/* Loops unrolled by a switch that jumps into their middle. */
#include <stdio.h>
#include <string.h>

static void copy(char *to, const char *from, int count)
{
    int n = (count + 7) / 8;
    if (count <= 0)
        return;
    switch (count % 8) {
    case 0: do { *to++ = *from++;
    case 7:      *to++ = *from++;
    case 6:      *to++ = *from++;
    case 5:      *to++ = *from++;
    case 4:      *to++ = *from++;
    case 3:      *to++ = *from++;
    case 2:      *to++ = *from++;
    case 1:      *to++ = *from++;
            } while (--n > 0);
    }
}

static unsigned sum_words(const unsigned *p, unsigned n)
{
    unsigned s = 0;
    switch (n & 3) {
        for (; n > 0;) {
        case 0: if (n == 0) break;
            s += *p++; n--;
        case 3: s = s * 3 + *p++; n--;
        case 2: s = s * 5 ^ *p++; n--;
        case 1: s = s * 7 - *p++; n--;
        }
    }
    return s;
}

/* A generator that resumes where it stopped. */
static int resume(int *state, int *i)
{
    switch (*state) {
    case 0:
        for (*i = 0; *i < 3; ++*i) {
            *state = 1;
            return *i * 10;
    case 1:
            *state = 2;
            return *i * 10 + 5;
    case 2:;
        }
        *state = 3;
    }
    return -1;
}

int main(void)
{
    char text[80];
    unsigned words[12];
    int n, state = 0, i = 0, v;
    unsigned u;
    for (n = 0; n <= 20; n++) {
        memset(text, '.', sizeof text);
        copy(text, "abcdefghijklmnopqrstuvwxyz", n);
        text[22] = 0;
        printf("%s\n", text);
    }
    for (u = 0; u < 12; u++)
        words[u] = u * 77 + 1;
    for (u = 0; u <= 12; u++)
        printf("%u ", sum_words(words, u));
    printf("\n");
    while ((v = resume(&state, &i)) >= 0)
        printf("%d ", v);
    printf("%d\n", state);
    return 0;
}
