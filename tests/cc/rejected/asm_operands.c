/* A text without operands passes.
   error: 6:3: asm with operands cannot be expressed by the target */
int twice(int x) {
  int y;
  asm("nop");
  asm("add %1, %0" : "=r"(y) : "r"(x));
  return y;
}
