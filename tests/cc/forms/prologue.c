/* Homes are filled by one statement that leans left; structs have none. Without a prototype narrow
 * parameters arrive promoted.
 * shows: symbol _a register_parameter char
 * shows: symbol _s argument struct
 * shows: symbol _d register_parameter double
 * shows: pcomma(pcomma(assign(_a, _a@1.0), assign(_d, _d@1.2)), assign(_p, _p@1.3))
 * shows: symbol _c register_parameter int
 * shows: symbol _f register_parameter double
 * shows: pcomma(assign(_c, sconv:char(_c@1.0)), assign(_f, sconv:float(_f@1.1)))
 * shows: symbol _format argument
 * shows: symbol _last variadic_argument short
 * shows: argref(_last@1.1) */
struct pair {
  int x, y;
};
int new_style(char a, struct pair s, double d, int *p) { return a + s.y + (int)d + *p; }
int old_style(c, f) char c; float f; { return c + (int)f; }
int variadic(const char *format, short last, ...) {
  __builtin_va_list list;
  __builtin_va_start(list, last);
  return *format + __builtin_va_arg(list, int);
}
