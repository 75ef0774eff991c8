#include "core/zones.h"

#include "core/failure.h"
#include "core/output.h"
#include "core/records.h"
#include "core/state.h"

#include <algorithm>
#include <cstdlib>
#include <vector>

#if defined(__SANITIZE_ADDRESS__)
#include <sanitizer/asan_interface.h>
#endif

namespace velkor {
namespace {

constexpr std::size_t standard_buffer = 32768; // bytes
constexpr int buffers_searched = 8;
constexpr std::size_t record_alignment = alignof(std::max_align_t) > 8 ? 8 : alignof(void *);

struct BUFFER {
  BUFFER *next;
  char *base;
  std::size_t capacity; // bytes
  std::size_t used;
};

struct FREE_CELL {
  FREE_CELL *next;
};

struct ZoneState {
  BUFFER *buffers = nullptr;
  NODE *free_NODE_list = nullptr;
  FREE_CELL *free_LIST_list = nullptr;
  FREE_CELL *free_EDGE_list = nullptr;
  FREE_CELL *free_SYMLIST_list = nullptr;
  FREE_CELL *free_SUBRANGE_list = nullptr;
  ZoneStatistics statistics;
};

ZoneState zones;
std::vector<void *> global_pieces; // so that a run can be ended inside a living process

// Checked builds make memory that nobody owns unreadable, so that its use is seen at once.
void poison([[maybe_unused]] const void *memory, [[maybe_unused]] std::size_t bytes) {
#if defined(__SANITIZE_ADDRESS__)
  ASAN_POISON_MEMORY_REGION(memory, bytes);
#endif
}
void unpoison([[maybe_unused]] const void *memory, [[maybe_unused]] std::size_t bytes) {
#if defined(__SANITIZE_ADDRESS__)
  ASAN_UNPOISON_MEMORY_REGION(memory, bytes);
#endif
}

std::size_t aligned(std::size_t bytes) {
  return (bytes + record_alignment - 1) & ~(record_alignment - 1);
}

bool serves(const BUFFER *buffer, std::size_t bytes) {
  const std::size_t start = aligned(buffer->used);
  return start <= buffer->capacity && buffer->capacity - start >= bytes;
}

[[noreturn]] void local_zone_failure(std::size_t bytes) {
  debug_print("\n>>>ERROR - ZALLOC_NEW_BUFFER(%d) ", static_cast<int>(bytes));
  debug_print("IS OUT OF MEMORY - OPTIMIZER ABORTED\n");
  print("\n>>>ERROR - OUT OF MEMORY - OPTIMIZER ABORTED\n");
  abnormal_end();
}

// A buffer of 32768 bytes, or of exactly the request where that is more than half of it. When the
// system has not that much, half of it is tried, down to the request itself.
BUFFER *new_buffer(std::size_t bytes) {
  auto *buffer = static_cast<BUFFER *>(std::malloc(sizeof(BUFFER)));
  if (!buffer) local_zone_failure(bytes);
  std::size_t wanted = 2 * bytes > standard_buffer ? bytes : standard_buffer;
  char *base = static_cast<char *>(std::malloc(wanted));
  while (!base) {
    wanted /= 2;
    if (wanted <= bytes) {
      std::free(buffer);
      local_zone_failure(bytes);
    }
    base = static_cast<char *>(std::malloc(wanted));
  }
  poison(base, wanted);
  *buffer = {zones.buffers, base, wanted, 0};
  zones.buffers = buffer;
  return buffer;
}

// The first of the newest buffers that has room, or a new one.
BUFFER *serving_buffer(std::size_t bytes) {
  int looked_at = 0;
  for (BUFFER *buffer = zones.buffers; buffer && looked_at < buffers_searched;
       buffer = buffer->next, ++looked_at)
    if (serves(buffer, bytes)) return buffer;
  return new_buffer(bytes);
}

void *global_alloc(std::size_t bytes) {
  ZoneStatistics &statistics = zones.statistics;
  statistics.largest_global_request = std::max(statistics.largest_global_request, bytes);
  statistics.global_bytes += bytes;
  statistics.global_calls += 1;
  void *memory = std::malloc(std::max<std::size_t>(bytes, 1));
  if (!memory) {
    debug_print("\n>>>ERROR - ZALLOC0(%u) IS OUT OF MEMORY", static_cast<unsigned>(bytes));
    debug_print("\n>>>      - OPTIMIZER ABORTED\n");
    debug_flush();
    print("\n>>>ERROR - OUT OF MEMORY - OPTIMIZER ABORTED");
    abnormal_end();
  }
  global_pieces.push_back(memory);
  return memory;
}

void release_local_zone() {
  while (BUFFER *buffer = zones.buffers) {
    zones.buffers = buffer->next;
    unpoison(buffer->base, buffer->capacity);
    std::free(buffer->base);
    std::free(buffer);
  }
  zones.free_NODE_list = nullptr;
  zones.free_LIST_list = zones.free_EDGE_list = nullptr;
  zones.free_SYMLIST_list = zones.free_SUBRANGE_list = nullptr;
  ZoneStatistics &statistics = zones.statistics;
  statistics.max_local_bytes = std::max(statistics.max_local_bytes, statistics.local_bytes);
  statistics.max_local_calls = std::max(statistics.max_local_calls, statistics.local_calls);
  statistics.local_bytes = 0;
  statistics.local_calls = 0;
}

// Pops a cell of a list that is linked through its first word.
template <typename Record> Record *take(FREE_CELL *&head) {
  if (!head) return static_cast<Record *>(lalloc(sizeof(Record)));
  FREE_CELL *cell = head;
  head = cell->next;
  unpoison(cell, sizeof(Record));
  return reinterpret_cast<Record *>(cell);
}

template <typename Record> void give(Record *record, FREE_CELL *&head) {
  auto *cell = reinterpret_cast<FREE_CELL *>(record);
  cell->next = head;
  head = cell;
  poison(reinterpret_cast<char *>(record) + sizeof(FREE_CELL), sizeof(Record) - sizeof(FREE_CELL));
}

struct FreeListTotal {
  int objects = 0;
  std::size_t bytes = 0;
};

void report_free_list(const char *name, int objects, std::size_t record_bytes,
                      FreeListTotal &total) {
  const std::size_t bytes = static_cast<std::size_t>(objects) * record_bytes;
  debug_print("   %s:\t%6d objects, %8ld bytes\n", name, objects, static_cast<long>(bytes));
  total.objects += objects;
  total.bytes += bytes;
}

int length(const FREE_CELL *cell) {
  int count = 0;
  for (; cell; cell = cell->next)
    ++count;
  return count;
}

void report_free_lists() {
  debug_print("\n ==== CURRENT FREE LIST STORAGE CAPACITY ====\t\t%s()\n",
              state.cur_fun_sym ? state.cur_fun_sym->name + 1 : "");
  int nodes = 0;
  for (const NODE *node = zones.free_NODE_list; node; node = node->right)
    ++nodes;
  FreeListTotal total;
  report_free_list("free_NODE_list", nodes, sizeof(NODE), total);
  report_free_list("free_LIST_list", length(zones.free_LIST_list), sizeof(LIST), total);
  report_free_list("free_EDGE_list", length(zones.free_EDGE_list), sizeof(EDGE), total);
  report_free_list("free_SYMLIST_list", length(zones.free_SYMLIST_list), sizeof(SYMLIST), total);
  report_free_list("free_SUBRANGE_list", length(zones.free_SUBRANGE_list), sizeof(SUBRANGE), total);
  debug_print(" ==== TOTAL:\t\t%6d objects, %8ld bytes\n\n", total.objects,
              static_cast<long>(total.bytes));
}

void report_statistics() {
  ZoneStatistics &statistics = zones.statistics;
  std::size_t fragmentation = 0; // free bytes of all buffers but the newest
  if (zones.buffers)
    for (const BUFFER *buffer = zones.buffers->next; buffer; buffer = buffer->next)
      fragmentation += buffer->capacity - buffer->used;
  statistics.max_fragmentation = std::max(statistics.max_fragmentation, fragmentation);
  const auto line = [](std::size_t value, const char *text) {
    debug_print("%10ld %s\n", static_cast<long>(value), text);
  };
  debug_print("\n ==== MEMORY USAGE STATISTICS ====\n");
  line(statistics.largest_global_request, "BYTES FOR LARGEST REQUEST/GLOBAL ZONE");
  line(statistics.largest_local_request, "BYTES FOR LARGEST REQUEST/LOCAL ZONE");
  line(statistics.global_bytes, "BYTES ALLOCATED IN THE GLOBAL ZONE");
  line(statistics.local_bytes, "BYTES ALLOCATED IN THE LOCAL ZONE");
  line(std::max(statistics.max_local_bytes, statistics.local_bytes),
       "MAX BYTES ALLOCATED IN THE LOCAL ZONE");
  line(fragmentation, "BYTES LOST TO FRAGMENTATION (LOCAL)");
  line(statistics.max_fragmentation, "MAX BYTES LOST TO FRAGMENTATION");
  line(statistics.global_calls, "CALLS FOR GLOBAL ALLOCATION");
  line(statistics.local_calls, "CALLS FOR LOCAL ALLOCATION");
  line(std::max(statistics.max_local_calls, statistics.local_calls),
       "MAX CALLS FOR LOCAL ALLOCATION");
}

} // namespace

void *zalloc(int zone, std::size_t bytes) {
  return zone == 0 ? global_alloc(bytes) : lalloc(bytes);
}

void *lalloc(std::size_t bytes) {
  ZoneStatistics &statistics = zones.statistics;
  if (bytes > statistics.largest_local_request) statistics.largest_local_request = bytes;
  statistics.local_bytes += bytes;
  statistics.local_calls += 1;
  BUFFER *buffer = zones.buffers;
  if (!buffer || !serves(buffer, bytes)) [[unlikely]]
    buffer = serving_buffer(bytes);
  const std::size_t start = aligned(buffer->used);
  buffer->used = start + bytes;
  unpoison(buffer->base + start, bytes);
  return buffer->base + start;
}

void end_of_function() {
  if (state.debug_on) {
    report_free_lists();
    report_statistics();
  }
  release_local_zone();
}

void release_all_zones() {
  release_local_zone();
  for (void *piece : global_pieces)
    std::free(piece);
  global_pieces.clear();
  zones = ZoneState{};
}

NODE *take_node() {
  NODE *node = zones.free_NODE_list;
  if (!node) return static_cast<NODE *>(lalloc(sizeof(NODE)));
  zones.free_NODE_list = node->right;
  unpoison(node, sizeof(NODE));
  return node;
}

void give_node(NODE *node) {
  node->op = ILLOP;
  node->right = zones.free_NODE_list;
  zones.free_NODE_list = node;
  // The link and the opcode stay readable: the opcode is how a second release is noticed.
  poison(&node->u, sizeof node->u + sizeof node->left);
  poison(&node->aux, sizeof node->aux + sizeof node->depnum + sizeof node->nsize);
}

LIST *take_list() {
  return take<LIST>(zones.free_LIST_list);
}
EDGE *take_edge() {
  return take<EDGE>(zones.free_EDGE_list);
}
SYMLIST *take_symlist() {
  return take<SYMLIST>(zones.free_SYMLIST_list);
}
SUBRANGE *take_subrange() {
  return take<SUBRANGE>(zones.free_SUBRANGE_list);
}
void give_list(LIST *cell) {
  give(cell, zones.free_LIST_list);
}
void give_edge(EDGE *cell) {
  give(cell, zones.free_EDGE_list);
}
void give_symlist(SYMLIST *cell) {
  give(cell, zones.free_SYMLIST_list);
}
void give_subrange(SUBRANGE *cell) {
  give(cell, zones.free_SUBRANGE_list);
}

const ZoneStatistics &zone_statistics() {
  return zones.statistics;
}

int local_buffer_count() {
  int count = 0;
  for (const BUFFER *buffer = zones.buffers; buffer; buffer = buffer->next)
    ++count;
  return count;
}

BufferInfo local_buffer(int position) {
  const BUFFER *buffer = zones.buffers;
  while (position-- > 0)
    buffer = buffer->next;
  return {buffer->capacity, buffer->used};
}

} // namespace velkor
