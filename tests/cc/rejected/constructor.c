/* Attributes that change nothing pass.
   error: 4:16: attribute 'constructor' cannot be expressed by the target */
__attribute__((noinline, unused, aligned(16))) static int plain(void) { return 1; }
__attribute__((constructor)) void early(void) { plain(); }
