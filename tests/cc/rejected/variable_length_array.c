/* error: 3:7: the target has no variable-length arrays */
int last(int n) {
  int values[n];
  values[n - 1] = 1;
  return values[n - 1];
}
