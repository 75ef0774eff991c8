/* Where nobody takes its value, it is a block.
   error: 5:10: the target has no statement expressions */
int next(int x) {
  ({ x += 1; });
  return ({ int y = x; y + 1; });
}
