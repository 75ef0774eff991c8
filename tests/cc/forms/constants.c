/* Const means that an object never changes: it is told of static objects alone, and of accesses
 * that lie in them.
 * shows: symbol _table static int[] dims=3 squal=0x1
 * shows: symbol _names static char*[] dims=2 squal=0x40
 * shows: symbol _entry extern_declared char*
 * never: symbol _k auto int squal
 * never: symbol _text auto char* squal
 * shows: symbol _flags auto int[] dims=4 squal=0x2
 * shows: deref[volatile](
 * shows: deref[const](
 * shows: deref(add(_text */
static const int table[3] = {1, 2, 3};
static const char *const names[2] = {"first", "second"};
extern const char *entry;
int use(int i, const char *text) {
  const int k = i * 2;
  volatile int flags[4];
  flags[0] = *names[1];
  return table[k] + text[i] + (entry != 0);
}
