/* A range of a few values is written out.
   error: 6:3: case range of more than 4096 values */
int kind(int x) {
  switch (x) {
  case 1 ... 9: return 1;
  case 100 ... 100000: return 2;
  }
  return 0;
}
