/* Character and string conversions, puts and putchar, sprintf results, long and empty texts. */
#include <stdio.h>
#include <string.h>

int main(void)
{
    char buffer[200], small[8];
    const char *s = "string";
    int n, i;
    printf("[%s] [%10s] [%-10s] [%.3s] [%10.2s] [%-10.4s] [%.0s] [%.20s]\n", s, s, s, s, s, s, s, s);
    printf("[%c] [%3c] [%-3c] [%c%c%c]\n", 'a', 'b', 'c', 'x', 'y', 'z');
    printf("[%*s] [%-*s] [%.*s] [%*.*s]\n", 8, s, 8, s, 2, s, 5, 1, s);
    printf("%s%s%s\n", "", "only", "");
    printf("no conversions\n");
    printf("%%%c%%\n", '%');
    memcpy(small, "abcdefgh", 8);
    printf("[%.8s] [%.3s]\n", small, small + 5);
    n = sprintf(buffer, "%s:%d:%c", s, 5, 'q');
    printf("%s %d\n", buffer, n);
    n = sprintf(buffer + n, "|%s", "tail") + n;
    printf("%s %d\n", buffer, n);
    n = snprintf(small, sizeof small, "%s", "cut off here");
    printf("%s %d\n", small, n);
    puts("puts adds a newline");
    fputs("fputs adds none ", stdout);
    putchar('!');
    putc('\n', stdout);
    fprintf(stdout, "%s to %s\n", "fprintf", "stdout");
    for (i = 0; i < 60; i++)
        buffer[i] = (char)('A' + i % 26);
    buffer[60] = 0;
    printf("%s|%70s|%-62s|\n", buffer, buffer, buffer);
    fwrite("raw bytes\n", 1, 10, stdout);
    n = printf("%s", "");
    printf("%d\n", n);
    return n;
}
