// The words of the text form: names, strings, numbers, types, opcodes, and the cursor that reads
// them off a line.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "core/types.h"

namespace velkor::text {

// Printing. Each appends to out.
void print_name(std::string &out, std::string_view name);                // bare or in single quotes
void print_string(std::string &out, std::string_view bytes, char quote); // with C escapes
void print_type(std::string &out, TypeWord type);
void print_hex(std::string &out, std::uint32_t value);
void print_opcode(std::string &out, std::uint8_t op);

// True when the text reads as a number with a point or an exponent, so that it needs no quotes.
[[nodiscard]] bool is_float_text(std::string_view text);

// The number of an opcode from its word (`add`, `op200`), or nothing.
[[nodiscard]] std::optional<std::uint8_t> find_opcode(std::string_view word);

// The number of a storage class from its word (`static`, `class99`), or nothing.
[[nodiscard]] std::optional<std::uint8_t> find_storage_class(std::string_view word);
void print_storage_class(std::string &out, std::uint8_t storage_class);

// Reads words off one line. The first error stays, and every routine behind it returns an empty
// result, so that callers may test failed() late.
class Cursor {
public:
  explicit Cursor(std::string_view line) : line_(line) {}

  [[nodiscard]] bool failed() const { return !error_.empty(); }
  // "column 5: expected ..., found ..."
  [[nodiscard]] const std::string &error() const { return error_; }
  // An error at the cursor; the first one stays.
  void expected(std::string_view what);
  // An error that is no matter of what stands at the cursor.
  void fail(std::string_view what);

  void skip_blanks();               // and a comment, which ends the line
  [[nodiscard]] bool at_end();      // behind blanks and comment
  [[nodiscard]] char peek();        // next character behind blanks, NUL at the end
  [[nodiscard]] char next() const;  // next character, no blanks skipped, NUL at the end
  [[nodiscard]] char after() const; // the one behind next()
  [[nodiscard]] bool accept(char character);
  [[nodiscard]] bool accept_word(std::string_view word);
  void require(char character);

  // Letters, digits, `_`, `.` and `$`; empty when none stand there. No error.
  [[nodiscard]] std::string_view peek_word();
  void skip(std::size_t count) { position_ += count; }

  // A number with its sign, decimal or 0x..., within the limits.
  [[nodiscard]] std::int64_t integer(std::int64_t low, std::int64_t high);
  // A number of 32 bits, signed or unsigned, as its bits.
  [[nodiscard]] std::uint32_t bits32();
  [[nodiscard]] std::string name();             // bare or quoted
  [[nodiscard]] std::string string(char quote); // quoted, with C escapes
  [[nodiscard]] TypeWord type(TypeWord highest);
  // The characters of a number as they stand, sign, point and exponent and all.
  [[nodiscard]] std::string_view number_text();

private:
  std::string_view line_;
  std::size_t position_ = 0;
  std::string error_;
};

} // namespace velkor::text
