#include "checks.h"

#include "core/nodes.h"
#include "core/options.h"
#include "simplify/bits.h"
#include "simplify/retype.h"
#include "simplify/rules.h"
#include "simplify/simplify.h"
#include "simplify/truth.h"

#include <cinttypes>
#include <cstdio>

namespace velkor::exhaustive {
namespace {

constexpr std::uint32_t demanded_masks[] = {1,      3,      15,         255,        0xF0,
                                            0xFF00, 0xFFFF, 0x80000000, 0xFFFF0000, ~0u};

// What a tree does, in every lane.
struct Meaning {
  Evaluation evaluation;
  Word value;
  Memory memory; // afterwards, when it was copied
};

// Evaluates the tree on the initial values. writes: whether it has assignments.
void find_meaning(const World &world, const NODE *tree, bool writes, Meaning &meaning) {
  if (writes) {
    meaning.memory = world.initial;
    meaning.evaluation.memory = &meaning.memory;
  } else {
    // Without assignments nothing is written.
    meaning.evaluation.memory = const_cast<Memory *>(&world.initial);
  }
  meaning.evaluation.reason = nullptr;
  evaluate(tree, meaning.evaluation, meaning.value);
}

bool has_meaning(const Meaning &meaning, std::size_t lane) {
  return (meaning.evaluation.undefined.lane[lane] | meaning.evaluation.trapped.lane[lane]) == 0;
}

bool has_writes(const NODE *tree) {
  if (op_effect(tree->op) == ASSIGNS) return true;
  return tree->left && (has_writes(tree->left) || (tree->right && has_writes(tree->right)));
}

bool has_access(const NODE *tree) {
  if (tree->op == MEMBER || tree->op == DEREF || tree->op == ADDRESS) return true;
  return tree->left && (has_access(tree->left) || (tree->right && has_access(tree->right)));
}

std::string text_of(const World &world, const NODE *tree) {
  return bridge::tree_to_text(tree, world.symbols);
}

std::string word_text(std::uint32_t word) {
  char text[40];
  std::snprintf(text, sizeof text, "%" PRId32 " (0x%" PRIX32 ")", static_cast<std::int32_t>(word),
                word);
  return text;
}

// The variables of the tree with their values in the lane.
std::string lane_text(const World &world, const NODE *tree, std::size_t lane) {
  std::string text;
  const Accesses accesses = accesses_of(tree, world.pointed_at);
  for (const Variable &variable : world.variables) {
    const auto slot = static_cast<std::size_t>(variable.symbol->count);
    if (!((accesses.reads | accesses.writes) >> slot & 1)) continue;
    text += std::string(" ") + variable.tree + "=" + word_text(world.initial[slot].lane[lane]);
  }
  return text;
}

// Which rules fire on the tree at the present level.
std::string rules_text(const NODE *tree) {
  std::vector<std::uint32_t> before;
  for (const RuleSet *set : rule_sets()) {
    for (std::size_t i = 0; i < set->rules.size(); ++i)
      before.push_back(set->fired[i]);
  }
  erase_tree(simplify_tree(copy_tree(tree)));
  std::string text;
  std::size_t position = 0;
  for (const RuleSet *set : rule_sets()) {
    for (std::size_t i = 0; i < set->rules.size(); ++i) {
      if (set->fired[i] != before[position++])
        text += std::string("\n    ") + set->name + ": " + set->rules[i].pattern;
    }
  }
  return text;
}

// The forms that another simplification may change, each with its reason.
//
// x op= (y op z): it is taken apart and put together again each time, and the operand that stands
// at the end of the chain x op y op z makes room for x. So y and z change places.
bool may_change_again(const NODE *tree) {
  const Opcode base = asgop_base(tree->op);
  if (base != ILLOP && tree->right->op == base && is_commutative(base)) return true;
  return tree->left &&
         (may_change_again(tree->left) || (tree->right && may_change_again(tree->right)));
}

// The checks of one tree at one level of optimization.
struct Session {
  const World &world;
  const NODE *source;
  Totals &totals;
  std::vector<Finding> &findings;
  bool writes = false;
  Meaning before = {};
  Meaning after = {};

  void report(Check check, std::string text) {
    totals.failed[static_cast<std::size_t>(check)] += 1;
    findings.push_back({check, options.opt_level, std::move(text)});
  }

  std::string change_text(const NODE *from, const NODE *to) const {
    return text_of(world, from) + "  ->  " + text_of(world, to);
  }

  // Evaluates the result; false, with a report, when that cannot be done.
  bool evaluate_result(const NODE *result) {
    find_meaning(world, result, writes, after);
    totals.evaluations += lane_count;
    if (!after.evaluation.reason) return true;
    report(Check::EVALUATION, change_text(source, result) + "  : " + after.evaluation.reason);
    return false;
  }

  void report_lane(Check check, const NODE *result, std::size_t lane, const char *what,
                   const std::string &detail) {
    report(check, change_text(source, result) + "  " + detail + what + " in" +
                      lane_text(world, source, lane) + ": " + word_text(before.value.lane[lane]) +
                      " became " + word_text(after.value.lane[lane]) +
                      (check == Check::VALUE ? rules_text(source) : ""));
  }

  // Variables afterwards and traps; true when all is well.
  bool compare_effects(Check check, const NODE *result, const std::string &detail) {
    for (std::size_t lane = 0; lane < lane_count; ++lane) {
      if (!has_meaning(before, lane)) continue;
      if (after.evaluation.trapped.lane[lane]) {
        report_lane(check, result, lane, "traps", detail);
        return false;
      }
    }
    if (!writes) return true;
    for (std::size_t slot = 0; slot < world.initial.size(); ++slot) {
      for (std::size_t lane = 0; lane < lane_count; ++lane) {
        if (before.memory[slot].lane[lane] == after.memory[slot].lane[lane]) continue;
        if (!has_meaning(before, lane)) continue;
        const char *name = slot < world.variables.size() ? world.variables[slot].tree : "_p";
        report_lane(check, result, lane, "another variable",
                    detail + name + ": " + word_text(before.memory[slot].lane[lane]) + " became " +
                        word_text(after.memory[slot].lane[lane]) + ", ");
        return false;
      }
    }
    return true;
  }

  // agrees: whether two values of one lane do; true when they do in all lanes.
  template <typename Agrees>
  bool compare(Check check, const NODE *result, const std::string &detail, Agrees &&agrees) {
    if (!evaluate_result(result)) return false;
    for (std::size_t lane = 0; lane < lane_count; ++lane) {
      if (agrees(before.value.lane[lane], after.value.lane[lane]) || !has_meaning(before, lane))
        continue;
      report_lane(check, result, lane, "another value", detail);
      return false;
    }
    return compare_effects(check, result, detail);
  }

  void check_again(const NODE *result) {
    NODE *again = simplify_tree(copy_tree(result));
    if (!same_trees(again, result)) {
      if (may_change_again(result))
        totals.excepted += 1;
      else
        report(Check::STABLE,
               change_text(source, result) + "  ->  " + text_of(world, again) + rules_text(result));
      compare(Check::AGAIN_VALUE, again, "again, ",
              [](std::uint32_t a, std::uint32_t b) { return a == b; });
    }
    erase_tree(again);
  }

  void check_truth(const NODE *result) {
    NODE *test = simplify_test(copy_tree(result));
    compare(Check::TEST, test, "as a test, ",
            [](std::uint32_t a, std::uint32_t b) { return (a == 0) == (b == 0); });
    erase_tree(test);
    NODE *truth = truth_value(copy_tree(result));
    compare(Check::TRUTH, truth, "as truth, ",
            [](std::uint32_t a, std::uint32_t b) { return b == (a != 0); });
    erase_tree(truth);
  }

  void check_demanded(const NODE *result) {
    if (!is_integer(result->type)) return;
    for (const std::uint32_t mask : demanded_masks) {
      NODE *demanded = demand_bits(copy_tree(result), mask);
      if (!same_trees(demanded, result)) {
        compare(Check::DEMAND, demanded, "mask " + word_text(mask) + ", ",
                [mask](std::uint32_t a, std::uint32_t b) { return ((a ^ b) & mask) == 0; });
      }
      erase_tree(demanded);
    }
  }

  // What the analyses say of the tree must hold for every value that it takes.
  void check_knowledge(const NODE *result) {
    if (!is_integer(result->type)) return;
    const TypeWord type = result->type;
    const std::uint32_t possible = possible_bits(result, type);
    const std::uint32_t certain = certain_bits(result, type);
    const bool is_boolean = is_boolean_tree(result);
    const auto low = static_cast<std::uint32_t>(lower_bound(result, nullptr));
    const auto high = static_cast<std::uint32_t>(upper_bound(result, nullptr));
    const std::uint32_t flip = is_unsigned_basic(type) ? 0 : 0x80000000u;
    const std::uint32_t mask = value_mask(type);
    bool reported[check_count] = {};
    const auto expect = [&](Check check, bool holds, std::size_t lane, std::uint32_t claim) {
      bool &done = reported[static_cast<std::size_t>(check)];
      if (holds || done) return;
      done = true;
      report(check, text_of(world, result) + "  is " + word_text(before.value.lane[lane]) +
                        ", claimed " + word_text(claim) + " in" + lane_text(world, source, lane));
    };
    for (std::size_t lane = 0; lane < lane_count; ++lane) {
      if (!has_meaning(before, lane)) continue;
      const std::uint32_t value = before.value.lane[lane];
      expect(Check::POSSIBLE, (value & mask & ~possible) == 0, lane, possible);
      expect(Check::CERTAIN, (~value & mask & certain) == 0, lane, certain);
      expect(Check::BOOLEAN, !is_boolean || value <= 1, lane, 1);
      expect(Check::LOWER, (value ^ flip) >= (low ^ flip), lane, low);
      expect(Check::UPPER, (value ^ flip) <= (high ^ flip), lane, high);
    }
  }

  void check_retyped(const NODE *result) {
    NODE *retyped = retype_tree(copy_tree(result));
    compare(Check::RETYPE, retyped, "retyped, ",
            [](std::uint32_t a, std::uint32_t b) { return a == b; });
    NODE *again = retype_tree(copy_tree(retyped));
    if (!same_trees(again, retyped))
      report(Check::RETYPE_AGAIN, change_text(result, retyped) + "  ->  " + text_of(world, again));
    erase_tree(again);
    erase_tree(retyped);
  }

  void run() {
    NODE *result = simplify_tree(copy_tree(source));
    const bool same =
        compare(Check::VALUE, result, "", [](std::uint32_t a, std::uint32_t b) { return a == b; });
    if (same) {
      check_again(result);
      check_truth(result);
      check_demanded(result);
      check_knowledge(result);
      check_retyped(result);
    }
    erase_tree(result);
  }
};

// ------------------------------------------------------------------------------------------------
// Reducing

void subtrees_of(NODE *&tree, std::vector<NODE **> &places) {
  places.push_back(&tree);
  if (!tree->left) return;
  if (tree->op == MEMBER || tree->op == DEREF || tree->op == ADDRESS) return;
  const bool has_target = op_effect(tree->op) == ASSIGNS; // a place, for which no value can stand
  if (!has_target) subtrees_of(tree->left, places);
  if (tree->right) subtrees_of(tree->right, places);
}

bool same_failure(const World &world, const NODE *tree, const Finding &wanted, Finding &found) {
  Totals totals;
  std::vector<Finding> findings;
  check_tree(world, tree, totals, findings);
  for (Finding &finding : findings) {
    if (finding.check != wanted.check || finding.level != wanted.level) continue;
    found = std::move(finding);
    return true;
  }
  return false;
}

int node_count(const NODE *tree) {
  if (!tree->left) return 1;
  return 1 + node_count(tree->left) + (tree->right ? node_count(tree->right) : 0);
}

// Candidates for the place of a subtree, as new trees.
std::vector<NODE *> simpler_trees(const NODE *tree) {
  std::vector<NODE *> candidates;
  if (tree->op == ALTERNATIVES || tree->op == ICON || tree->op == NAME || !tree->left)
    return candidates;
  const auto with_type = [&](const NODE *operand) {
    NODE *copy = copy_tree(operand);
    if (copy->type != tree->type) copy = make_node(SCONV, copy, nullptr, tree->type);
    return copy;
  };
  if (tree->op == CONDITIONAL) {
    candidates.push_back(with_type(tree->right->left));
    candidates.push_back(with_type(tree->right->right));
  } else if (tree->op != MEMBER && tree->op != DEREF && tree->op != ADDRESS) {
    if (tree->left->op != ICON) candidates.push_back(with_type(tree->left));
    if (tree->right && tree->right->op != ICON) candidates.push_back(with_type(tree->right));
    if (tree->op == SCONV && is_integer(tree->left->type))
      candidates.push_back(copy_tree(tree->left));
  }
  for (const std::int32_t value : {0, 1})
    candidates.push_back(make_icon(value, tree->type));
  return candidates;
}

bool reduce_once(const World &world, NODE *&tree, const Finding &wanted, Finding &found) {
  std::vector<NODE **> places;
  subtrees_of(tree, places);
  for (NODE **place : places) {
    NODE *original = *place;
    for (NODE *candidate : simpler_trees(original)) {
      *place = candidate;
      if (node_count(candidate) < node_count(original) && same_failure(world, tree, wanted, found))
        return true;
      erase_tree(candidate);
    }
    *place = original;
  }
  return false;
}

} // namespace

const char *check_name(Check check) {
  constexpr const char *names[] = {
      "evaluation", "value",       "value of the second simplification",
      "stable",     "test",        "truth",
      "demand",     "possible",    "certain",
      "boolean",    "lower",       "upper",
      "retype",     "retype again"};
  static_assert(std::size(names) == check_count);
  return names[static_cast<std::size_t>(check)];
}

bool same_trees(const NODE *a, const NODE *b) {
  if (a->op != b->op || a->type != b->type) return false;
  if ((a->op == ICON || a->op == NAME) && a->u.sym != b->u.sym && a->op == NAME) return false;
  if (a->op == ICON) return a->u.lval == b->u.lval;
  if (!a->left || !b->left) return a->left == b->left;
  if (!same_trees(a->left, b->left)) return false;
  if (!a->right || !b->right) return a->right == b->right;
  return same_trees(a->right, b->right);
}

void check_tree(const World &world, const NODE *tree, Totals &totals,
                std::vector<Finding> &findings) {
  totals.trees += 1;
  Session session{world, tree, totals, findings, has_writes(tree)};
  if (session.writes && !accesses_of(tree, world.pointed_at).ordered) {
    totals.skipped += 1;
    return;
  }
  find_meaning(world, tree, session.writes, session.before);
  totals.evaluations += lane_count;
  if (session.before.evaluation.reason) {
    session.report(Check::EVALUATION,
                   text_of(world, tree) + "  : " + session.before.evaluation.reason);
    return;
  }
  bool meaningful = false;
  for (std::size_t lane = 0; lane < lane_count; ++lane)
    meaningful |= has_meaning(session.before, lane);
  if (!meaningful) {
    totals.skipped += 1;
    return;
  }
  // Only accesses to members are simplified differently at the higher level.
  const int last_level = has_access(tree) ? 2 : 1;
  for (options.opt_level = 1; options.opt_level <= last_level; ++options.opt_level)
    session.run();
  options.opt_level = 1;
}

Finding reduce_finding(const World &world, const NODE *tree, const Finding &finding) {
  Finding smallest = finding;
  NODE *reduced = copy_tree(tree);
  while (reduce_once(world, reduced, finding, smallest)) {
  }
  return smallest;
}

} // namespace velkor::exhaustive
