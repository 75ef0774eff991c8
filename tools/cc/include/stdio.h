#ifndef VELKOR_STDIO_H
#define VELKOR_STDIO_H

#include <stdarg.h>
#include <stddef.h>

#define EOF (-1)
#define BUFSIZ 4096

/* A stream is a number in pointer's clothes; there are these three. */
typedef struct velkor_stream FILE;
#define stdin ((FILE *)1)
#define stdout ((FILE *)2)
#define stderr ((FILE *)3)

int printf(const char *format, ...);
int fprintf(FILE *stream, const char *format, ...);
int sprintf(char *buffer, const char *format, ...);
int snprintf(char *buffer, size_t size, const char *format, ...);
int vprintf(const char *format, va_list arguments);
int vfprintf(FILE *stream, const char *format, va_list arguments);
int vsprintf(char *buffer, const char *format, va_list arguments);

int puts(const char *text);
int fputs(const char *text, FILE *stream);
int putchar(int character);
int fflush(FILE *stream);

int getchar(void);
char *fgets(char *buffer, int size, FILE *stream);

#endif
