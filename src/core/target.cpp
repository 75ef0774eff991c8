#include "core/target.h"

#include "core/options.h"

#include <array>

namespace velkor {
namespace {

// Constants that an 8-bit field, wrapping around the word's end, can hold.
constexpr std::array<std::uint32_t, 3> wrapping_fields = {0xFC000003, 0xF000000F, 0xC000003F};

constexpr std::int32_t smallest_short_immediate = -256;
constexpr std::int32_t largest_short_immediate = 255;

bool is_immediate_value(std::uint32_t value) {
  for (const std::uint32_t field : wrapping_fields)
    if ((value & ~field) == 0) return true;
  for (std::uint32_t field = 0xFF; field != 0; field <<= 2)
    if ((value & field) == value || (value & field) == 0) return true;
  return false;
}

} // namespace

Target target;

bool is_immediate_operand(const NODE *node) {
  if (node->op != ICON) return false;
  if (options.opt_target_mode == 1)
    return node->u.lval >= smallest_short_immediate && node->u.lval <= largest_short_immediate;
  return is_immediate_value(static_cast<std::uint32_t>(node->u.lval));
}

AccessCost access_cost(TypeWord type) {
  switch (type & basic_type_mask) {
  case CHAR: return {2, 4};
  case SHORT: return {3, 4};
  case INT:
  case UNSIGNED: return {4, 0};
  case UNSIGNED_CHAR: return {2, 0};
  case UNSIGNED_SHORT: return {3, 0};
  default: return {0, 0};
  }
}

REGCLASS *target_register_classes() {
  target.vreg_count = 0;
  return nullptr;
}

void target_finish_symbols(SYM *list) {
  for (SYM *sym = list; sym; sym = sym->next)
    if (!sym->fcp_flag && sym->level == 2 && sym->sclass == C_AUTO) {
      sym->sclass = C_VREG;
      sym->offset = target.vreg_count++;
    }
}

} // namespace velkor
