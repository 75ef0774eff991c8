/* error: 7:52: designators change parts of a struct that one expression has set as a whole */
struct point {
  int x, y;
};
int mixed(struct point start) {
  struct { struct point from; int steps; } plain = {.from = {1, 2}, .from.y = 3};
  struct { struct point from; } changed = {.from = start, .from.y = plain.from.y};
  return changed.from.x;
}
