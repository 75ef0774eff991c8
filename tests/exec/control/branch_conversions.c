/* Tests and arms that can become straight code, and their neighbours that cannot. */
#include <stdio.h>

struct flags {
  unsigned a : 1;
  unsigned b : 1;
  unsigned c : 3;
};

static struct flags table[2];
static int calls;
static int flags_word;

static int next(void) { return ++calls; }

/* The condition changes what the arm changes. */
static int raise_flag(void) {
  flags_word = 64;
  return 4;
}

static int toggle(int x) {
  if (x & 4)
    x &= ~4;
  else
    x |= 4;
  return x;
}

static unsigned char toggle_char(unsigned char x) {
  if (x & 128)
    x &= ~128;
  else
    x |= 128;
  return x;
}

static int move_bit(int e, int x) {
  if (e & 4) x |= 16;
  if (e & 64) x ^= 2;
  if (e & 1) x |= 8;
  return x;
}

static int move_sign(signed char e) {
  int x = 0;
  if (e & 128) x |= 1;
  if (e & -128) x |= 2;
  return x;
}

/* No object, no store. */
static void mark(int *out, int options) {
  if (options & 4) *out |= 16;
}

static void mark_member(struct flags *f, int options) {
  int is_there = options & 1;
  if (is_there) f->a = 1;
}

static void select(struct flags *f, unsigned value, const int *where, int k) {
  if (k & 1)
    f->a = value;
  else
    f->a = 0;
  if (k & 1)
    f->b = *where;
  else
    f->b = 0;
  if (f->a) f->c = 5;
}

static int choose(int k, int a, int b) {
  int x;
  if (k > 3)
    x = a;
  else
    x = b;
  return x;
}

static int divide(int a, int b) {
  if (b)
    return a / b;
  else
    return -1;
}

static int either(int a, int b) {
  if (a > 3) goto yes;
  if (b > 3) goto yes;
  return 0;
yes:
  return 1;
}

static int neither(int a, int *b) {
  if (!b) goto no;
  if (*b == a) goto no;
  return 1;
no:
  return 0;
}

int main(void) {
  struct flags f = {0, 0, 0};
  int i;
  int word = 3;
  for (i = 0; i < 16; ++i) printf("%d ", toggle(i * 3));
  for (i = 0; i < 256; i += 37) printf("%d ", toggle_char((unsigned char)i));
  for (i = 0; i < 128; i += 5) printf("%d ", move_bit(i, i / 3));
  for (i = -128; i < 128; i += 31) printf("%d ", move_sign((signed char)i));
  printf("\n");
  mark(0, 3);
  mark(&word, 4);
  mark_member(0, 2);
  mark_member(&table[1], 1);
  printf("%d %d\n", word, table[1].a);
  if (raise_flag() & 4) flags_word |= 16;
  printf("%d\n", flags_word);
  for (i = 0; i < 6; ++i) {
    if (next() & 1) calls += 2;
    else calls += 5;
  }
  printf("%d\n", calls);
  for (i = 0; i < 4; ++i) {
    select(&f, (unsigned)i / 2, i & 1 ? &word : 0, i);
    printf("%d%d%d ", f.a, f.b, f.c);
  }
  for (i = 0; i < 8; ++i)
    printf("%d %d %d %d ", choose(i, i * 2, -i), divide(i, i - 4), either(i, 7 - 2 * i),
           neither(i, i & 1 ? &word : 0));
  printf("\n");
  return 0;
}
