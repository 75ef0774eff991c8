// The state of one compilation: what is known of the C file and what has been made of it so far.
//
// Everything of file level is a slot until the end. Trees and symbol records refer to a slot by its
// number (level 0, index = slot); assemble() then decides the order of the records and replaces the
// slot numbers by positions in the file. References to symbols inside a function are final at once.
#pragma once

#include "core/opcodes.h"
#include "core/storage_classes.h"
#include "core/types.h"
#include "file/icode_file.h"

#include "clang/AST/ASTContext.h"
#include "clang/AST/Decl.h"
#include "clang/AST/Expr.h"
#include "clang/AST/Stmt.h"
#include "clang/Basic/Diagnostic.h"
#include "llvm/ADT/DenseMap.h"

#include <map>
#include <memory>
#include <set>
#include <string>
#include <vector>

namespace velkor::cc {

using clang::Expr;
using clang::QualType;
using clang::SourceLocation;
using file::no_node;
using file::NodeIndex;

// Marks of a function's symbol.
inline constexpr std::uint16_t marked_inline = 4;
inline constexpr std::uint16_t without_own_copy = 8; // where all its calls are replaced

inline constexpr int max_file_symbols = 32767;
inline constexpr int max_labels = 29999;
inline constexpr int max_scope_level = 49;
inline constexpr int max_literal_bytes = 4000; // of an SCON, the NUL included
inline constexpr int max_name_bytes = 255;
inline constexpr int max_line = 32767;
inline constexpr int max_direct_leaves = 8; // scalars of a local aggregate that are set one by one

enum class SlotKind { TAG, MEMBER, VARIABLE, FUNCTION };

// A symbol of file level. symbol.tag_index holds a slot number until assembly.
struct Slot {
  SlotKind kind = SlotKind::VARIABLE;
  file::Symbol symbol;
  bool complete = false;      // of a tag: it has a record; else it is known by name only
  std::vector<int> members;   // of a tag: the slots of its members, in order
  int definition = -1;        // of a function: place of its body in Unit::functions
  int index = -1;             // position of the (defining) record in the file
  int declaration_index = -1; // position of the declaration ahead of it, if there is one
  SourceLocation where;
};

// How trees name a symbol: level and index as in the file (level 0: a slot), and its words.
struct SymbolReference {
  std::int16_t level = 0;
  std::int16_t index = 0;
  TypeWord stype = 0;
  std::uint32_t squal = 0;
};

// The function that is being translated, and what is left of it for assembly.
struct Function {
  const clang::FunctionDecl *decl = nullptr;
  int slot = -1;
  int first_line = 0;
  int last_line = 0;
  std::vector<file::Symbol> parameters; // level 1
  std::vector<file::Symbol> locals;     // level 2: homes, outermost locals, temporaries
  std::vector<file::Record> body;
  std::vector<std::int16_t> scope_sizes; // symbols so far in each open scope of level 3 and deeper
  std::set<std::string> names;           // of its symbols of level 2 and deeper
  llvm::DenseMap<const clang::VarDecl *, SymbolReference> variables;
  llvm::DenseMap<const clang::LabelDecl *, int> labels;
  llvm::DenseMap<const clang::SwitchCase *, int> case_labels;
  llvm::DenseMap<const clang::OpaqueValueExpr *, SymbolReference> common_values;
  std::vector<int> label_references; // by label index; entry 0 is not used
  std::vector<int> break_labels;
  std::vector<int> continue_labels;
  int temporaries = 0;
};

struct Unit {
  Unit(clang::ASTContext &ast, clang::DiagnosticsEngine &reports)
      : context(ast), diagnostics(reports) {}

  clang::ASTContext &context;
  clang::DiagnosticsEngine &diagnostics;
  file::IcodeFile file;
  std::vector<Slot> slots;
  std::map<std::string, int> linked_slots; // variables and functions of file level, by C name
  std::map<std::string, const clang::VarDecl *> variable_definitions;
  llvm::DenseMap<const clang::RecordDecl *, int> tag_slots;
  llvm::DenseMap<const clang::FieldDecl *, int> member_slots;
  llvm::DenseMap<const clang::CompoundLiteralExpr *, int> literal_slots;
  llvm::DenseMap<const clang::Type *, int> array_image_tags;
  std::set<std::string> names; // of file level, with the underscore in front
  std::set<std::string> tag_names;
  std::vector<std::unique_ptr<Function>> functions;
  Function *function = nullptr; // the one that is being translated; null outside
  std::set<std::pair<unsigned, std::string>> reported;
  int anonymous_tags = 0;
  int images = 0;
};

// Reports an error of the program at where, through clang's diagnostics. The same message for the
// same place is given once.
void report_error(Unit &unit, SourceLocation where, const std::string &message);

// The same for a limit of the format, which one report tells of however often it is met.
void report_limit(Unit &unit, SourceLocation where, const std::string &message);

// Physical line of where, where macros are expanded; at most max_line.
[[nodiscard]] int line_of(const Unit &unit, SourceLocation where);

} // namespace velkor::cc
