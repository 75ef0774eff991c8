#include "variables.h"

#include "core/fun.h"
#include "core/nodes.h"
#include "core/options.h"
#include "core/state.h"
#include "core/symbols.h"
#include "core/zones.h"
#include "simplify/constant_text.h"

#include <cstdio>
#include <cstdlib>

namespace velkor::exhaustive {
namespace {

using Values = std::array<std::uint32_t, 16>;

constexpr std::uint32_t minus(std::uint32_t value) {
  return 0 - value;
}

constexpr Values char_values = {0,        1,  minus(1),   2,   3,   minus(2),   5,         7, 8,
                                minus(8), 64, minus(100), 126, 127, minus(128), minus(127)};
constexpr Values short_values = {
    0,   1,   minus(1), 2,          3,    minus(3),   7,      127,
    128, 255, 256,      minus(256), 1000, minus(129), 0x7FFF, minus(0x8000)};
constexpr Values int_values = {
    0,          1,   minus(1),      2,      3,       minus(3), 8,          200,
    minus(128), 255, minus(0x8000), 0xFFFF, 0x10000, 0x41235,  0x7FFFFFFF, 0x80000000};
constexpr Values unsigned_char_values = {0,  1,  2,   3,   4,   7,   8,   15,
                                         16, 64, 127, 128, 129, 200, 254, 255};
constexpr Values unsigned_short_values = {0,   1,   2,      3,      7,      8,      127,    128,
                                          255, 256, 0x7FFF, 0x8000, 0x8001, 0xF0F0, 0xFFFE, 0xFFFF};
constexpr Values unsigned_values = {0,       1,        minus(1),   2,         3,      7,
                                    8,       200,      255,        256,       0x8000, 0xFFFF,
                                    0x10000, minus(8), 0x7FFFFFFF, 0x80000000};

constexpr Values pointer_values = {
    0,          0x1000,     0x1001,     0x1002,     0x1003, 0x1008,     0x10FF,     0x1100,
    0x7FFFFFFE, 0x7FFFFFFF, 0x80000000, 0x80000001, 0x9000, 0x80001000, 0xFFFFE000, 0xFFFFE001};

const Values &boundary_values(TypeWord type) {
  if (is_derived(type)) return pointer_values;
  switch (type) {
  case CHAR: return char_values;
  case SHORT: return short_values;
  case UNSIGNED_CHAR: return unsigned_char_values;
  case UNSIGNED_SHORT: return unsigned_short_values;
  case UNSIGNED:
  case UNSIGNED_LONG: return unsigned_values;
  default: return int_values;
  }
}

// Product in the field of 16 elements.
unsigned field_product(unsigned a, unsigned b) {
  unsigned product = 0;
  for (int bit = 0; bit < 4; ++bit) {
    if (b >> bit & 1) product ^= a << bit;
  }
  for (int bit = 7; bit >= 4; --bit) {
    if (product >> bit & 1) product ^= 0x13u << (bit - 4);
  }
  return product;
}

// Which of its 16 values a variable has in a lane: the points of a line of the affine plane, so
// that any two variables of different slope meet in each of their 256 pairs of values.
unsigned value_number(unsigned lane, unsigned slope) {
  const unsigned low = lane & 15;
  const unsigned high = lane >> 4;
  return slope == 16 ? high : low ^ field_product(slope, high);
}

struct Declaration {
  const char *tree;
  TypeWord type;
};
constexpr Declaration variable_table[] = {
    {"_c", CHAR},
    {"_c2", CHAR},
    {"_s", SHORT},
    {"_s2", SHORT},
    {"_x", INT},
    {"_y", INT},
    {"_z", INT},
    {"_l", LONG},
    {"_uc", UNSIGNED_CHAR},
    {"_uc2", UNSIGNED_CHAR},
    {"_us", UNSIGNED_SHORT},
    {"_us2", UNSIGNED_SHORT},
    {"_u", UNSIGNED},
    {"_v", UNSIGNED},
    {"_ul", UNSIGNED_LONG},
    {"member(_st, _b3)", UNSIGNED},
    {"member(_st, _s3)", INT},
    {"member(_st, _b1)", UNSIGNED},
    {"_cp", pointer_to(CHAR)},
    {"_cq", pointer_to(CHAR)},
    {"deref(_p)", INT},
};
static_assert(std::size(variable_table) == variable_number_count);

[[noreturn]] void give_up(const std::string &message) {
  std::fprintf(stderr, "exhaustive_test: %s\n", message.c_str());
  std::exit(2);
}

NODE *parse(World &world, const char *text) {
  std::string error;
  NODE *tree = bridge::tree_from_text(text, world.symbols, error);
  if (!tree) give_up(std::string(text) + ": " + error);
  return tree;
}

Word values_of(const Variable &variable, unsigned slope) {
  Word word;
  const Values &values = boundary_values(variable.type);
  for (unsigned lane = 0; lane < lane_count; ++lane) {
    std::uint32_t &value = word.lane[lane];
    const unsigned number = value_number(lane, slope);
    value = values[number];
    if (variable.symbol->sclass == C_FIELD) {
      const int unused = 32 - variable.symbol->size;
      value =
          is_unsigned_basic(variable.type)
              ? number << unused >> unused
              : static_cast<std::uint32_t>(static_cast<std::int32_t>(number << unused) >> unused);
    }
  }
  return word;
}

} // namespace

const std::vector<std::string> &declarations(int level) {
  static const std::vector<std::string> globals = {
      "symbol _st_tag struct_tag struct size=32",
      "symbol _b3 bit_field unsigned size=3 offset=0",
      "symbol _s3 bit_field int size=3 offset=3",
      "symbol _b1 bit_field unsigned size=1 offset=6",
      "symbol .eos end_of_tag struct tag=_st_tag size=32",
      "symbol _g extern int",
      "symbol _printf extern_declared int()"};
  static const std::vector<std::string> automatics = {
      "symbol _c auto char",      "symbol _c2 auto char",
      "symbol _s auto short",     "symbol _s2 auto short",
      "symbol _x auto int",       "symbol _y auto int",
      "symbol _z auto int",       "symbol _l auto int",
      "symbol _uc auto uchar",    "symbol _uc2 auto uchar",
      "symbol _us auto ushort",   "symbol _us2 auto ushort",
      "symbol _u auto unsigned",  "symbol _v auto unsigned",
      "symbol _ul auto unsigned", "symbol _p auto int*",
      "symbol _cp auto char*",    "symbol _cq auto char*",
      "symbol _r auto int",       "symbol _st auto struct tag=_st_tag"};
  return level == 0 ? globals : automatics;
}

void make_world(World &world) {
  clear_functions();
  clear_symbol_tables();
  release_all_zones();
  options = Options{};
  state = State{};
  init_float_constants();
  for (const int level : {0, 2}) {
    for (const std::string &line : declarations(level)) {
      std::string error;
      if (!world.symbols.declare(line, level, error)) give_up(line + ": " + error);
    }
  }
  for (const Declaration &declaration : variable_table) {
    NODE *tree = copy_tree_global(parse(world, declaration.tree));
    tree->type = static_cast<std::uint16_t>(declaration.type);
    SYM *symbol = tree->op == NAME     ? tree->u.sym
                  : tree->op == MEMBER ? tree->right->u.sym
                                       : parse(world, "_g")->u.sym;
    if (tree->op == NAME) symbol->stype = declaration.type;
    const auto slot = static_cast<std::int32_t>(world.variables.size());
    symbol->count = slot;
    world.variables.push_back({declaration.tree, declaration.type, symbol, tree});
    world.initial.push_back(values_of(world.variables.back(), static_cast<unsigned>(slot) % 17));
  }
  world.pointed_at = std::uint64_t{1} << AT_P;
  Word address;
  address.lane.fill(variable_address(AT_P));
  parse(world, "_p")->u.sym->count = static_cast<std::int32_t>(world.initial.size());
  world.initial.push_back(address);
}

} // namespace velkor::exhaustive
