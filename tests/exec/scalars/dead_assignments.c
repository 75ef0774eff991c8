/* Assignments that nobody reads, beside those that only look like it. */
#include <stdio.h>

static int calls;
static volatile int device = 3;

static int count(int value) {
  calls += 1;
  return value;
}

static int effects_stay(int n) {
  int x, y = 0, i;
  x = count(n);
  x = device;
  x = count(1) + count(2);
  for (i = 0; i < n; i++)
    x = x + count(i);
  y += count(y);
  return i;
}

static int narrow_values(int n) {
  char c;
  unsigned char u;
  short s;
  float f;
  int result = (c = (char)n) + (u = (unsigned char)n) * 1000;
  result += (s = (short)(n * 300));
  result += (int)((f = (float)n / 4) * 16);
  return result;
}

static int skipped(int a, int b) {
  int x = a, y = b, z;
  if (a && (x = 7)) y += 1;
  if (a || (y = 9)) z = 1;
  else z = 2;
  z += b ? (x = 100) : (y = 200);
  return x * 10000 + y * 10 + z;
}

/* What a run that is still going on has left in a static is read by the next one. */
static int nested(int depth) {
  static int level, deepest;
  int result;
  level = depth;
  if (depth > 0) {
    result = nested(depth - 1);
    result += level;
    level = 50;
  } else {
    result = deepest + level;
    deepest = 5;
  }
  return result;
}

static int (*callback)(int);
static int through_pointer(int stop) {
  static int state = 1;
  int before = state;
  if (stop) return state;
  state = 2;
  before += callback(1);
  state = 3;
  return before * 10 + state;
}

static int last_value(int set) {
  static int kept;
  int old = kept;
  if (set) {
    kept = 1;
    kept = set;
  }
  return old;
}

static int addressed(int n) {
  int x = n, y;
  int *p = &x;
  x = n + 1;
  y = *p;
  x = n + 2;
  return y * 100 + *p;
}

static int walk(const int *p, int n) {
  int sum = 0;
  while (n--)
    sum = sum * 3 + *p++;
  return sum;
}

struct node {
  volatile int value;
  struct node *next;
};

static int touch_all(struct node *list) {
  int touched = 0;
  while (list) {
    int ignored = list->value;
    list = list->next;
    touched++;
  }
  return touched;
}

int main(void) {
  static const int numbers[4] = {4, 1, 7, 2};
  struct node third = {3, 0}, second = {2, 0}, first = {1, 0};
  int i;
  second.next = &third;
  first.next = &second;
  i = effects_stay(4);
  printf("%d %d\n", i, calls);
  for (i = -200; i <= 400; i += 150)
    printf("%d ", narrow_values(i));
  printf("\n%d %d %d %d\n", skipped(0, 0), skipped(0, 3), skipped(2, 0), skipped(2, 3));
  i = nested(3);
  printf("%d %d\n", i, nested(2));
  callback = through_pointer;
  i = through_pointer(0);
  printf("%d %d\n", i, through_pointer(1));
  last_value(4);
  i = last_value(0);
  printf("%d %d\n", i, last_value(6));
  printf("%d %d %d\n", addressed(3), walk(numbers, 4), touch_all(&first));
  return 0;
}
