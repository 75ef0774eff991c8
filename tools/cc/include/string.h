#ifndef VELKOR_STRING_H
#define VELKOR_STRING_H

#include <stddef.h>

void *memcpy(void *to, const void *from, size_t count);
void *memmove(void *to, const void *from, size_t count);
void *memset(void *to, int value, size_t count);
int memcmp(const void *left, const void *right, size_t count);
void *memchr(const void *bytes, int value, size_t count);

char *strcpy(char *to, const char *from);
char *strncpy(char *to, const char *from, size_t count);
char *strcat(char *to, const char *from);
char *strncat(char *to, const char *from, size_t count);
int strcmp(const char *left, const char *right);
int strncmp(const char *left, const char *right, size_t count);
char *strchr(const char *text, int character);
char *strrchr(const char *text, int character);
char *strstr(const char *text, const char *part);
size_t strlen(const char *text);
size_t strspn(const char *text, const char *set);
size_t strcspn(const char *text, const char *set);
char *strpbrk(const char *text, const char *set);
char *strtok(char *text, const char *separators);
char *strdup(const char *text);

#endif
