#include "driver/driver.h"

#include "core/failure.h"
#include "core/file_names.h"
#include "core/fun.h"
#include "core/nodes.h"
#include "core/options.h"
#include "core/output.h"
#include "core/product.h"
#include "core/state.h"
#include "core/symbols.h"
#include "core/zones.h"
#include "diag/infix.h"
#include "driver/command_line.h"
#include "driver/pipeline.h"
#include "icode/input.h"
#include "icode/output_file.h"
#include "icode/reader.h"
#include "icode/record_writer.h"
#include "interproc/inline_bodies.h"
#include "interproc/inline_calls.h"
#include "simplify/constant_text.h"
#include "simplify/simplify.h"
#include "simplify/truth.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <string>
#include <sys/resource.h>

namespace velkor {

RunRequests run_requests;

namespace {

constexpr std::size_t longest_name = 255;          // characters of a prompted file name
constexpr std::size_t longest_command_line = 2000; // of it the listing shows

// Thrown by abnormal_end and caught by run_optimizer, and nowhere else.
struct RunFailed {};

bool internal_fault = false; // of the last run

struct Run {
  FileNames names;
  std::string command_line; // the arguments, each with a blank behind it
  bool command_line_written = false;
};

Run run;

void close(std::FILE *&file) {
  if (file) std::fclose(file);
  file = nullptr;
}

void print_banner() {
  print("%s%s\n%s\n", product_line, version_text, maker_line);
}

std::string prompt_for_name() {
  print("\n   Intermediate file [.if]: ");
  std::fflush(stdout);
  std::array<char, longest_name + 1> line{};
  if (!std::fgets(line.data(), static_cast<int>(line.size()), stdin)) return {};
  return std::string(line.data(), std::strcspn(line.data(), "\n"));
}

// Opens a file; on failure says so in the words that its role has.
std::FILE *open_file(const std::string &name, const char *mode, const char *role) {
  std::FILE *file = std::fopen(name.c_str(), mode);
  if (!file) print("\n>> Cannot open %s file : %s, Aborting\n", role, name.c_str());
  return file;
}

bool open_text_files() {
  if (options.opt_level < 3 && options.debug_level == 0) options.info_level = 0;
  if (options.info_level != 0) {
    const std::string name = set_extension(run.names.input_name, ".nfo", true);
    state.info_file = open_file(name, "w", "info");
    if (!state.info_file) return false;
    state.info_on = 1;
    info_print("%s%s\n%s\n", product_line, version_text, maker_line);
  }
  if (options.debug_level != 0) {
    const std::string name = set_extension(run.names.input_name, ".odb", true);
    state.debug_file = open_file(name, "w", "debug");
    if (!state.debug_file) return false;
    state.debug_on = options.debug_level;
  }
  return true;
}

bool take_command_line(int argc, const char *const *argv) {
  if (!parse_command_line(argc, argv, run.names)) return false;
  for (int i = 0; i < argc; ++i)
    run.command_line += std::string(argv[i]) + ' ';
  run.command_line.resize(std::min(run.command_line.size(), longest_command_line));
  if (options.debug_level != 0) {
    options.opt_quiet = 0;
    if (options.info_level == 0) options.info_level = 1;
    if (options.opt_size) print("\n\t*** Optimizing code size, not speed ***\n\n");
  }
  const bool unnamed = run.names.input_name.empty();
  if (unnamed || !options.opt_quiet) print_banner();
  if (unnamed) run.names.input_name = prompt_for_name();
  complete_file_names(run.names);
  state.input_name = run.names.input_name;
  return open_text_files();
}

bool is_input_file(const std::string &name) {
  std::error_code error;
  return std::filesystem::equivalent(name, run.names.input_name, error);
}

bool open_icode_files() {
  std::FILE *in = open_file(run.names.input_name, "rb", "input icode");
  if (!in) return false;
  open_input(in);
  read_first_block();
  if (!check_stamp()) return false;
  if (is_input_file(run.names.output_name)) {
    print("\n>> The output icode file is the input file : %s, Aborting\n",
          run.names.output_name.c_str());
    return false;
  }
  std::FILE *out = open_file(run.names.output_name, "wb", "output icode");
  if (!out) return false;
  open_output(out);
  state.skip_function = false;
  write_stamp();
  return true;
}

// !x, as a test
NODE *negated_test(NODE *condition) {
  return simplify_test(simplify_node(make_node(LOGICAL_NOT, condition, nullptr, INT)));
}

// Settings that follow from others once all are known.
void settle_options() {
  if (options.opt_all_volatile)
    report("\n>>>> Warning: All non-auto lvalues are considered VOLATILE.\n\n");
  if (options.debug_level == 0) options.debug_flag.fill(false);
  if (options.opt_no_alias) {
    options.opt_aliased = 0;
    options.opt_alias_strict = 0;
    options.opt_alias_derefs = 1;
  }
  if (options.opt_level == 0) options.opt_aliased = 1;
  if (options.opt_target_mode == -1) options.opt_target_mode = 0;
  if (options.opt_target_mode > 1)
    print("\n>>>> Warning: unrecognized option: '-v%d'\n\n", options.opt_target_mode);
}

// What the mode of the analysis across functions says about code outside the file.
void prepare_interprocedural_state() {
  if (options.opt_level < 3) options.opt_program_mode = 0;
  const int mode = options.opt_program_mode;
  state.program_is_closed = mode == -1 || mode == 1 || mode == 2;
  state.callers_are_known = mode == -1 || mode == 2 || mode == 3;
  state.main_not_reentered = state.program_is_closed;
  clear_functions();
  state.unknown_fun = fun_find_or_add(" ? ");
  state.pass_number = 0;
}

// The passes over the whole file are not there yet: the highest level does what level 2 does.
void run_function_pipeline() {
  state.pass_number = 0;
  while (read_function()) {
    if (state.function_is_inline) record_inline_definition();
    if (state.skip_function && !(state.cur_fun->flags & FUN_is_suppressed)) read_skipped_function();
    if (!state.skip_function) run_function_passes();
    state.skip_function = false;
    end_of_function();
    state.first_bb = nullptr;
    state.num_blocks = 0;
    clear_local_symbols();
    state.cur_fun = nullptr;
    state.cur_fun_sym = nullptr;
  }
}

void finish_debug_file(const char *text) {
  debug_print("%s", text);
  close(state.debug_file);
  state.debug_on = 0;
}

// The output is complete before the input goes: whatever fails, one of them is there.
void normal_end() {
  close(input.file);
  reserve(0);
  const bool written = std::fclose(output.file) == 0;
  output.file = nullptr;
  if (!written) {
    std::remove(run.names.output_name.c_str());
    report("\n!!! Error: the output icode file cannot be written (disk full?) !!!\n");
    abnormal_end();
  }
  if (options.debug_level == 0 && !run_requests.keep_input)
    std::remove(run.names.input_name.c_str());
  finish_debug_file("\n== END OF DEBUG OUTPUT==\n");
}

bool run_to_the_end(int argc, const char *const *argv) {
  if (!take_command_line(argc, argv)) return false;
  if (!open_icode_files()) return false;
  settle_options();
  if (options.opt_level > 2) options.opt_level = 2;
  clear_symbol_tables();
  init_float_constants();
  negate_for_text = negated_test;
  prepare_interprocedural_state();
  run_function_pipeline();
  normal_end();
  return true;
}

void reset_everything() {
  negate_for_text = nullptr;
  release_all_zones();
  clear_functions();
  clear_symbol_tables();
  clear_inline_calls();
  options = Options{};
  state = State{};
  run = Run{};
}

} // namespace

void abnormal_end() {
  close(input.file);
  if (output.file) {
    close(output.file);
    std::remove(run.names.output_name.c_str());
  }
  finish_debug_file("\n>>>> Optimizer terminated abnormally.\n");
  print("\n>>>> Optimizer terminated abnormally.\n");
  throw RunFailed{};
}

void internal_failure() {
  internal_fault = true;
  abnormal_end();
}

bool last_failure_is_internal() {
  return internal_fault;
}

void write_command_line_comment() {
  if (run.command_line_written || state.skip_function) return;
  run.command_line_written = true;
  write_text(RECORD_COMMENT, ";\t" + run.command_line, 0, 0);
}

void raise_stack_limit() {
  // Linux keeps at least 128 MB free below the main thread's stack.
  constexpr rlim_t wanted = 120u << 20;
  rlimit limit{};
  if (getrlimit(RLIMIT_STACK, &limit) != 0) return;
  if (limit.rlim_cur == RLIM_INFINITY || limit.rlim_cur >= wanted) return;
  limit.rlim_cur =
      limit.rlim_max == RLIM_INFINITY || limit.rlim_max > wanted ? wanted : limit.rlim_max;
  setrlimit(RLIMIT_STACK, &limit);
}

int run_optimizer(int argc, const char *const *argv) {
  reset_everything();
  internal_fault = false;
  bool succeeded = false;
  try {
    succeeded = run_to_the_end(argc, argv);
  } catch (const RunFailed &) {
  }
  close(input.file);
  close(output.file);
  close(state.debug_file);
  close(state.info_file);
  std::fflush(stdout);
  reset_everything();
  return succeeded ? 0 : 1;
}

} // namespace velkor
