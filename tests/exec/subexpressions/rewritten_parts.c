/* Statements of which one part is replaced (a repeated value, a nearby address, a compound
   assignment taken apart) before another part asks what the statement assigns: that answer must
   not depend on how much has been replaced already. */
#include <stdio.h>

struct wide {
  int head[40];
  struct {
    short low, high;
    int value;
  } cell[8];
  int *link;
};

struct wide w, *pw = &w;
int grid[6][9];
static int count;

static int bump(int *p, int by) {
  count += 1;
  return *p += by;
}

/* The second access finds the address of the first one near; the copies of y and z are looked for
   behind it, when the statement already holds its short form. */
static int near_addresses(int y, int z) {
  int a = y * z, b = y + z, r;
  w.cell[3].value = y * z;
  w.cell[4].value = (w.cell[3].value = b + 1) + (y * z) - (w.cell[5].value = y + z);
  r = w.cell[4].value + w.cell[3].value * (y * z) + (b = w.cell[5].value) + (y + z);
  return r * 10 + a + b;
}

/* x = y lets y stand for x, but not where the same statement assigns y. */
static int copies_and_updates(int *p, int n, int y) {
  int x = y, s = n * y, t;
  p[n] += n * x + (y = p[n + 1]) + x * n;
  t = n * y;
  p[n + 1] -= p[n] + (x = t) + (n * y);
  p[n] ^= (s = n * x) + p[n + 1] + n * x;
  return s + t * 3 + x * 5 + p[n] - p[n + 1];
}

/* An address in the arguments makes every copy of that variable doubtful, wherever it is met. */
static int handed_out(int i, int j) {
  int k = i + j, m = k, r;
  r = grid[i][j] + (i + j) + bump(&k, i + j);
  grid[i][j] += (r += grid[i][j] + (i + j)) + bump(&m, grid[i][j]);
  r += (k - m) * (i + j) + grid[i][j + 1] * (grid[i][j] = i + j);
  return r + k + m;
}

static int through_links(int n, int y) {
  int *q = w.link, a = w.head[n] + y;
  *w.link += w.head[n] + y;
  w.head[n] = (w.link = q + 1)[0] + (a = w.head[n] + y) + *q;
  pw->cell[n].high = (short)(pw->cell[n].low = (short)(w.head[n] + y)) + (short)(w.head[n] + y);
  return a + *w.link + pw->cell[n].high - pw->cell[n].low;
}

static int choices(int n, int y) {
  int x = y, r = n * y;
  r += n * y != 0 ? (y = n + x) + n * x : (x = n * y);
  r += (n > 2 && (x = n * y) > 3) + n * y * 2 + (n * y != 0 ? n * y : y);
  return r * 10 + x + y;
}

int main(void) {
  int row[4] = {7, 11, 13, 17}, i, j;
  for (i = 0; i < 40; ++i)
    w.head[i] = i * 3 - 7;
  for (i = 0; i < 6; ++i)
    for (j = 0; j < 9; ++j)
      grid[i][j] = i * 9 + j;
  for (i = 0; i < 4; ++i) {
    w.link = &w.head[20 + i];
    printf("%d %d\n", near_addresses(i + 2, i - 3), copies_and_updates(row + i / 2, i & 1, i + 5));
    printf("%d %d %d\n", handed_out(i, 2 * i), through_links(i, i * i), choices(i, 4 - i));
  }
  for (i = 0; i < 8; ++i)
    printf("%d/%d/%d ", w.cell[i].low, w.cell[i].high, w.cell[i].value);
  printf("\n%d %d %d %d %d\n", row[0], row[1], row[2], row[3], count);
  return 0;
}
