"""C functions of a stated number of statements, for measuring how the optimizer's cost grows.

Each shape is a routine that takes the number of statements and gives a C translation unit with one
function in it. The same number gives the same text. A statement is what C calls one, blocks aside:
an expression, a jump, an `if`, a loop, a `case` with the jump that ends it.
"""
import random

PROLOGUE = """\
struct item { int key, weight; short flags; char tag; struct item *next; };
extern int helper(int, int);
extern void visit(struct item *);
int total, limit, table[1024], other[1024];
unsigned hash;
struct item pool[64];
"""


class Mixed:
    """Statements in the mix of real C. Block-local variables come with the blocks that use them."""

    SCOPE = 40  # statements that share one block's variables

    def __init__(self, statements):
        self.random = random.Random(statements)
        self.left = statements
        self.lines = []
        self.depth = 1
        self.scopes = 0
        self.locals = ["a", "b", "c", "d", "n", "k"]

    def put(self, text):
        self.lines.append("  " * self.depth + text)

    def local(self):
        return self.random.choice(self.locals)

    def place(self):
        """Something that can be read or assigned."""
        return self.random.choices(
            [self.local(), "total", "limit", f"table[{self.local()} & 1023]", "p->key",
             "p->weight", "here.key", f"small[{self.random.randrange(16)}]", "*q"],
            [50, 5, 4, 10, 8, 5, 5, 5, 8])[0]

    def value(self, depth):
        if depth == 0 or self.random.random() < 0.3:
            if self.random.random() < 0.35:
                return str(self.random.choice([0, 1, 1, 2, 4, 8, 10, 31, 100, 255, 4096]))
            return self.place()
        operator = self.random.choices(["+", "-", "*", "&", "|", "^", "<<", ">>"],
                                       [40, 20, 10, 10, 5, 5, 5, 5])[0]
        right = "3" if operator in ("<<", ">>") else self.value(depth - 1)
        return f"({self.value(depth - 1)} {operator} {right})"

    def condition(self):
        relation = self.random.choice(["<", ">", "==", "!=", "<=", ">="])
        test = f"{self.place()} {relation} {self.value(1)}"
        return test if self.random.random() < 0.8 else f"{test} && {self.local()} != 0"

    def block(self, opening, statements, closing="}"):
        self.put(opening)
        self.depth += 1
        for _ in range(statements):
            self.statement()
        self.depth -= 1
        self.put(closing)

    def statement(self):
        if self.left <= 0:
            return
        self.left -= 1
        kinds = ["assign", "compound", "call", "step", "member", "if", "if_else", "for", "while"]
        weights = [42, 10, 12, 6, 8, 12, 5, 3, 2]
        if self.depth > 4:
            kinds, weights = kinds[:5], weights[:5]
        kind = self.random.choices(kinds, weights)[0]
        some = self.random.randrange(1, 5)
        if kind == "assign":
            self.put(f"{self.place()} = {self.value(2)};")
        elif kind == "compound":
            self.put(f"{self.place()} {self.random.choice(['+=', '-=', '|=', '^='])} "
                     f"{self.value(1)};")
        elif kind == "call":
            self.put(self.random.choice([f"{self.local()} = helper({self.value(1)}, "
                                         f"{self.local()});", "visit(p);",
                                         f"helper({self.local()}, {self.value(1)});"]))
        elif kind == "step":
            self.put(self.random.choice(["*q++ = ", "hash += *q++ ^ "]) + f"{self.local()};")
        elif kind == "member":
            self.put(self.random.choice(["p = p->next;", "here = *p;", "q = table + 16;",
                                         f"p = &pool[{self.local()} & 63];",
                                         f"here.weight = {self.value(1)};",
                                         f"p->flags |= {1 << some};"]))
        elif kind == "if":
            self.block(f"if ({self.condition()}) {{", some)
        elif kind == "if_else":
            self.block(f"if ({self.condition()}) {{", some, "} else {")
            self.block("", some)
        elif kind == "for":
            index = self.local()
            self.block(f"for ({index} = 0; {index} < limit; {index}++) {{", some)
        else:
            # What a call returns, or the rest might be unreachable.
            self.block(f"while (helper({self.local()}, {self.local()})) {{", some)

    def scope(self):
        """A run of statements around a few variables of its own."""
        outer = list(self.locals)
        self.scopes += 1
        own = [f"v{self.scopes}_{i}" for i in range(3)]
        self.put("{")
        self.depth += 1
        self.put(f"int {', '.join(f'{name} = {self.value(1)}' for name in own)};")
        self.locals += own
        goal = self.left - self.SCOPE
        while self.left > max(goal, 0):
            self.statement()
        self.locals = outer
        self.depth -= 1
        self.put("}")

    def text(self):
        while self.left > 0:
            self.scope()
        return function("int a = 0, b = 1, c = 2, d = n, small[16] = {0}, *q = table;\n"
                        "  struct item here = {0}, *p = pool;", self.lines, "a ^ b ^ c ^ d")


def function(declarations, lines, result):
    return (PROLOGUE + f"int f(int n, int k) {{\n  {declarations}\n" + "\n".join(lines) +
            f"\n  return {result};\n}}\n")


def mixed(statements):
    return Mixed(statements).text()


def one_block(statements):
    """Assignments without a branch."""
    names = "abcdefgh"
    lines = []
    for i in range(statements):
        x, y, z = names[i % 8], names[i * 5 % 7], names[i * 3 % 8]
        lines.append([f"  {x} = {y} + {z} * {i % 13};", f"  table[{i % 1024}] = {x} ^ {y};",
                      f"  {x} += table[({z} + {i % 9}) & 1023];", f"  {x} = ({y} >> 3) - {z};"]
                     [i % 4])
    return function("int a = n, b = k, c = 1, d = 2, e = 3, f = 4, g = 5, h = 6;", lines,
                    "a ^ b ^ c ^ d ^ e ^ f ^ g ^ h")


def switch_cases(statements):
    """One switch; two statements a case."""
    lines = ["  switch (n) {"]
    for i in range(statements // 2):
        lines.append(f"  case {i}: a {['= k +', '+=', '^=', '-='][i % 4]} {i * 7 % 1000}; break;")
    return function("int a = 0;", [*lines, "  }"], "a")


def far_constants(statements):
    """A quarter of the statements set a local each; the last quarter uses them."""
    quarter = statements // 4
    names = [f"c{i}" for i in range(quarter)]
    lines = [f"  {name} = {i * 3};" for i, name in enumerate(names)]
    lines += [f"  if (table[{i % 1024}] > a) a += {i % 50};" for i in range(quarter)]
    lines += [f"  a ^= {name} + b;" for name in names]
    return function("int a = n, b = k, " + ", ".join(names) + ";", lines, "a")


def stepped_pointers(statements):
    """In one block, a quarter as many pointers as statements are used and stepped."""
    quarter = statements // 4
    lines = [f"  p{i} = table + {i % 1000};" for i in range(quarter)]
    lines += [f"  a += *p{i};\n  p{i} += 1;\n  *p{i} = a;" for i in range(quarter)]
    return function("int a = n, " + ", ".join(f"*p{i}" for i in range(quarter)) + ";", lines, "a")


def small_loops(statements):
    """Loops one behind the other, of three statements each."""
    lines = [f"  for (i = 0; i < {i % 90 + 10}; i++) {{\n    table[i] += other[i] * {i % 11};\n"
             f"    a ^= other[i];\n    other[a & 1023] = i;\n  }}" for i in range(statements // 4)]
    return function("int i, a = n;", lines, "a")


def many_members(statements):
    """A structure of half as many members as statements: all are stored, then all are read."""
    half = statements // 2
    members = " ".join(f"int m{i};" for i in range(half))
    lines = [f"  s.m{i} = n + {i};" for i in range(half)]
    lines += [f"  a += s.m{i};" for i in range(half)]
    return function(f"struct {{ {members} }} s; int a = 0;", lines, "a")


SHAPES = {
    "mix of real C": mixed,
    "one block": one_block,
    "switch": switch_cases,
    "far constants": far_constants,
    "stepped pointers": stepped_pointers,
    "small loops": small_loops,
    "many members": many_members,
}
