/* Built-in names of library routines are those routines.
   error: 4:48: built-in function '__builtin_popcount' cannot be expressed by the target */
int length(const char *s) { return __builtin_strlen(s); }
int ones(unsigned x) { return length("four") + __builtin_popcount(x); }
