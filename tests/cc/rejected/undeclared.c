/* The program's own errors are reported before any of ours.
   error: 4:10: use of undeclared identifier 'missing' */
int user(void) {
  return missing + 1;
}
