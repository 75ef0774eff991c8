/* Text tools over one buffer: counting, unique lines, columns, base 64, hexadecimal dump, sorting of lines. */
#include <ctype.h>
#include <stdio.h>
#include <string.h>

static char text[] = "pear 3\napple 12\nfig 7\napple 12\nbanana 5\nfig 7\nfig 8\n\nlast line without end";
static char *lines[20];
static int line_count;

static void count(const char *p, int *l, int *w, int *c)
{
    int in_word = 0;
    *l = *w = *c = 0;
    for (; *p; p++) {
        ++*c;
        if (*p == '\n')
            ++*l;
        if (isspace((unsigned char)*p))
            in_word = 0;
        else if (!in_word) {
            in_word = 1;
            ++*w;
        }
    }
}

static void split(char *p)
{
    lines[line_count++] = p;
    while ((p = strchr(p, '\n')) != 0) {
        *p++ = 0;
        lines[line_count++] = p;
    }
}

static void sort_lines(int (*before)(const char *, const char *))
{
    int i, j;
    for (i = 1; i < line_count; i++) {
        char *l = lines[i];
        for (j = i; j > 0 && before(l, lines[j - 1]); j--)
            lines[j] = lines[j - 1];
        lines[j] = l;
    }
}

static int by_text(const char *a, const char *b) { return strcmp(a, b) < 0; }
static int trailing_number(const char *s)
{
    int n = 0;
    const char *p = s + strlen(s);
    while (p > s && isdigit((unsigned char)p[-1]))
        p--;
    while (*p)
        n = n * 10 + *p++ - '0';
    return n;
}
static int by_number(const char *a, const char *b) { return trailing_number(a) > trailing_number(b); }

static int unique(void)
{
    int i, kept = 0;
    for (i = 0; i < line_count; i++)
        if (i == 0 || strcmp(lines[i], lines[kept - 1]))
            lines[kept++] = lines[i];
    return kept;
}

static void print_lines(void)
{
    int i;
    for (i = 0; i < line_count; i++)
        printf("%d[%s]%c", i, lines[i], i + 1 < line_count ? ' ' : '\n');
}

static const char digits[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
static void encode(const char *from, int n, char *to)
{
    const unsigned char *p = (const unsigned char *)from;
    for (; n > 0; n -= 3, p += 3) {
        unsigned v = (unsigned)p[0] << 16 | (n > 1 ? p[1] << 8 : 0) | (n > 2 ? p[2] : 0);
        *to++ = digits[v >> 18];
        *to++ = digits[v >> 12 & 63];
        *to++ = n > 1 ? digits[v >> 6 & 63] : '=';
        *to++ = n > 2 ? digits[v & 63] : '=';
    }
    *to = 0;
}

static int decode(const char *from, char *to)
{
    unsigned v = 0;
    int bits = 0, n = 0;
    for (; *from && *from != '='; from++) {
        v = v << 6 | (unsigned)(strchr(digits, *from) - digits);
        bits += 6;
        if (bits >= 8) {
            bits -= 8;
            to[n++] = (char)(v >> bits);
            v &= (1u << bits) - 1;
        }
    }
    to[n] = 0;
    return n;
}

static void dump(const void *data, int n)
{
    const unsigned char *p = data;
    int i, j;
    for (i = 0; i < n; i += 8) {
        printf("%04x:", i);
        for (j = i; j < i + 8; j++)
            if (j < n)
                printf(" %02X", p[j]);
            else
                printf("   ");
        printf("  ");
        for (j = i; j < i + 8 && j < n; j++)
            putchar(isprint(p[j]) ? p[j] : '.');
        putchar('\n');
    }
}

int main(void)
{
    char coded[64], back[64];
    int l, w, c, n;
    count(text, &l, &w, &c);
    printf("%d %d %d\n", l, w, c);
    split(text);
    print_lines();
    sort_lines(by_text);
    line_count = unique();
    print_lines();
    sort_lines(by_number);
    print_lines();
    for (n = 0; n < 6; n++) {
        encode("Base64 text", n * 2, coded);
        l = decode(coded, back);
        printf("%s %d %s\n", coded, l, back);
    }
    dump("\001\002dump\377\ttail", 13);
    return 0;
}
