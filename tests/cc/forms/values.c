/* Initial values: holes are skips in bits, bit fields are packed into bytes, whole local arrays are
 * copied from an image that has the constant part.
 * shows: symbol _packed
 * shows: 65:char
 * shows: skip[value=24]
 * shows: pconv:int*
 * shows: 43:uchar
 * shows: 4:uchar
 * shows: symbol _text extern char[] dims=4
 * shows: 97:char
 * shows: 98:char
 * shows: symbol _$init$1 static struct
 * shows: 4
 * shows: end_value
 * shows: stasg[tag=.fake
 * shows: assign(deref(add(address(_far), pmconv(9, 32))), _x)
 * shows: assign(deref(address(_near)), _x)
 * shows: assign(deref(add(address(_near), pmconv(1, 32))), 0) */
struct record {
  char letter;
  int *where;
  unsigned low : 3, high : 9;
} packed = {'A', 0, 3, 133};
char text[4] = "ab";
int use(int x) {
  int far[10] = {1, 0, 0, [3] = 4, [9] = x}, near[2] = {x};
  return far[3] + near[1];
}
