/* String routines written by hand: character loops of all kinds over char, const char and counters. */
#include <ctype.h>
#include <stdio.h>

static int length(const char *s) { const char *p = s; while (*p) p++; return (int)(p - s); }
static char *copy(char *to, const char *from) { char *r = to; while ((*to++ = *from++)) ; return r; }
static char *join(char *to, const char *from) { copy(to + length(to), from); return to; }
static int compare(const char *a, const char *b) { for (; *a == *b; a++, b++) if (!*a) return 0; return (unsigned char)*a - (unsigned char)*b; }
static const char *find(const char *s, char c) { do if (*s == c) return s; while (*s++); return 0; }

static void reverse(char *s)
{
    int i, j;
    for (i = 0, j = length(s) - 1; i < j; i++, j--) {
        int c = s[i];
        s[i] = s[j];
        s[j] = (char)c;
    }
}

static int palindrome(const char *s)
{
    int i = 0, j = length(s) - 1;
    while (i < j) {
        if (!isalpha((unsigned char)s[i])) i++;
        else if (!isalpha((unsigned char)s[j])) j--;
        else if (tolower((unsigned char)s[i++]) != tolower((unsigned char)s[j--])) return 0;
    }
    return 1;
}

static int number(const char *s)
{
    int sign = 1, n = 0;
    while (isspace((unsigned char)*s)) s++;
    if (*s == '-' || *s == '+') sign = *s++ == '-' ? -1 : 1;
    for (; isdigit((unsigned char)*s); s++) n = 10 * n + (*s - '0');
    return sign * n;
}

static char *decimal(int n, char *s)
{
    char *p = s, *q;
    unsigned u = n < 0 ? 0u - (unsigned)n : (unsigned)n;
    do *p++ = (char)('0' + u % 10); while ((u /= 10) > 0);
    if (n < 0) *p++ = '-';
    *p = 0;
    for (q = s, --p; q < p; q++, p--) { char t = *q; *q = *p; *p = t; }
    return s;
}

static int words(const char *s)
{
    int in = 0, n = 0;
    for (; *s; s++)
        if (isspace((unsigned char)*s)) in = 0;
        else if (!in) { in = 1; n++; }
    return n;
}

static void caesar(char *s, int key)
{
    for (; *s; s++) {
        if (islower((unsigned char)*s)) *s = (char)('a' + (*s - 'a' + key + 26) % 26);
        else if (isupper((unsigned char)*s)) *s = (char)('A' + (*s - 'A' + key + 26) % 26);
    }
}

static int match(const char *pattern, const char *s)
{
    for (; *pattern; pattern++, s++) {
        if (*pattern == '*') {
            do if (match(pattern + 1, s)) return 1; while (*s++);
            return 0;
        }
        if (!*s || (*pattern != '?' && *pattern != *s)) return 0;
    }
    return !*s;
}

static void squeeze(char *s, char c)
{
    char *to = s;
    for (; *s; s++) if (*s != c) *to++ = *s;
    *to = 0;
}

static void classes(void)
{
    int c, n[9] = {0};
    for (c = 0; c < 128; c++) {
        n[0] += !!isalnum(c); n[1] += !!isalpha(c); n[2] += !!iscntrl(c); n[3] += !!isdigit(c); n[4] += !!isgraph(c);
        n[5] += !!isprint(c); n[6] += !!ispunct(c); n[7] += !!isspace(c); n[8] += !!isxdigit(c);
    }
    for (c = 0; c < 9; c++) printf("%d ", n[c]);
    printf("%c%c%c\n", toupper('q'), tolower('Q'), toupper('7'));
}

int main(void)
{
    char a[64] = "start", b[64];
    join(join(a, "-middle"), "-end");
    printf("%s %d %d\n", a, length(a), compare(a, "start-middle"));
    printf("%s %d\n", find(a, 'm'), find(a, 'z') == 0);
    reverse(a);
    printf("%s\n", copy(b, a));
    printf("%d %d\n", palindrome("A man, a plan, a canal: Panama!"), palindrome("not one"));
    printf("%d %d %s %s %s\n", number("  -123x"), number("+77"), decimal(-2147483647 - 1, a), decimal(0, b), decimal(90210, b + 10));
    printf("%d %d\n", words(" one two\tthree\n four "), words(""));
    copy(a, "Hello, Zebra!");
    caesar(a, 5); printf("%s ", a);
    caesar(a, -5); printf("%s\n", a);
    printf("%d%d%d%d\n", match("*.c", "main.c"), match("a?c*", "abcdef"), match("*x*y", "aaxbby!"), match("**", ""));
    squeeze(a, 'l'); printf("%s\n", a);
    classes();
    return 0;
}
