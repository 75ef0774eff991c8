/* Terms of addresses in another order, offsets out of reach of an access, negative and wide steps.
 */
#include <stdio.h>

struct record {
  short tag;
  double value;
  int list[5];
  char name[7];
};
struct record records[4];
int big[3000];
short shorts[400];
double wide[50];
char text[5000];

static int sums(int *p, int i, int j) {
  p[i + j * 3 + 4] = 1;
  p[j * 3 + i - 4] = 2;
  p[i * 2 - j + 8] = 3;
  return p[4 + i + 3 * j] * 100 + p[i + 3 * j - 4] * 10 + p[8 - j + 2 * i];
}
static int narrow_terms(int *p, unsigned char a, unsigned char b, signed char c) {
  p[a + b] = 4;
  p[a + c] = 5;
  p[(unsigned char)(a + b)] = 6;
  return p[a + b] * 100 + p[a + c] * 10 + p[(unsigned char)(a + b)];
}
static int unsigned_terms(char *p, unsigned i, unsigned j) {
  p[i - j] = 7;
  p[i * 4u - j * 4u] = 8;
  return p[i - j] * 10 + p[(i - j) * 4u];
}
static int far_offsets(int *p) {
  p[1100] = 1;
  p[1101] = 2;
  p[1200] = 3;
  p[2900] = 4;
  p[2901] = p[1100] + p[1101];
  return p[1100] + p[1101] * 10 + p[1200] * 100 + p[2900] * 1000 + p[2901] * 10000;
}
static int far_bytes(char *p, int i) {
  p[i + 4500] = 1;
  p[i + 4501] = 2;
  p[i + 300] = 3;
  return p[i + 4500] + p[i + 4501] * 10 + p[300 + i] * 100;
}
static int scales(int i) {
  shorts[i * 2] = 3;
  shorts[i * 6 + 2] = 4;
  wide[i] = 1.5;
  wide[i * 2] = wide[i] + 1;
  text[i * 4] = 5;
  return shorts[2 * i] + shorts[2 + 6 * i] * 10 + (int)(wide[i] + wide[2 * i]) * 100 + text[i * 4];
}
static int members(int i, int j) {
  records[i].list[j] = 6;
  records[i].name[j] = 7;
  records[i].value = 2.5;
  records[i + 1].tag = 8;
  return records[i].list[j] + records[i].name[j] * 10 +
         (int)(records[i].value * records[i].value) * 100 + records[1 + i].tag;
}
static int steps(int *p, int n) {
  int sum = 0, *q = p + n;
  while (q != p) {
    q -= 1;
    sum = sum * 3 + *q + q[0] * 2 + *(q + 0);
  }
  p += n * 2 - 1;
  p -= n;
  return sum + *p;
}

int main(void) {
  int i;
  for (i = 0; i < 3000; i++)
    big[i] = i % 13;
  printf("%d %d ", sums(big + 50, 3, 4), narrow_terms(big, 200, 100, -100));
  printf("%d %d %d\n", unsigned_terms(text + 100, 3, 5), far_offsets(big), far_bytes(text, 100));
  printf("%d %d %d\n", scales(9), members(1, 3), steps(big + 7, 4));
  return 0;
}
