/* A computation that needs 64 bits at run time, a constant that does not, and a declaration that
   nothing uses.
   error: 9:12: the target has no 64-bit integers (type 'long long') */
extern long long unused;
int scaled(int x) {
  int folded = (int)(6000000000LL / 3);
  unsigned wide = 0;
  folded += sizeof(long long);
  wide = x * 3LL;
  return folded + (int)wide;
}
