/* Literals: escapes, concatenation, embedded zeros, as arrays and pointers, indexing and sizeof. */
#include <stddef.h>
#include <stdio.h>
#include <string.h>

static const char escapes[] = "\a\b\f\n\r\t\v\\\'\"\?\0end";
static const char octal[] = "\1\12\1234\377";
static const char hexadecimal[] = "\x41\x7f\xFF" "B";
static const char joined[] = "one" " two" " three";
static char cut[4] = "four";
static const wchar_t wide[] = L"wide";

static int hash(const char *s, unsigned n)
{
    unsigned h = 5381;
    while (n--)
        h = h * 33 ^ (unsigned char)*s++;
    return (int)(h & 0x7FFFFFFF);
}

static const char *choose(int n) { return n == 0 ? "zero" : n == 1 ? "one" : &"many things"[5]; }
static char digit(int n) { return "0123456789abcdef"[n & 15]; }
static int is_vowel(char c) { return c && strchr("aeiou", c) != 0; }
static int local_hash(void)
{
    char modified[] = "modifiable";
    const char *fixed = "fixed";
    modified[0] = 'M';
    modified[strlen(fixed)] = fixed[4];
    return hash(modified, sizeof modified - 1);
}

int main(void)
{
    int i, vowels = 0;
    const char *p, *long_text =
        "A literal that goes on and on, over more than one line of the source, so that its length is well above "
        "what would be copied element by element; it ends here.";
    printf("%d %d\n", (int)sizeof escapes, (int)strlen(escapes));
    for (i = 0; i < (int)sizeof escapes; i++)
        printf("%d ", escapes[i]);
    printf("\n%d %d %d %d %d\n", octal[0], octal[1], octal[2], octal[3], octal[4]);
    printf("%d %d %d %c\n", hexadecimal[0], hexadecimal[1], hexadecimal[2], hexadecimal[3]);
    printf("%s %.4s %d %d\n", joined, cut, (int)sizeof joined, (int)(sizeof wide / sizeof wide[0]));
    printf("%d %d %d\n", hash(escapes, sizeof escapes), hash("zero\0inside", 11), local_hash());
    for (i = 0; i < 3; i++)
        printf("%s ", choose(i));
    for (i = 0; i < 32; i += 3)
        putchar(digit(i));
    for (p = long_text; *p; p++)
        vowels += is_vowel(*p);
    printf("\n%d %d %d\n", vowels, (int)strlen(long_text), hash(long_text, (unsigned)strlen(long_text)));
    printf("%c%c%d\n", "abc"[1], *("xyz" + 2), (int)sizeof "\0\0");
    printf("%d %d %d\n", '\n', '\x20', '\'');
    printf("%ld %ld\n", (long)wide[0], (long)wide[4]);
    return 'z' - 'a';
}
