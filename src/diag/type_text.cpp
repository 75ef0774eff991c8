#include "diag/type_text.h"

#include "core/options.h"
#include "diag/readable_name.h"

#include <string>
#include <string_view>

namespace velkor {
namespace {

constexpr std::string_view unnamed_tag_prefix = ".fake";

struct TypeTextState {
  std::string type;
  std::string declaration;
};
TypeTextState texts;

const char *qualifier_text(std::uint32_t bits) {
  constexpr const char *by_bits[] = {"", "const ", "volatile ", "volatile const "};
  return by_bits[bits & 3];
}

// Calls prepend and append for each derivation, the outermost first, so that a declarator grows
// around what already stands there. A pointer that an array or a function encloses is put in
// parentheses.
template <typename Pointer, typename Suffix>
void walk_derivations(TypeWord type, std::string &declarator, Pointer pointer, Suffix suffix) {
  bool behind_pointer = false;
  for (int level = 0; is_derived(type); type = underived(type), ++level) {
    const Derivation derivation = outermost_derivation(type);
    if (derivation == POINTER_TO) {
      pointer(level);
    } else if (derivation == ARRAY_OF || derivation == FUNCTION_RETURNING) {
      if (behind_pointer) declarator = "(" + declarator + ")";
      suffix(derivation);
    }
    behind_pointer = derivation == POINTER_TO;
  }
}

std::string declaration(const SYM *sym, const SYM *parameters);

std::string parameter_list(const SYM *parameters) {
  std::string list = "(";
  for (const SYM *parameter = parameters; parameter; parameter = parameter->next) {
    if (parameter->level != 1) continue;
    if (list.size() > 1) list += ", ";
    list += options.opt_unsigned_preserving ? std::string(readable_name(parameter->name, 0))
                                            : declaration(parameter, nullptr);
  }
  return list + ")";
}

std::string tag_text(const SYM *sym) {
  if (!has_tag(sym->stype) || !sym->tag) return "";
  const std::string_view name = readable_name(sym->tag->name, 0);
  if (name.substr(0, unnamed_tag_prefix.size()) == unnamed_tag_prefix) return "";
  return " " + std::string(name);
}

std::string declaration(const SYM *sym, const SYM *parameters) {
  std::string declarator = readable_name(sym->name, 0);
  int dimension = 0;
  walk_derivations(
      sym->stype, declarator,
      [&](int level) {
        // Two bits of the qualifier word belong to each derivation, beginning with bits 4 and 5.
        const std::uint32_t bits = level < 14 ? sym->squal >> (4 + 2 * level) : 0;
        declarator = qualifier_text(bits) + ("*" + declarator);
      },
      [&](Derivation derivation) {
        if (derivation == ARRAY_OF) {
          const std::uint32_t count = dimension < sym->ndims ? sym->dims[dimension] : 0;
          declarator += count ? "[" + std::to_string(count) + "]" : "[]";
          ++dimension;
        } else {
          // Only the symbol's own parameter list is known, not that of a function it points at.
          declarator += parameter_list(parameters);
          parameters = nullptr;
        }
      });
  std::string text = storage_text(sym);
  if (!text.empty()) text += " ";
  text += qualifier_text(sym->squal);
  text += basic_type_text(sym->stype);
  text += tag_text(sym);
  return text + " " + declarator;
}

} // namespace

const char *basic_type_text(TypeWord type) {
  return basic_type(type).name;
}

const char *storage_text(const SYM *sym) {
  if (sym->scqual & CQ_CREGISTER) return "cregister";
  if (sym->scqual & CQ_REGISTER) return "register";
  return storage_class_table[sym->orig_sclass].text;
}

const char *type_text(TypeWord type) {
  std::string declarator;
  walk_derivations(
      type, declarator, [&](int) { declarator = "*" + declarator; },
      [&](Derivation derivation) { declarator += derivation == ARRAY_OF ? "[]" : "()"; });
  texts.type = "(";
  texts.type += basic_type_text(type);
  texts.type += declarator + ")";
  return texts.type.c_str();
}

const char *declaration_text(const SYM *sym, const SYM *parameters) {
  texts.declaration = declaration(sym, parameters);
  return texts.declaration.c_str();
}

} // namespace velkor
