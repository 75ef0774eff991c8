/* Names are unique in a function, statics and tags in the file; block externs are the variable of
 * file level; tags stand at file level, inner ones first, and a circle goes by name.
 * shows: symbol _leaf struct_tag
 * shows: symbol _node struct_tag
 * shows: symbol _left struct_member struct* tag=_node
 * shows: symbol _value struct_member struct tag=_leaf
 * shows: symbol .eos end_of_tag struct tag=_node
 * shows: symbol _leaf$2 union_tag
 * shows: symbol _n auto int
 * shows: symbol _n$s1 static int
 * shows: symbol _n$2 auto union
 * shows: begin_block
 * shows: symbol _n$s2 static int
 * never: symbol _shared extern_declared */
struct node {
  struct node *left;
  struct leaf {
    int v;
  } value;
} root;
int shared;
int first(void) {
  extern int shared;
  int n = shared;
  {
    static int n = 1;
    {
      union leaf {
        int v;
        char c;
      } n = {2};
      return n.c + root.value.v;
    }
  }
  return n;
}
int second(void) {
  if (shared) {
    static int n = 5;
    return n++;
  }
  return 0;
}
