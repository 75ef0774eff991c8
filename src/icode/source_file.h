// Source file records.
#pragma once

namespace velkor {

// Reads the name behind the record byte and makes it current at file level, where it also goes to
// the output. between_records: not inside a tree; the first such record brings the comment with the
// command line along.
void read_source_file(bool between_records);

} // namespace velkor
