#ifndef VELKOR_STDLIB_H
#define VELKOR_STDLIB_H

#include <stddef.h>

#define EXIT_SUCCESS 0
#define EXIT_FAILURE 1
#define RAND_MAX 32767

void *malloc(size_t size);
void *calloc(size_t count, size_t size);
void *realloc(void *block, size_t size);
void free(void *block);

void exit(int status);
void abort(void);
int atexit(void (*routine)(void));
char *getenv(const char *name);

int atoi(const char *text);
long atol(const char *text);
double atof(const char *text);
long strtol(const char *text, char **end, int base);
unsigned long strtoul(const char *text, char **end, int base);
double strtod(const char *text, char **end);

int abs(int value);
long labs(long value);

/* next = next * 1103515245 + 12345; the value is bits 16 to 30 of next. */
int rand(void);
void srand(unsigned int seed);

void qsort(void *base, size_t count, size_t size, int (*compare)(const void *, const void *));
void *bsearch(const void *key, const void *base, size_t count, size_t size,
              int (*compare)(const void *, const void *));

#endif
