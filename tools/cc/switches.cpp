#include "cc/switches.h"

#include "cc/expressions.h"
#include "cc/statements.h"
#include "cc/trees.h"

#include <algorithm>

namespace velkor::cc {

namespace {

constexpr std::int64_t max_range_cases = 4096; // values of one "case a ... b"

struct CaseValue {
  std::int64_t value = 0;
  int label = 0;
};

// The value of a case label as the selector's type sees it.
std::int64_t case_number(const Unit &unit, const Expr *expression, bool is_unsigned) {
  const llvm::APSInt value = expression->EvaluateKnownConstInt(unit.context);
  const std::int64_t wide = value.getExtValue();
  return is_unsigned ? static_cast<std::int64_t>(static_cast<std::uint32_t>(wide))
                     : static_cast<std::int64_t>(static_cast<std::int32_t>(wide));
}

void add_case(Unit &unit, const clang::CaseStmt *label_case, bool is_unsigned,
              std::vector<CaseValue> &values) {
  const int label = new_label(unit, label_case->getCaseLoc());
  unit.function->case_labels[label_case] = label;
  const std::int64_t first = case_number(unit, label_case->getLHS(), is_unsigned);
  const std::int64_t last = label_case->getRHS() != nullptr
                                ? case_number(unit, label_case->getRHS(), is_unsigned)
                                : first;
  if (last - first >= max_range_cases) {
    report_error(unit, label_case->getCaseLoc(),
                 "case range of more than " + std::to_string(max_range_cases) + " values");
    return;
  }
  for (std::int64_t value = first; value <= last; ++value) {
    values.push_back({value, label});
  }
}

} // namespace

int new_label(Unit &unit, SourceLocation where) {
  std::vector<int> &references = unit.function->label_references;
  if (references.size() > max_labels) {
    report_limit(unit, where,
                 "a function needs more than " + std::to_string(max_labels) + " labels");
    return max_labels;
  }
  references.push_back(0);
  return static_cast<int>(references.size() - 1);
}

void place_label(Unit &unit, int label) {
  unit.function->body.emplace_back(file::Label{static_cast<std::int16_t>(label), false});
}

NodeIndex make_label_reference(Unit &unit, int label) {
  ++unit.function->label_references[static_cast<std::size_t>(label)];
  file::Node node;
  node.op = LABELREF;
  node.type = INT;
  node.value = label;
  return unit.file.add(std::move(node));
}

void add_branch(Unit &unit, SourceLocation where, int label) {
  add_statement(unit, where, make_unary(unit, BRANCH, INT, make_label_reference(unit, label)));
}

void add_branch_if_false(Unit &unit, const Expr *condition, int label) {
  const NodeIndex test = value_of(unit, condition);
  add_statement(unit, condition->getExprLoc(),
                make_binary(unit, CBRANCH, INT, test, make_label_reference(unit, label)));
}

void translate_switch(Unit &unit, const clang::SwitchStmt *statement) {
  const SourceLocation where = statement->getSwitchLoc();
  const NodeIndex selector = value_of(unit, statement->getCond());
  const TypeWord type = type_of(unit, selector);
  const bool is_unsigned = is_unsigned_basic(type);
  const int end = new_label(unit, where);
  int otherwise = end;
  bool has_labels = false;
  std::vector<CaseValue> values;
  for (const clang::SwitchCase *label = statement->getSwitchCaseList(); label != nullptr;
       label = label->getNextSwitchCase()) {
    has_labels = true;
    if (const auto *label_case = llvm::dyn_cast<clang::CaseStmt>(label)) {
      add_case(unit, label_case, is_unsigned, values);
    } else {
      otherwise = new_label(unit, label->getKeywordLoc());
      unit.function->case_labels[label] = otherwise;
    }
  }
  if (!has_labels) {
    add_statement(unit, where, selector);
    add_branch(unit, where, end);
  } else {
    std::sort(values.begin(), values.end(),
              [](const CaseValue &a, const CaseValue &b) { return a.value < b.value; });
    NodeIndex cases = no_node;
    const auto append = [&](NodeIndex entry) {
      cases = cases == no_node ? entry : make_binary(unit, COMMA, VOID, cases, entry);
    };
    for (const CaseValue &entry : values) {
      const NodeIndex number = make_integer(unit, type, entry.value);
      append(make_binary(unit, CASE, INT, number, make_label_reference(unit, entry.label)));
    }
    append(make_unary(unit, DEFAULT, INT, make_label_reference(unit, otherwise)));
    add_statement(unit, where, make_binary(unit, SWITCH, INT, selector, cases));
  }
  unit.function->break_labels.push_back(end);
  translate_statement(unit, statement->getBody());
  unit.function->break_labels.pop_back();
  place_label(unit, end);
}

} // namespace velkor::cc
