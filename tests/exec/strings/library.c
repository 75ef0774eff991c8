/* String and memory functions of the library, with the sign of comparisons and edge lengths. */
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

static int sign(int x) { return (x > 0) - (x < 0); }
static int at(const char *p, const char *base) { return p ? (int)(p - base) : -1; }

int main(void)
{
    char a[32], b[32], *p;
    const char *text = "the quick brown fox";
    unsigned char bytes[8];
    int i;
    printf("%d %d\n", (int)strlen(text), (int)strlen(""));
    strcpy(a, "copy");
    strcat(a, " and more");
    printf("%s %d\n", a, (int)strlen(a));
    strncpy(b, "abcdef", 4);
    b[4] = 0;
    printf("%s ", b);
    strncpy(b, "ab", 6);
    printf("%d%d%d%d ", b[2], b[3], b[4], b[5]);
    strncat(b, "cdefgh", 3);
    printf("%s\n", b);
    printf("%d %d %d %d\n", sign(strcmp("abc", "abd")), sign(strcmp("b", "a")), strcmp("same", "same"), sign(strcmp("ab", "abc")));
    printf("%d %d %d\n", strncmp("abcd", "abxx", 2), sign(strncmp("abcd", "abxx", 3)), strncmp("a", "b", 0));
    printf("%d %d\n", sign(strcmp("\377", "a")), sign(memcmp("\200", "\177", 1)));
    printf("%d %d %d\n", at(strchr(text, 'q'), text), at(strchr(text, 'z'), text), at(strchr(text, 0), text));
    printf("%d %d %d\n", at(strrchr(text, 'o'), text), at(strstr(text, "brown"), text), at(strstr(text, "red"), text));
    printf("%d %d %d\n", (int)strspn("aabbcc", "ab"), (int)strcspn("hello, world", ",w"), at(strpbrk(text, "xyz"), text));
    strcpy(a, "one,two;;three");
    for (p = strtok(a, ",;"); p; p = strtok(0, ",;"))
        printf("[%s]", p);
    printf("\n");
    memset(bytes, 0xAB, sizeof bytes);
    memcpy(bytes + 2, "\1\2\3", 3);
    memmove(bytes + 3, bytes + 2, 4);
    for (i = 0; i < 8; i++)
        printf("%02x", bytes[i]);
    memmove(bytes, bytes + 1, 7);
    printf(" %02x%02x%02x %d\n", bytes[0], bytes[1], bytes[6], at(memchr(bytes, 3, 8), (char *)bytes));
    printf("%d %d %ld %ld\n", atoi("  42x"), atoi("-17"), atol("123456789"), strtol("0x1F", 0, 0));
    printf("%ld %ld %lu\n", strtol("777", 0, 8), strtol("-zz!", &p, 36), strtoul("4294967295", 0, 10));
    printf("%s ", p);
    printf("%g %g\n", atof("2.5e3"), strtod("  -0.125abc", &p));
    printf("%s\n", p);
    printf("%d %ld\n", abs(-5), labs(-123456L));
    sprintf(a, "%d|%s|%c", 12, "in", 'c');
    printf("%s %d\n", a, sprintf(b, "%05d", 42));
    p = malloc(10);
    strcpy(p, "heap");
    p = realloc(p, 40);
    strcat(p, " grown well beyond ten");
    printf("%s\n", p);
    free(p);
    p = calloc(4, 3);
    for (i = 0; i < 12; i++)
        if (p[i])
            printf("not zero\n");
    free(p);
    return 0;
}
