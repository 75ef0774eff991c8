/* One record for each variable; what initial values refer to comes first, a circle is cut by a
 * declaration that all bodies use. Functions are declared before they are used ahead of their
 * definition.
 * shows: symbol _first extern_declared void*
 * shows: symbol _later static_declared int()
 * shows: symbol _second extern void* value
 * shows: symbol _first extern void* value
 * shows: symbol _target static int
 * shows: symbol _pointer extern int* value
 * shows: begin_function
 * shows: symbol _later static int()
 * never: _unused_declaration */
extern int unused_declaration(int);
extern void *second;
void *first = &second;
void *second = &first;
static int target;
int *pointer = &target;
static int later(int x);
int user(void) { return later(*pointer) + (first == second); }
static int later(int x) {
  extern int *pointer;
  return x + (pointer != 0);
}
