/* A text formatter: filling and justifying lines, tables with aligned columns, Roman numerals, wrapping words. */
#include <ctype.h>
#include <stdio.h>
#include <string.h>

static const char *source =
    "A compiler reads a program in one language and writes a program in another. Between the two stands the optimizer, "
    "which must change a great deal and may change nothing: the new program has to do what the old one did, only sooner. "
    "Whoever writes one learns quickly that most of the work is proving that a thing may be done at all.";

static void justify(char words[][16], int count, int width, int last)
{
    int i, letters = 0, gaps = count - 1, spaces;
    for (i = 0; i < count; i++)
        letters += (int)strlen(words[i]);
    spaces = width - letters;
    for (i = 0; i < count; i++) {
        int n = 0;
        printf("%s", words[i]);
        if (i < gaps) {
            if (last || gaps == 0)
                n = 1;
            else
                n = spaces / (gaps - i) + (spaces % (gaps - i) ? 1 : 0);
            spaces -= n;
        }
        printf("%*s", n, "");
    }
    printf("|\n");
}

static void fill(const char *text, int width)
{
    char words[30][16];
    int count = 0, used = 0;
    while (*text) {
        int n = 0;
        while (text[n] && text[n] != ' ')
            n++;
        if (used + n + (count > 0) > width) {
            justify(words, count, width, 0);
            count = used = 0;
        }
        memcpy(words[count], text, (size_t)n);
        words[count][n] = 0;
        used += n + (count > 0);
        count++;
        text += n;
        while (*text == ' ')
            text++;
    }
    justify(words, count, width, 1);
}

static char *roman(int n, char *to)
{
    static const struct { short value; const char *text; } steps[] = {
        {1000, "M"}, {900, "CM"}, {500, "D"}, {400, "CD"}, {100, "C"}, {90, "XC"}, {50, "L"},
        {40, "XL"}, {10, "X"}, {9, "IX"}, {5, "V"}, {4, "IV"}, {1, "I"}};
    char *p = to;
    int i;
    for (i = 0; n > 0; i++)
        while (n >= steps[i].value) {
            const char *s = steps[i].text;
            while (*s)
                *p++ = *s++;
            n -= steps[i].value;
        }
    *p = 0;
    return to;
}

static int parse_roman(const char *s)
{
    int total = 0, last = 0;
    for (; *s; s++) {
        int v;
        switch (*s) {
        case 'I': v = 1; break;
        case 'V': v = 5; break;
        case 'X': v = 10; break;
        case 'L': v = 50; break;
        case 'C': v = 100; break;
        case 'D': v = 500; break;
        default: v = 1000;
        }
        total += last < v ? v - 2 * last : v;
        last = v;
    }
    return total;
}

struct row { const char *name; int units; double price; };
static void table(const struct row *r, int n)
{
    int i, widest = 4;
    double total = 0;
    for (i = 0; i < n; i++)
        if ((int)strlen(r[i].name) > widest)
            widest = (int)strlen(r[i].name);
    printf("%-*s %6s %9s\n", widest, "name", "units", "price");
    for (i = 0; i < n; i++) {
        printf("%-*s %6d %9.2f\n", widest, r[i].name, r[i].units, r[i].price);
        total += r[i].units * r[i].price;
    }
    printf("%*s\n", widest + 17, "=========");
    printf("%*.2f\n", widest + 17, total);
}

static void title(char *s)
{
    int start = 1;
    for (; *s; s++) {
        if (start && isalpha((unsigned char)*s))
            *s = (char)toupper((unsigned char)*s);
        start = *s == ' ' || *s == '-';
    }
}

int main(void)
{
    static const struct row rows[] = {{"bolt", 120, 0.25}, {"long bracket", 7, 12.5}, {"nut", 1000, 0.125}};
    static const int years[] = {1, 4, 9, 14, 40, 90, 399, 1984, 2024, 3888};
    char buffer[40] = "the well-kept command line";
    int i, ok = 0;
    fill(source, 40);
    fill(source, 25);
    for (i = 0; i < 10; i++)
        printf("%s ", roman(years[i], buffer));
    for (i = 1; i < 400; i++)
        ok += parse_roman(roman(i, buffer)) == i;
    printf("%d\n", ok);
    table(rows, 3);
    strcpy(buffer, "the well-kept command line");
    title(buffer);
    printf("%s\n", buffer);
    return 0;
}
