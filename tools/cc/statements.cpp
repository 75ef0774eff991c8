#include "cc/statements.h"

#include "cc/expressions.h"
#include "cc/initializers.h"
#include "cc/places.h"
#include "cc/switches.h"
#include "cc/symbols.h"
#include "cc/trees.h"
#include "cc/types.h"

#include "icode/format.h"

#include <optional>

namespace velkor::cc {

namespace {

void add_marker(Unit &unit, MarkerKind kind) {
  unit.function->body.emplace_back(file::Marker{kind, 0});
}

// Opens a scope for a block's declarations if it has any. Returns whether it did.
bool open_scope(Unit &unit, const clang::Stmt *block, bool has_declarations) {
  if (!has_declarations) {
    return false;
  }
  Function &function = *unit.function;
  if (2 + function.scope_sizes.size() >= max_scope_level) {
    report_limit(unit, block->getBeginLoc(),
                 "blocks nest deeper than " + std::to_string(max_scope_level) + " scopes");
    return false;
  }
  add_marker(unit, MARKER_BB);
  function.scope_sizes.push_back(0);
  return true;
}

void close_scope(Unit &unit, bool opened) {
  if (opened) {
    add_marker(unit, MARKER_EB);
    unit.function->scope_sizes.pop_back();
  }
}

// The declarations that a statement of a block holds, behind any labels.
const clang::DeclStmt *declarations_in(const clang::Stmt *statement) {
  for (;;) {
    if (const auto *label = llvm::dyn_cast_or_null<clang::LabelStmt>(statement)) {
      statement = label->getSubStmt();
    } else if (const auto *label_case = llvm::dyn_cast_or_null<clang::SwitchCase>(statement)) {
      statement = label_case->getSubStmt();
    } else {
      return llvm::dyn_cast_or_null<clang::DeclStmt>(statement);
    }
  }
}

bool declares_variables(const clang::Stmt *statement) {
  const clang::DeclStmt *declarations = declarations_in(statement);
  if (declarations == nullptr) {
    return false;
  }
  for (const clang::Decl *decl : declarations->decls()) {
    const auto *variable = llvm::dyn_cast<clang::VarDecl>(decl);
    if (variable != nullptr && !variable->hasExternalStorage()) {
      return true;
    }
  }
  return false;
}

void declare_variable(Unit &unit, const clang::VarDecl *variable) {
  const SourceLocation where = variable->getLocation();
  check_attributes(unit, variable);
  file::Symbol symbol;
  if (variable->isStaticLocal()) {
    symbol = make_symbol(unit, static_local_name(unit, variable->getName()), variable->getType(),
                         C_STAT, is_constant_object(variable), where);
    if (const Expr *value = variable->getInit()) {
      // The initial value may hold the address of the object itself.
      const SymbolReference reference = add_local(unit, symbol, where);
      unit.function->variables[variable->getCanonicalDecl()] = reference;
      set_static_value(unit, symbol, variable->getType(), value, where);
      file::Symbol &record = reference.level == 2
                                 ? unit.function->locals[static_cast<std::size_t>(reference.index)]
                                 : std::get<file::Symbol>(unit.function->body.back());
      symbol.name = record.name;
      record = std::move(symbol);
      return;
    }
  } else {
    const bool in_register = variable->getStorageClass() == clang::SC_Register;
    symbol = make_symbol(unit, underscored(variable->getName()), variable->getType(),
                         in_register ? C_REG : C_AUTO, false, where);
  }
  unit.function->variables[variable->getCanonicalDecl()] =
      add_local(unit, std::move(symbol), where);
}

void declare_statement_variables(Unit &unit, const clang::Stmt *statement) {
  const clang::DeclStmt *declarations = declarations_in(statement);
  if (declarations == nullptr) {
    return;
  }
  for (const clang::Decl *decl : declarations->decls()) {
    const auto *variable = llvm::dyn_cast<clang::VarDecl>(decl);
    if (variable != nullptr && !variable->hasExternalStorage()) {
      declare_variable(unit, variable);
    }
  }
}

void initialize_variables(Unit &unit, const clang::DeclStmt *declarations) {
  for (const clang::Decl *decl : declarations->decls()) {
    const auto *variable = llvm::dyn_cast<clang::VarDecl>(decl);
    if (variable == nullptr || !variable->hasLocalStorage() || variable->getInit() == nullptr) {
      continue;
    }
    const SymbolReference symbol = variable_reference(unit, variable);
    const SourceLocation where = variable->getLocation();
    for (const NodeIndex tree :
         initializing_trees(unit, symbol, variable->getType(), variable->getInit(), where)) {
      add_statement(unit, where, tree);
    }
  }
}

void translate_block(Unit &unit, const clang::CompoundStmt *block) {
  const bool opened =
      open_scope(unit, block, llvm::any_of(block->body(), [](const clang::Stmt *statement) {
                   return declares_variables(statement);
                 }));
  declare_variables(unit, block);
  translate_body(unit, block);
  close_scope(unit, opened);
}

void translate_if(Unit &unit, const clang::IfStmt *statement) {
  const int otherwise = new_label(unit, statement->getIfLoc());
  add_branch_if_false(unit, statement->getCond(), otherwise);
  translate_statement(unit, statement->getThen());
  if (statement->getElse() == nullptr) {
    place_label(unit, otherwise);
    return;
  }
  const int end = new_label(unit, statement->getIfLoc());
  add_branch(unit, statement->getElseLoc(), end);
  place_label(unit, otherwise);
  translate_statement(unit, statement->getElse());
  place_label(unit, end);
}

// The truth of a condition that is known and has no effects.
std::optional<bool> known_truth(const Unit &unit, const Expr *condition) {
  bool truth = false;
  if (condition == nullptr) {
    return true;
  }
  if (condition->HasSideEffects(unit.context) ||
      !condition->EvaluateAsBooleanCondition(truth, unit.context)) {
    return std::nullopt;
  }
  return truth;
}

// Nodes of an expression, or limit if there are more or if it calls something.
int expression_cost(const clang::Stmt *expression, int limit) {
  if (expression == nullptr) {
    return 0;
  }
  if (llvm::isa<clang::CallExpr>(expression) || llvm::isa<clang::StmtExpr>(expression) ||
      llvm::isa<clang::CompoundLiteralExpr>(expression)) {
    return limit;
  }
  int cost = 1;
  for (const clang::Stmt *child : expression->children()) {
    cost += expression_cost(child, limit - cost);
    if (cost >= limit) {
      return limit;
    }
  }
  return cost;
}

// Whether control can enter the statement by a label in it: of a goto or of a switch around it.
bool has_entry(const clang::Stmt *statement, bool inside_switch) {
  if (statement == nullptr || llvm::isa<Expr>(statement)) {
    return false;
  }
  if (llvm::isa<clang::LabelStmt>(statement) ||
      (llvm::isa<clang::SwitchCase>(statement) && !inside_switch)) {
    return true;
  }
  inside_switch = inside_switch || llvm::isa<clang::SwitchStmt>(statement);
  return llvm::any_of(statement->children(),
                      [&](const clang::Stmt *child) { return has_entry(child, inside_switch); });
}

constexpr int guard_cost_limit = 40; // nodes of clang's tree, in which each conversion is one

bool wants_guard(const Expr *condition, const clang::Stmt *body) {
  return expression_cost(condition, guard_cost_limit) < guard_cost_limit && !has_entry(body, false);
}

// while and for: the test stands once in front and once at the bottom, so that the loop is entered
// at its body. Costly tests, and loops that are entered from elsewhere, have it at the top alone.
void translate_loop(Unit &unit, SourceLocation where, const Expr *condition, const Expr *increment,
                    const clang::Stmt *body) {
  const int head = new_label(unit, where);
  const int next = new_label(unit, where);
  const int end = new_label(unit, where);
  const std::optional<bool> truth = known_truth(unit, condition);
  const bool endless = truth.has_value() && *truth;
  const bool guarded = !endless && wants_guard(condition, body);
  if (guarded) {
    add_branch_if_false(unit, condition, end);
  }
  place_label(unit, head);
  if (!endless && !guarded) {
    add_branch_if_false(unit, condition, end);
  }
  unit.function->break_labels.push_back(end);
  unit.function->continue_labels.push_back(next);
  translate_statement(unit, body);
  unit.function->break_labels.pop_back();
  unit.function->continue_labels.pop_back();
  place_label(unit, next);
  if (increment != nullptr) {
    add_statement(unit, increment->getExprLoc(), effects_of(unit, increment));
  }
  if (guarded) {
    add_branch_if_false(unit, condition, end);
  }
  add_branch(unit, where, head);
  place_label(unit, end);
}

void translate_do(Unit &unit, const clang::DoStmt *statement) {
  const SourceLocation where = statement->getWhileLoc();
  const int head = new_label(unit, where);
  const int next = new_label(unit, where);
  const int end = new_label(unit, where);
  place_label(unit, head);
  unit.function->break_labels.push_back(end);
  unit.function->continue_labels.push_back(next);
  translate_statement(unit, statement->getBody());
  unit.function->break_labels.pop_back();
  unit.function->continue_labels.pop_back();
  place_label(unit, next);
  const std::optional<bool> truth = known_truth(unit, statement->getCond());
  if (!truth.has_value()) {
    add_branch_if_false(unit, statement->getCond(), end);
  }
  if (truth.value_or(true)) {
    add_branch(unit, where, head);
  }
  place_label(unit, end);
}

void translate_for(Unit &unit, const clang::ForStmt *statement) {
  const bool opened = open_scope(unit, statement, declares_variables(statement->getInit()));
  if (statement->getInit() != nullptr) {
    declare_statement_variables(unit, statement->getInit());
    translate_statement(unit, statement->getInit());
  }
  translate_loop(unit, statement->getForLoc(), statement->getCond(), statement->getInc(),
                 statement->getBody());
  close_scope(unit, opened);
}

void translate_return(Unit &unit, const clang::ReturnStmt *statement) {
  const SourceLocation where = statement->getReturnLoc();
  const SymbolReference symbol = slot_reference(unit, unit.function->slot);
  const Expr *value = statement->getRetValue();
  if (value == nullptr || value->getType()->isVoidType()) {
    if (value != nullptr) {
      add_statement(unit, where, effects_of(unit, value));
    }
    add_statement(unit, where, make_unary(unit, URETURN, VOID, make_name(unit, symbol)));
    return;
  }
  const NodeIndex name = make_name(unit, symbol);
  const NodeIndex result = value_of(unit, value);
  add_statement(unit, where, make_binary(unit, RETURN, underived(symbol.stype), name, result));
}

void translate_assembly(Unit &unit, const clang::AsmStmt *statement) {
  const SourceLocation where = statement->getAsmLoc();
  const auto *assembly = llvm::dyn_cast<clang::GCCAsmStmt>(statement);
  if (assembly == nullptr ||
      assembly->getNumInputs() + assembly->getNumOutputs() + assembly->getNumLabels() != 0) {
    report_error(unit, where, "asm with operands cannot be expressed by the target");
    return;
  }
  const std::string text = assembly->getAsmString()->getString().str();
  if (text.size() > max_text_bytes || text.find('\0') != std::string::npos) {
    report_error(unit, where,
                 "asm text is longer than " + std::to_string(max_text_bytes) + " characters");
    return;
  }
  if (!text.empty()) {
    const auto line = static_cast<std::int16_t>(line_of(unit, where));
    unit.function->body.emplace_back(file::Assembly{line, line, text});
  }
}

int goto_label(Unit &unit, const clang::LabelDecl *label) {
  int &number = unit.function->labels[label];
  if (number == 0) {
    number = new_label(unit, label->getLocation());
  }
  return number;
}

void translate_expression(Unit &unit, const Expr *expression) {
  const auto *block = llvm::dyn_cast<clang::StmtExpr>(expression->IgnoreParens());
  if (block != nullptr) {
    // Nobody takes the value of a statement expression that is a statement.
    translate_block(unit, block->getSubStmt());
    return;
  }
  add_statement(unit, expression->getExprLoc(), effects_of(unit, expression));
}

// Steps over the labels in front of a statement and places them.
const clang::Stmt *past_labels(Unit &unit, const clang::Stmt *statement) {
  for (;;) {
    if (const auto *label = llvm::dyn_cast<clang::LabelStmt>(statement)) {
      place_label(unit, goto_label(unit, label->getDecl()));
      statement = label->getSubStmt();
    } else if (const auto *label_case = llvm::dyn_cast<clang::SwitchCase>(statement)) {
      place_label(unit, unit.function->case_labels.lookup(label_case));
      statement = label_case->getSubStmt();
    } else if (const auto *attributed = llvm::dyn_cast<clang::AttributedStmt>(statement)) {
      statement = attributed->getSubStmt();
    } else {
      return statement;
    }
  }
}

} // namespace

void add_statement(Unit &unit, SourceLocation where, NodeIndex tree) {
  const auto line = static_cast<std::int16_t>(line_of(unit, where));
  unit.function->body.emplace_back(file::Statement{line, line, tree});
}

void declare_variables(Unit &unit, const clang::Stmt *block) {
  for (const clang::Stmt *statement : block->children()) {
    declare_statement_variables(unit, statement);
  }
}

void translate_body(Unit &unit, const clang::CompoundStmt *body) {
  for (const clang::Stmt *statement : body->body()) {
    translate_statement(unit, statement);
  }
}

void translate_statement(Unit &unit, const clang::Stmt *statement) {
  statement = past_labels(unit, statement);
  switch (statement->getStmtClass()) {
  case clang::Stmt::NullStmtClass: return;
  case clang::Stmt::CompoundStmtClass:
    translate_block(unit, llvm::cast<clang::CompoundStmt>(statement));
    return;
  case clang::Stmt::DeclStmtClass:
    initialize_variables(unit, llvm::cast<clang::DeclStmt>(statement));
    return;
  case clang::Stmt::IfStmtClass: translate_if(unit, llvm::cast<clang::IfStmt>(statement)); return;
  case clang::Stmt::WhileStmtClass: {
    const auto *loop = llvm::cast<clang::WhileStmt>(statement);
    translate_loop(unit, loop->getWhileLoc(), loop->getCond(), nullptr, loop->getBody());
    return;
  }
  case clang::Stmt::DoStmtClass: translate_do(unit, llvm::cast<clang::DoStmt>(statement)); return;
  case clang::Stmt::ForStmtClass:
    translate_for(unit, llvm::cast<clang::ForStmt>(statement));
    return;
  case clang::Stmt::SwitchStmtClass:
    translate_switch(unit, llvm::cast<clang::SwitchStmt>(statement));
    return;
  case clang::Stmt::GotoStmtClass: {
    const auto *jump = llvm::cast<clang::GotoStmt>(statement);
    add_branch(unit, jump->getGotoLoc(), goto_label(unit, jump->getLabel()));
    return;
  }
  case clang::Stmt::BreakStmtClass:
    add_branch(unit, statement->getBeginLoc(), unit.function->break_labels.back());
    return;
  case clang::Stmt::ContinueStmtClass:
    add_branch(unit, statement->getBeginLoc(), unit.function->continue_labels.back());
    return;
  case clang::Stmt::ReturnStmtClass:
    translate_return(unit, llvm::cast<clang::ReturnStmt>(statement));
    return;
  case clang::Stmt::GCCAsmStmtClass:
  case clang::Stmt::MSAsmStmtClass:
    translate_assembly(unit, llvm::cast<clang::AsmStmt>(statement));
    return;
  default:
    if (const auto *expression = llvm::dyn_cast<Expr>(statement)) {
      translate_expression(unit, expression);
      return;
    }
    report_error(unit, statement->getBeginLoc(),
                 std::string("this statement (") + statement->getStmtClassName() +
                     ") cannot be expressed by the target");
  }
}

void drop_unused_labels(Function &function) {
  std::erase_if(function.body, [&](const file::Record &record) {
    const auto *label = std::get_if<file::Label>(&record);
    return label != nullptr &&
           function.label_references[static_cast<std::size_t>(label->index)] == 0;
  });
}

} // namespace velkor::cc
