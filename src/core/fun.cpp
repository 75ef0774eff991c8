#include "core/fun.h"

#include "core/options.h"
#include "core/state.h"
#include "core/zones.h"

#include <array>
#include <cstring>
#include <unordered_map>

namespace velkor {
namespace {

constexpr std::size_t hash_buckets = 73;

// The buckets keep the records in an order that is the same on every run; the index finds them.
struct Functions {
  std::array<FUN *, hash_buckets> buckets{};
  std::unordered_map<std::string_view, FUN *> by_name;
};

Functions functions;

struct LibraryName {
  std::string_view name;
  std::uint32_t flags; // besides those that full trust in the names gives to all of them
};

constexpr std::uint32_t reads_only = FUN_no_ind_asg | FUN_no_global_asg;
constexpr std::uint32_t pure = FUN_is_pure_fun | reads_only;

constexpr std::array<LibraryName, 19> library_names = {{
    {"malloc", 0},
    {"strcpy", 0},
    {"printf", 0},
    {"fprintf", 0},
    {"strcmp", reads_only},
    {"strlen", reads_only},
    {"memcpy", 0},
    {"exit", FUN_never_returns},
    {"abort", FUN_never_returns},
    {"longjmp", FUN_never_returns},
    {"abs", pure},
    {"fabs", pure},
    {"labs", pure},
    {"floor", pure},
    {"sin", 0},
    {"cos", 0},
    {"exp", 0},
    {"sqrt", 0},
    {"_sqrt", pure},
}};

std::size_t bucket_of(std::string_view name) {
  std::uint32_t h = 0;
  for (const char c : name) {
    h = (h << 4) + static_cast<std::uint32_t>(static_cast<signed char>(c));
    if (const std::uint32_t g = h & 0xF0000000u; g != 0) h = (h ^ (g >> 28)) & ~g;
  }
  return (h & 32767) % hash_buckets;
}

void classify_new_function(FUN *fun) {
  const std::string_view name = fun->name;
  if (name == "main") fun->flags |= FUN_is_main;
  if (options.opt_builtin_level != 0)
    for (const LibraryName &entry : library_names)
      if (entry.name == name) {
        if (options.opt_builtin_level == 2) fun->flags |= FUN_is_SYSTEM | FUN_no_global_asg;
        fun->flags |= entry.flags;
        break;
      }
  // Below level 3 nothing is known of any function but the library's.
  if (options.opt_level < 3 && !(fun->flags & FUN_is_SYSTEM))
    fun->flags |=
        FUN_calls_OUTSIDE | FUN_is_anonymous | FUN_follows_call | FUN_value_needed | FUN_is_called;
}

// A symbol's name less its first character, the underscore of the linker names.
std::string_view function_name(const SYM *sym) {
  return *sym->name ? sym->name + 1 : sym->name;
}

} // namespace

void clear_functions() {
  functions = Functions{};
}

FUN *fun_find(std::string_view name) {
  const auto found = functions.by_name.find(name);
  return found == functions.by_name.end() ? nullptr : found->second;
}

FUN *fun_find_or_add(std::string_view name) {
  if (FUN *fun = fun_find(name)) return fun;
  void *memory = zalloc(0, sizeof(FUN) + name.size() + 1);
  auto *fun = new (memory) FUN{};
  fun->name = static_cast<char *>(memory) + sizeof(FUN);
  if (!name.empty()) std::memcpy(fun->name, name.data(), name.size());
  fun->name[name.size()] = '\0';
  fun->cg_number = -1;
  fun->nargs = -1;
  FUN *&bucket = functions.buckets[bucket_of(name)];
  fun->next = bucket;
  bucket = fun;
  functions.by_name.emplace(std::string_view(fun->name, name.size()), fun);
  classify_new_function(fun);
  return fun;
}

FUN *fun_of_call(const NODE *node) {
  switch (node->op) {
  case XCALL:
  case UXCALL: return fun_find_or_add(node->u.name);
  case CALL:
  case UCALL:
  case STCALL:
  case USTCALL: {
    const NODE *callee = node->left;
    if (callee->op != ADDRESS || callee->left->op != NAME) return nullptr;
    return fun_find_or_add(function_name(callee->left->u.sym));
  }
  case ABS:
    if (is_floating(node->type)) return fun_find_or_add("fabs");
    if (!is_integer(node->type)) return nullptr;
    return fun_find_or_add(type_width(node->type) > 32 ? "labs" : "abs");
  case SQRT: return fun_find_or_add("_sqrt");
  case MEMCPY: return fun_find_or_add("memcpy");
  default: return nullptr;
  }
}

bool call_may_reenter(const NODE *call) {
  if (state.main_not_reentered && state.cur_fun && (state.cur_fun->flags & FUN_is_main))
    return false;
  if (!options.opt_assume_reentrant && !(state.cur_fun_sym->scqual & CQ_REENTRANT)) return false;
  switch (call->op) {
  case CALL:
  case UCALL:
  case STCALL:
  case USTCALL:
  case XCALL:
  case UXCALL: break;
  default: return false;
  }
  const FUN *fun = fun_of_call(call);
  if (!fun || !(fun->flags & FUN_is_defined)) fun = state.unknown_fun;
  if (state.pass_number == 2 && fun->reach && state.cur_fun && state.cur_fun->cg_number >= 0) {
    const auto number = static_cast<unsigned>(state.cur_fun->cg_number);
    return (fun->reach[number >> 5] >> (number & 31) & 1) != 0;
  }
  return true;
}

FUN_CELL *fun_list_add(FUN *fun, FUN_CELL *list) {
  for (const FUN_CELL *cell = list; cell; cell = cell->next)
    if (cell->fun == fun) return list;
  return new (zalloc(0, sizeof(FUN_CELL))) FUN_CELL{list, fun};
}

std::uint32_t fun_flag_of_pragma(int kind) {
  switch (kind) {
  case 3: return FUN_never_returns;
  case 4: return FUN_cannot_inline;
  case 5: return FUN_no_global_asg;
  case 6: return FUN_no_ind_asg;
  case 7: return FUN_is_pure_fun;
  case 8: return FUN_is_SYSTEM;
  case 23: return FUN_is_pragma_EXT;
  default: return 0;
  }
}

} // namespace velkor
