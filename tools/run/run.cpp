#include "run/run.h"

#include "run/compiler.h"
#include "run/interpreter.h"
#include "run/loader.h"
#include "run/machine.h"
#include "run/natives.h"

#include <algorithm>
#include <cstdio>
#include <limits>
#include <new>
#include <pthread.h>

namespace velkor::run {

namespace {

constexpr std::size_t output_buffer_bytes = 1 << 16;
constexpr std::uint32_t largest_memory_megabytes = 3000; // below the handles of functions
constexpr std::uint32_t largest_stack = 16u << 20;
// Deep trees are compiled by recursion, and native routines call back; both need more than the
// usual thread has. Only what is touched costs anything.
constexpr std::size_t host_stack_bytes = std::size_t{1} << 30;

// False when the text could not be written.
bool write_to(const std::function<void(std::string_view)> &sink, std::FILE *file,
              std::string_view text) {
  if (text.empty()) return true;
  if (sink) {
    sink(text);
    return true;
  }
  return std::fwrite(text.data(), 1, text.size(), file) == text.size() && std::fflush(file) == 0;
}

// argv, its strings and the arguments of main in the program's memory.
void prepare_arguments(Machine &machine, const std::vector<std::string> &arguments,
                       std::vector<std::uint32_t> &words) {
  Memory &memory = machine.memory;
  const auto count = static_cast<std::uint32_t>(arguments.size());
  const Address vector = memory.reserve((count + 1) * 4, 4);
  for (std::uint32_t number = 0; number < count; ++number) {
    const std::string &argument = arguments[number];
    const Address text = memory.reserve(static_cast<std::uint32_t>(argument.size()) + 1, 1);
    std::copy(argument.begin(), argument.end(), memory.base() + text);
    memory.write(vector + number * 4, text);
  }
  // The environment is an empty list: the NULL that ends argv.
  words = {count, vector, vector + count * 4};
}

// The routines of atexit, the newest first; they may register more.
void run_exit_routines(Machine &machine) {
  while (!machine.exit_routines.empty()) {
    const Address routine = machine.exit_routines.back();
    machine.exit_routines.pop_back();
    machine.calls.clear();
    machine.nesting = 0;
    machine.stack_top = machine.memory.stack_begin();
    (void)call_function(machine, routine, {});
  }
}

void dump_globals(Machine &machine) {
  std::string text;
  char digits[4];
  for (const auto &[name, object] : machine.program.objects) {
    if (!object.defined || name == "$$" || is_native_object(name)) continue;
    text += name + " =";
    for (std::uint32_t i = 0; i < object.bytes; ++i) {
      std::snprintf(digits, sizeof digits, " %02x", machine.memory.base()[object.address + i]);
      text += digits;
    }
    text += '\n';
  }
  write_output(machine, text);
}

const char *class_name(OperationClass operation_class) {
  constexpr std::array<const char *, operation_class_count> names = {
      "none",     "additive",     "multiplication", "division",    "bitwise",      "shift",
      "floating", "comparison",   "conversion",     "local_reads", "local_writes", "loads",
      "stores",   "block_copies", "branches",       "calls"};
  return names[static_cast<std::size_t>(operation_class)];
}

void collect_counts(const Machine &machine, std::int64_t step_limit, RunCounts &counts) {
  std::array<std::uint64_t, operation_class_count> by_class{};
  for (std::size_t op = 0; op < instruction_table.size(); ++op) {
    by_class[static_cast<std::size_t>(instruction_table[op].first)] += machine.executed[op];
    by_class[static_cast<std::size_t>(instruction_table[op].second)] += machine.executed[op];
  }
  for (std::size_t number = 1; number < operation_class_count; ++number) {
    const auto operation_class = static_cast<OperationClass>(number);
    counts.classes.push_back({class_name(operation_class), by_class[number]});
    // A read of a variable is a leaf of a tree, not an operator.
    if (operation_class != OperationClass::FRAME_READ) counts.operations += by_class[number];
  }
  counts.branches_taken = machine.branches_taken;
  counts.steps = static_cast<std::uint64_t>(step_limit - machine.steps_left);
}

// Runs main and the exit routines; returns the status.
int run_main(Machine &machine, const std::vector<std::uint32_t> &arguments) {
  const auto main_function = machine.program.function_by_name.find("_main");
  if (main_function == machine.program.function_by_name.end())
    throw Fault{"the program has no function 'main'", true};
  const auto initial_values = static_cast<std::int32_t>(machine.code.functions.size()) - 1;
  (void)execute_function(machine, initial_values, machine.stack_top, 0);
  int status = 0;
  try {
    const Address handle = first_function_handle + 4 * static_cast<Address>(main_function->second);
    status = static_cast<int>(call_function(machine, handle, arguments) & 255);
  } catch (const ProgramExit &end) {
    status = end.status;
    if (status == status_aborted) return status;
  }
  run_exit_routines(machine);
  return status;
}

struct Run {
  const file::IcodeFile &file;
  const RunOptions &options;
  RunResult result;
};

void execute(Run &run) {
  const RunOptions &options = run.options;
  const std::uint32_t megabytes =
      std::clamp(options.memory_megabytes, 1u, largest_memory_megabytes);
  Machine machine(megabytes << 20);
  machine.options = &options;
  const std::int64_t step_limit =
      options.max_steps == 0 || options.max_steps > std::numeric_limits<std::int64_t>::max()
          ? std::numeric_limits<std::int64_t>::max()
          : static_cast<std::int64_t>(options.max_steps);
  machine.steps_left = step_limit;
  run.result.file_error = true; // until the program runs
  try {
    load(run.file, machine.program, machine.memory);
    std::vector<std::uint32_t> arguments;
    prepare_arguments(machine, options.arguments, arguments);
    machine.memory.place_stack(std::min(largest_stack, (megabytes << 20) / 4));
    machine.stack_top = machine.memory.stack_begin();
    compile_program(machine.program, machine.memory, machine.code, options.trace_volatile);
    run.result.file_error = false;
    run.result.status = run_main(machine, arguments);
    if (options.dump_globals) dump_globals(machine);
  } catch (const ProgramExit &end) {
    run.result.status = end.status; // from an exit routine
  } catch (const Fault &fault) {
    run.result.status = fault.status;
    run.result.error = fault.message;
  }
  flush_output(machine);
  if (machine.output_failed && run.result.error.empty()) {
    run.result.status = status_error;
    run.result.error = "the output could not be written";
  }
  if (options.count) collect_counts(machine, step_limit, run.result.counts);
}

void *execute_thread(void *argument) {
  Run &run = *static_cast<Run *>(argument);
  try {
    execute(run);
  } catch (const Fault &fault) {
    run.result = {fault.status, fault.message, false, {}};
  } catch (const std::bad_alloc &) {
    run.result = {status_error, "no room left on the host", false, {}};
  }
  return nullptr;
}

} // namespace

void flush_output(Machine &machine) {
  const bool written = write_to(machine.options->output, stdout, machine.output);
  machine.output.clear();
  if (!written) machine.output_failed = true;
}

void write_output(Machine &machine, std::string_view text) {
  machine.output += text;
  if (machine.output.size() >= output_buffer_bytes) flush_output(machine);
}

void write_error_output(Machine &machine, std::string_view text) {
  flush_output(machine);
  (void)write_to(machine.options->error_output, stderr, text); // nowhere to complain
}

RunResult run_program(const file::IcodeFile &file, const RunOptions &options) {
  Run run{file, options, {}};
  pthread_attr_t attributes;
  pthread_t thread;
  pthread_attr_init(&attributes);
  std::size_t stack_bytes = host_stack_bytes;
  int failure = 0;
  do {
    pthread_attr_setstacksize(&attributes, stack_bytes);
    failure = pthread_create(&thread, &attributes, execute_thread, &run);
    stack_bytes /= 2; // a host with tight limits
  } while (failure != 0 && stack_bytes >= (std::size_t{1} << 20));
  pthread_attr_destroy(&attributes);
  if (failure != 0) return {status_error, "no room left on the host", false, {}};
  pthread_join(thread, nullptr);
  return run.result;
}

std::string counts_as_text(const RunCounts &counts) {
  std::string text;
  char line[80];
  const auto add = [&](const char *name, std::uint64_t count) {
    std::snprintf(line, sizeof line, "%-16s %14llu\n", name,
                  static_cast<unsigned long long>(count));
    text += line;
  };
  for (const RunCounts::Entry &entry : counts.classes)
    add(entry.name, entry.count);
  add("branches_taken", counts.branches_taken);
  add("operations", counts.operations);
  add("steps", counts.steps);
  return text;
}

std::string counts_as_json(const RunCounts &counts) {
  std::string text = "{";
  const auto add = [&](const std::string &name, std::uint64_t count) {
    text += (text.size() == 1 ? "\"" : ", \"") + name + "\": " + std::to_string(count);
  };
  for (const RunCounts::Entry &entry : counts.classes)
    add(entry.name, entry.count);
  add("branches_taken", counts.branches_taken);
  add("operations", counts.operations);
  add("steps", counts.steps);
  return text + "}\n";
}

} // namespace velkor::run
