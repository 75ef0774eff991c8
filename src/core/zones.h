// Memory of the optimizer: two zones, and the free lists on top of the local one.
//
// The global zone holds what lives for the whole run. The local zone holds everything of the
// function being optimized and is given back in one sweep when that function has been written.
// Nothing is freed singly but through the free lists of five small record types.
#pragma once

#include <cstddef>
#include <cstdint>

namespace velkor {

struct NODE;

// Memory of the global zone (zone 0) or of the local zone (any other value, so that a symbol's
// lexical level can be passed). Uninitialized; aligned for every record. Fatal when there is none.
[[nodiscard]] void *zalloc(int zone, std::size_t bytes);

// Memory of the local zone: valid until end_of_function().
[[nodiscard]] void *lalloc(std::size_t bytes);

// In debug runs reports on free lists and memory; then drops the local zone and the free lists.
// Called once after each function, also for functions that were read but not written.
void end_of_function();

// Drops both zones without a report: a run has ended, the next may begin in the same process.
void release_all_zones();

// Records of the five recycled types. take_* pops the free list, else allocates locally; the fields
// are undefined. give_* pushes a record; using it afterwards is a fault that checked builds see.
struct LIST;
struct EDGE;
struct SYMLIST;
struct SUBRANGE;
[[nodiscard]] NODE *take_node();
[[nodiscard]] LIST *take_list();
[[nodiscard]] EDGE *take_edge();
[[nodiscard]] SYMLIST *take_symlist();
[[nodiscard]] SUBRANGE *take_subrange();
void give_node(NODE *node);
void give_list(LIST *cell);
void give_edge(EDGE *cell);
void give_symlist(SYMLIST *cell);
void give_subrange(SUBRANGE *cell);

// Figures over the run, in bytes and calls.
struct ZoneStatistics {
  std::size_t largest_global_request = 0;
  std::size_t largest_local_request = 0;
  std::size_t global_bytes = 0;
  std::size_t local_bytes = 0; // of the current function, as the maximum below
  std::size_t max_local_bytes = 0;
  std::size_t global_calls = 0;
  std::size_t local_calls = 0;
  std::size_t max_local_calls = 0;
  std::size_t max_fragmentation = 0;
};
[[nodiscard]] const ZoneStatistics &zone_statistics();

// The buffers of the local zone, newest first: sizes in bytes. For tests.
struct BufferInfo {
  std::size_t capacity;
  std::size_t used;
};
[[nodiscard]] int local_buffer_count();
[[nodiscard]] BufferInfo local_buffer(int position);

} // namespace velkor
