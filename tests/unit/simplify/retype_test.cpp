#include "simplify/retype.h"

#include "tree_rows.h"

namespace velkor {
namespace {

class RetypeTest : public TreeRowTest {
protected:
  // Retypes each row's tree, and the result again, which must change nothing.
  void expect_retyped(const std::vector<TreeRow> &rows) {
    for (const TreeRow &row : rows) {
      NODE *input = tree(row.input);
      if (!input) continue;
      const TypeWord type = input->type;
      NODE *result = retype_tree(input);
      const std::string once = text(result);
      EXPECT_EQ(once, text(tree(row.output ? row.output : row.input))) << "of " << row.input;
      EXPECT_TRUE(result->type == type || op_effect(result->op) != PURE) << "of " << row.input;
      EXPECT_EQ(text(retype_tree(result)), once) << "again, of " << row.input;
    }
  }

  // Two names of type int in one register.
  struct Twins {
    SYM *a;
    SYM *b;
  };
  static Twins twins(StorageClass sclass) {
    const Twins pair{symbol("a", INT, 2, sclass), symbol("b", INT, 2, sclass)};
    pair.a->offset = pair.b->offset = 4;
    return pair;
  }
};

TEST_F(RetypeTest, OperandsTakeTheirCommonType) {
  expect_retyped({
      {"add:int(_c, _x)", "add:int(sconv:int(_c), _x)"},
      {"add:unsigned(_uc, _u)", "add:unsigned(sconv:unsigned(_uc), _u)"},
      {"multiply:char(_x, _c)", "sconv:char(multiply:int(_x, sconv:int(_c)))"},
      {"bit_and:int(_u, _x)", "sconv:int(bit_and:unsigned(_u, sconv:unsigned(_x)))"},
      {"add:double(_x, _d)", "add:double(sconv:double(_x), _d)"},
      {"add:float(_f, _d)", "sconv:float(add:double(sconv:double(_f), _d))"},
      // The node says in which type it is computed, and how it divides.
      {"add:double(_x, _y)", "add:double(sconv:double(_x), sconv:double(_y))"},
      {"divide:int(_u, _x)", "divide:int(sconv:int(_u), _x)"},
      {"remainder:unsigned(_x, _y)", "remainder:unsigned(sconv:unsigned(_x), sconv:unsigned(_y))"},
      {"conditional:int(_x, alternatives:int(_c, _u))",
       "conditional:int(_x, alternatives:int(sconv:int(_c), sconv:int(_u)))"},
      {"conditional:int*(_x, alternatives:int*(_p, 0))",
       "conditional:int*(_x, alternatives:int*(_p, pconv:int*(0)))"},
      {"shift_right:int(_u, _c)", "sconv:int(shift_right:unsigned(_u, sconv:int(_c)))"},
      {"shift_left:int(_uc, 3)", "sconv:int(shift_left:unsigned(sconv:unsigned(_uc), 3))"},
      {"negate:int(_c)", "negate:int(sconv:int(_c))"},
      {"complement:unsigned(_x)", "complement:unsigned(sconv:unsigned(_x))"},
      {"sqrt:double(_x)", "sqrt:double(sconv:double(_x))"},
      // The magnitude of 200 is not that of (char) 200.
      {"abs:char(_x)", nullptr},
  });
}

TEST_F(RetypeTest, PointerSumsAreScaled) {
  expect_retyped({
      {"add(_p, _x)", "add(_p, pmconv(_x, 8))"},
      {"add(_p, 4)", "add(_p, pmconv(4, 8))"},
      {"add:int*(_c, _p)", "add:int*(pmconv(sconv:int(_c), 8), _p)"},
      {"subtract(_p, _c)", "subtract(_p, pmconv(sconv:int(_c), 8))"},
      {"add(_p, pmconv(_c, 32))", "add(_p, pmconv(sconv:int(_c), 32))"},
      {"add:char*(_p, _x)", "pconv:char*(add:int*(_p, pmconv(_x, 8)))"},
      {"subtract:int(_p, _q)", nullptr},
      {"subtract:unsigned(_p, _q)", "sconv:unsigned(subtract:int(_p, _q))"},
      // No sum is scaled that has lost its pointer.
      {"add:int*(_x, _y)", "pconv:int*(add:int(_x, _y))"},
      {"asg_add(_p, _c)", "asg_add(_p, sconv:int(_c))"},
      {"pvconv(_c, 32)", "pvconv(sconv:int(_c), 32)"},
  });
}

TEST_F(RetypeTest, PlacesAndAccesses) {
  expect_retyped({
      {"deref:int(_cp)", "deref:int(pconv:int*(_cp))"},
      {"deref:int(_p)", nullptr},
      {"address:char*(_x)", "pconv:char*(address:int*(_x))"},
      {"address(_a)", nullptr},
      {"member:unsigned(_st, _m)", "sconv:unsigned(member:int(_st, _m))"},
      {"arrow:char(add:struct*(_sp, 8), _m)",
       "sconv:char(arrow:int(add:struct*(_sp, pmconv(8, 8)), _m))"},
      {"assign(member(_st, _k), _x)", "assign(member(_st, _k), sconv:char(_x))"},
      {"sconv:int(_x)", "_x"},
      {"isp2char:char*(_p)", "pconv:char*(_p)"},
      {"aconv:int(sconv:int(_d))", "aconv:int(_d)"},
  });
  // A NAME that took another type is converted back where it is a value, and not where it is a
  // place.
  NODE *pointer = tree("_p");
  pointer->type = pointer_to(CHAR);
  EXPECT_EQ(text(retype_tree(pointer)), "pconv:char*(_p)");
  NODE *assignment = tree("assign(_x, _y)");
  assignment->left->type = UNSIGNED;
  EXPECT_EQ(text(retype_tree(assignment)), "assign(_x, _y)");
}

TEST_F(RetypeTest, Statements) {
  expect_retyped({
      {"assign(_c, _x)", "assign(_c, sconv:char(_x))"},
      {"assign(_d, _x)", "assign(_d, sconv:double(_x))"},
      {"asg_add(_c, _u)", nullptr},
      {"asg_add(_u, _c)", "asg_add(_u, sconv:unsigned(_c))"},
      {"asg_multiply(_x, _d)", nullptr},
      {"asg_shift_left(_x, _c)", "asg_shift_left(_x, sconv:int(_c))"},
      {"return:char(_self, _x)", "return:char(_self, sconv:char(_x))"},
      {"eq(_c, _u)", "eq(sconv:unsigned(_c), _u)"},
      {"lt(_c, _d)", "lt(sconv:double(_c), _d)"},
      {"ult(_x, _y)", "ult(sconv:unsigned(_x), sconv:unsigned(_y))"},
      {"eq(_p, 0)", "eq(_p, pconv:int*(0))"},
      {"comma_op(assign(_c, _x), add:int(_c, _x))",
       "comma_op(assign(_c, sconv:char(_x)), add:int(sconv:int(_c), _x))"},
      {"assign(_x, add:int(_x, _y))", "asg_add(_x, _y)"},
      {"assign(_x, add:int(_y, _x))", "asg_add(_x, _y)"},
      {"assign(_x, subtract:int(_y, _x))", nullptr},
      {"assign(_x, lt(_y, _x))", "assign(_x, gt(_x, _y))"},
      // seen when the conversion has gone
      {"assign(_v, add:unsigned(sconv:int(_v), _u))", "asg_add(_v, _u)"},
      {"assign(_v, shift_right:unsigned(sconv:int(_v), 1))",
       "assign(_v, sconv:unsigned(shift_right(sconv:int(_v), 1)))"},
      {"assign(_x, shift_right:int(_x, 3))", "asg_shift_right(_x, 3)"},
      {"assign(_c, add:int(_c, _y))", "asg_add(_c, _y)"},
      {"assign(_p, add:int*(_p, 4))", "asg_add(_p, 4)"},
      // The sum is computed in a narrower type than the compound assignment's.
      {"assign(_x, add:char(_x, _y))", "assign(_x, sconv:int(sconv:char(add:int(_x, _y))))"},
      // The call may change the variable, which a sum reads before it.
      {"assign(_g1, add:int(_g1, ucall(address(_fn))))", nullptr},
      {"assign(_x, _x)", "_x"},
      {"assign(_x, assign(_x, _y))", "assign(_x, _y)"},
      {"assign(_vol, _vol)", nullptr},
  });
}

TEST_F(RetypeTest, NamesInOneRegister) {
  for (const StorageClass sclass : {C_REG, C_VREG}) {
    const Twins pair = twins(sclass);
    NODE *copy = retype_tree(make_assign(name(pair.a), name(pair.b)));
    EXPECT_TRUE(copy->op == NAME && copy->u.sym == pair.b);

    NODE *sum = node(ADD, tree("_x"), name(pair.b));
    NODE *step = retype_tree(make_assign(name(pair.a), sum));
    EXPECT_TRUE(step->op == ASG_ADD && step->right->u.sym == sym("_x"));

    NODE *less = retype_tree(node(LT, name(pair.a), name(pair.b)));
    EXPECT_EQ(text(less), "0");
    NODE *at_least = retype_tree(node(UGE, name(pair.a), name(pair.b)));
    EXPECT_EQ(text(at_least), "1");
  }
  const Twins memory = twins(C_AUTO);
  EXPECT_EQ(retype_tree(make_assign(name(memory.a), name(memory.b)))->op, ASSIGN);
  Twins apart = twins(C_REG);
  apart.b->offset = 8;
  EXPECT_EQ(retype_tree(node(EQ, name(apart.a), name(apart.b)))->op, EQ);
  Twins uneasy = twins(C_REG);
  uneasy.b->squal = 2;
  EXPECT_EQ(retype_tree(make_assign(name(uneasy.a), name(uneasy.b)))->op, ASSIGN);
}

TEST_F(RetypeTest, SelectorsArePromoted) {
  EXPECT_EQ(text(retype_tree(node(SWITCH, tree("_c")))->left), "sconv:int(_c)");
}

TEST_F(RetypeTest, EnumsOfOneTag) {
  SYM *first = symbol("e", ENUM);
  SYM *second = symbol("k", ENUM);
  NODE *assignment = retype_tree(make_assign(name(first), name(second)));
  EXPECT_EQ(assignment->right->op, NAME);
}

} // namespace
} // namespace velkor
