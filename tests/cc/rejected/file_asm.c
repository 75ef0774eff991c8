/* error: 2:1: asm outside functions cannot be expressed by the target */
asm(".globl here");
