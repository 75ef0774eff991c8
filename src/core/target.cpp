#include "core/target.h"

#include "core/options.h"

#include <array>
#include <bit>

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

OffsetRange offset_range() {
  if (options.opt_target_mode == 1) return {0, 124};
  return {-4095, 4095};
}

bool offset_fits(std::int32_t offset, TypeWord type, bool signed_form) {
  const auto [lowest, highest] = offset_range();
  if (offset < lowest || offset > highest) return false;
  if (is_pointer(type)) return true;
  const bool has_short_fields = options.opt_target_mode == 1;
  const bool is_even = offset % 2 == 0;
  switch (type) {
  case CHAR:
    if (!has_short_fields) return signed_form || offset <= 255;
    return signed_form && offset < 32;
  case UNSIGNED_CHAR: return !has_short_fields || offset < 32;
  case SHORT:
    if (!has_short_fields) return offset <= 255 && is_even;
    return signed_form && offset <= 62 && is_even;
  case UNSIGNED_SHORT: return offset <= (has_short_fields ? 62 : 255) && is_even;
  case INT:
  case UNSIGNED:
  case FLOAT: return offset % 4 == 0;
  default: return false;
  }
}

bool scale_ok(std::int32_t factor, std::int32_t width) {
  if (width != 8 && width != 16 && width != 32) return false;
  if (factor == 1) return true;
  if (options.opt_target_mode != 0 || width == 16) return false;
  const std::uint32_t size =
      factor < 0 ? 0u - static_cast<std::uint32_t>(factor) : static_cast<std::uint32_t>(factor);
  return std::has_single_bit(size);
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
