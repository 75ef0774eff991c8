/* Lists handed on to other functions, to vsprintf and vprintf; a small formatter of our own. */
#include <stdarg.h>
#include <stdio.h>
#include <string.h>

static char buffer[256];
static int length;

static void put(char c) { if (length < 255) buffer[length++] = c; buffer[length] = 0; }
static void put_text(const char *s) { while (*s) put(*s++); }

static void put_number(unsigned n, unsigned base, int width, char pad)
{
    char digits[12];
    int k = 0;
    do
        digits[k++] = "0123456789abcdef"[n % base];
    while (n /= base);
    while (width-- > k)
        put(pad);
    while (k > 0)
        put(digits[--k]);
}

static void format_list(const char *format, va_list ap)
{
    for (; *format; format++) {
        int width = 0;
        char pad = ' ';
        if (*format != '%') {
            put(*format);
            continue;
        }
        if (*++format == '0') {
            pad = '0';
            format++;
        }
        while (*format >= '0' && *format <= '9')
            width = width * 10 + *format++ - '0';
        switch (*format) {
        case 'd': {
            int v = va_arg(ap, int);
            if (v < 0) {
                put('-');
                put_number(0u - (unsigned)v, 10, width - 1, pad);
            } else
                put_number((unsigned)v, 10, width, pad);
            break;
        }
        case 'x': put_number(va_arg(ap, unsigned), 16, width, pad); break;
        case 'o': put_number(va_arg(ap, unsigned), 8, width, pad); break;
        case 's': put_text(va_arg(ap, const char *)); break;
        case 'c': put((char)va_arg(ap, int)); break;
        case 'h': put_number((unsigned)(va_arg(ap, double) * 100.0), 10, width, pad); break;
        default: put(*format);
        }
    }
}

static const char *format(const char *text, ...)
{
    va_list ap;
    length = 0;
    va_start(ap, text);
    format_list(text, ap);
    va_end(ap);
    return buffer;
}

static int through_library(char *to, const char *text, ...)
{
    va_list ap;
    int n;
    va_start(ap, text);
    n = vsprintf(to, text, ap);
    va_end(ap);
    return n;
}

static void to_output(const char *text, ...)
{
    va_list ap;
    va_start(ap, text);
    vprintf(text, ap);
    va_end(ap);
}

static int next_from(va_list *ap) { return va_arg(*ap, int); }
static int by_pointer(int n, ...)
{
    va_list ap;
    int t = 0;
    va_start(ap, n);
    while (n--)
        t = t * 10 + next_from(&ap);
    va_end(ap);
    return t;
}

int main(void)
{
    char text[100];
    int n;
    printf("%s\n", format("%d %5d|%05d|%x %08x %o %s %c%%", -42, 77, -77, 255u, 0xBEEFu, 8u, "str", 'c'));
    printf("%s\n", format("%h %d %h", 1.25, -2147483647 - 1, 0.5));
    n = through_library(text, "%d-%s-%.2f-%c", 12, "ab", 2.5, 'z');
    printf("%s %d %d\n", text, n, (int)strlen(text));
    to_output("%5.1f|%-6s|%+d|%u\n", 3.25, "left", 9, 4000000000u);
    printf("%d\n", by_pointer(5, 1, 2, 3, 4, 5));
    return 0;
}
