#include "cc/compile.h"

#include "cc/assemble.h"
#include "cc/embedded_headers.h"
#include "cc/functions.h"
#include "cc/initializers.h"
#include "cc/symbols.h"
#include "cc/types.h"

#include "clang/AST/ASTConsumer.h"
#include "clang/Basic/FileManager.h"
#include "clang/Basic/SourceManager.h"
#include "clang/Frontend/CompilerInstance.h"
#include "clang/Frontend/FrontendAction.h"
#include "clang/Tooling/Tooling.h"
#include "llvm/Support/VirtualFileSystem.h"

#include <iostream>

namespace velkor::cc {

namespace {

// Reports message at where unless it has been reported under this key.
void report_once(Unit &unit, unsigned key, SourceLocation where, const std::string &message) {
  if (unit.reported.emplace(key, message).second) {
    const unsigned id = unit.diagnostics.getCustomDiagID(clang::DiagnosticsEngine::Error, "%0");
    unit.diagnostics.Report(where, id) << message;
  }
}

} // namespace

void report_error(Unit &unit, SourceLocation where, const std::string &message) {
  report_once(unit, where.getRawEncoding(), where, message);
}

void report_limit(Unit &unit, SourceLocation where, const std::string &message) {
  report_once(unit, 0, where, message);
}

int line_of(const Unit &unit, SourceLocation where) {
  const clang::SourceManager &sources = unit.context.getSourceManager();
  return static_cast<int>(std::min<unsigned>(sources.getExpansionLineNumber(where), max_line));
}

namespace {

constexpr const char *header_directory = "/velkor/include";

bool is_wanted(const clang::FunctionDecl *function) {
  if (!function->isThisDeclarationADefinition()) {
    return false;
  }
  if (!function->isInlined()) {
    return true;
  }
  return llvm::any_of(function->redecls(),
                      [](const clang::FunctionDecl *decl) { return decl->isReferenced(); }) ||
         function->isInlineDefinitionExternallyVisible();
}

void find_variable_definitions(Unit &unit) {
  for (const clang::Decl *decl : unit.context.getTranslationUnitDecl()->decls()) {
    const auto *variable = llvm::dyn_cast<clang::VarDecl>(decl);
    if (variable == nullptr) {
      continue;
    }
    const clang::VarDecl *definition = variable->getDefinition();
    if (definition == nullptr) {
      definition = variable->getActingDefinition();
    }
    if (definition != nullptr) {
      unit.variable_definitions[variable->getName().str()] = definition;
    }
  }
}

void translate_variable(Unit &unit, const clang::VarDecl *variable) {
  const auto found = unit.variable_definitions.find(variable->getName().str());
  if (found == unit.variable_definitions.end() || found->second != variable) {
    return;
  }
  const int slot = variable_slot(unit, variable);
  const Expr *value = variable->getInit();
  if (value == nullptr) {
    return;
  }
  file::Symbol symbol = unit.slots[slot].symbol;
  set_static_value(unit, symbol, variable->getType(), value, variable->getLocation());
  unit.slots[slot].symbol = std::move(symbol);
}

void translate_file(Unit &unit) {
  reserve_names(unit);
  find_variable_definitions(unit);
  for (const clang::Decl *decl : unit.context.getTranslationUnitDecl()->decls()) {
    if (const auto *variable = llvm::dyn_cast<clang::VarDecl>(decl)) {
      translate_variable(unit, variable);
    } else if (const auto *function = llvm::dyn_cast<clang::FunctionDecl>(decl)) {
      if (is_wanted(function)) {
        translate_function(unit, function);
      }
    } else if (llvm::isa<clang::FileScopeAsmDecl>(decl)) {
      report_error(unit, decl->getLocation(),
                   "asm outside functions cannot be expressed by the target");
    }
  }
}

class Consumer : public clang::ASTConsumer {
public:
  Consumer(clang::CompilerInstance &compiler, const CompileOptions &options, bool &written)
      : compiler_(compiler), options_(options), written_(written) {}

  void HandleTranslationUnit(clang::ASTContext &context) override {
    clang::DiagnosticsEngine &diagnostics = compiler_.getDiagnostics();
    if (diagnostics.hasErrorOccurred()) {
      return;
    }
    Unit unit(context, diagnostics);
    translate_file(unit);
    if (!diagnostics.hasErrorOccurred()) {
      assemble(unit, options_.input);
    }
    if (diagnostics.hasErrorOccurred()) {
      return;
    }
    const std::string failure = file::write_file(options_.output, unit.file);
    if (!failure.empty()) {
      std::cerr << "velkor-cc: error: " << options_.output << ": " << failure << "\n";
      return;
    }
    written_ = true;
  }

private:
  clang::CompilerInstance &compiler_;
  const CompileOptions &options_;
  bool &written_;
};

class Action : public clang::ASTFrontendAction {
public:
  Action(const CompileOptions &options, bool &written) : options_(options), written_(written) {}

  std::unique_ptr<clang::ASTConsumer> CreateASTConsumer(clang::CompilerInstance &compiler,
                                                        llvm::StringRef) override {
    return std::make_unique<Consumer>(compiler, options_, written_);
  }

private:
  const CompileOptions &options_;
  bool &written_;
};

// The command line that makes clang see the target: 32 bits, two's complement that wraps, 64-bit
// long double, our own headers and no others.
std::vector<std::string> clang_arguments(const CompileOptions &options) {
  std::vector<std::string> arguments = {"velkor-cc",
                                        "-fsyntax-only",
                                        "-target",
                                        "i386-unknown-linux-gnu",
                                        "-x",
                                        "c",
                                        "-std=gnu99",
                                        "-ffreestanding",
                                        "-fwrapv",
                                        "-mlong-double-64",
                                        "-fbracket-depth=20000",
                                        "-ferror-limit=20",
                                        "-w",
                                        "-nostdinc",
                                        "-D__VELKOR__=1"};
  arguments.insert(arguments.end(), options.preprocessor.begin(), options.preprocessor.end());
  arguments.push_back("-isystem");
  arguments.push_back(header_directory);
  arguments.push_back(options.input);
  return arguments;
}

} // namespace

int compile(const CompileOptions &options) {
  auto headers = llvm::makeIntrusiveRefCnt<llvm::vfs::InMemoryFileSystem>();
  for (const EmbeddedHeader &header : embedded_headers()) {
    headers->addFile(std::string(header_directory) + "/" + header.name, 0,
                     llvm::MemoryBuffer::getMemBuffer(header.text));
  }
  auto files =
      llvm::makeIntrusiveRefCnt<llvm::vfs::OverlayFileSystem>(llvm::vfs::getRealFileSystem());
  files->pushOverlay(headers);
  auto manager = llvm::makeIntrusiveRefCnt<clang::FileManager>(clang::FileSystemOptions(), files);
  bool written = false;
  clang::tooling::ToolInvocation invocation(
      clang_arguments(options), std::make_unique<Action>(options, written), manager.get());
  const bool clean = invocation.run();
  return clean && written ? 0 : 1;
}

} // namespace velkor::cc
