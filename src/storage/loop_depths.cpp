#include "storage/loop_depths.h"

#include "core/state.h"

#include <algorithm>
#include <vector>

namespace velkor {
namespace {

// Blocks go by their position in block order here, 0 upward.
class LoopDepths {
public:
  LoopDepths() {
    int greatest_dfn = 0;
    for (BB *block = state.first_bb; block; block = block->next) {
      blocks_.push_back(block);
      greatest_dfn = std::max(greatest_dfn, block->dfn);
    }
    position_of_dfn_.assign(static_cast<std::size_t>(greatest_dfn) + 1, none);
    for (std::size_t position = 0; position < blocks_.size(); ++position)
      position_of_dfn_[static_cast<std::size_t>(blocks_[position]->dfn)] =
          static_cast<int>(position);
    number_.assign(blocks_.size(), none);
    low_.assign(blocks_.size(), none);
    component_.assign(blocks_.size(), none);
  }

  void compute() {
    for (int position = 0; position < size(); ++position)
      if (at(number_, position) == none) find_components(position);
    count_loops();
  }

private:
  static constexpr int none = -1;

  struct Visit {
    int position;
    const EDGE *rest; // successors that are still to be looked at
  };

  template <typename Item> static Item &at(std::vector<Item> &items, int index) {
    return items[static_cast<std::size_t>(index)];
  }
  [[nodiscard]] int size() const { return static_cast<int>(blocks_.size()); }

  // A block that has left the block order has no position.
  int position_of(const BB *block) {
    if (block->dfn < 0 || block->dfn >= static_cast<int>(position_of_dfn_.size())) return none;
    const int position = at(position_of_dfn_, block->dfn);
    return position != none && at(blocks_, position) == block ? position : none;
  }

  void enter(int position) {
    at(number_, position) = at(low_, position) = visited_++;
    open_.push_back(position);
    visits_.push_back({position, at(blocks_, position)->succs});
  }

  // The blocks that have been found to reach each other leave the open ones.
  void close_component(int root) {
    for (int position = none; position != root;) {
      position = open_.back();
      open_.pop_back();
      at(component_, position) = components_;
    }
    ++components_;
  }

  void leave() {
    const int position = visits_.back().position;
    visits_.pop_back();
    if (at(low_, position) == at(number_, position)) close_component(position);
    if (visits_.empty()) return;
    int &low = at(low_, visits_.back().position);
    low = std::min(low, at(low_, position));
  }

  // Tarjan's walk without recursion: a chain of blocks may be as long as the function.
  void find_components(int start) {
    enter(start);
    while (!visits_.empty()) {
      Visit &visit = visits_.back();
      if (!visit.rest) {
        leave();
        continue;
      }
      const int next = position_of(visit.rest->bb);
      visit.rest = visit.rest->next;
      if (next == none) continue;
      if (at(number_, next) == none)
        enter(next);
      else if (at(component_, next) == none)
        at(low_, visit.position) = std::min(at(low_, visit.position), at(number_, next));
    }
  }

  // Position of the block that ends the loop of the block at head, size() if no block behind does,
  // or none.
  int end_of_loop(int head) {
    int greatest_dfn = 0;
    for (const EDGE *edge = at(blocks_, head)->preds; edge; edge = edge->next) {
      const int source = position_of(edge->bb);
      if (source == none || at(component_, source) != at(component_, head)) continue;
      if (edge->bb->dfn >= at(blocks_, head)->dfn)
        greatest_dfn = std::max(greatest_dfn, edge->bb->dfn);
    }
    if (greatest_dfn == 0) return none;
    const int end = at(position_of_dfn_, greatest_dfn);
    return end < head ? size() : end; // an end ahead of its head is never met
  }

  // One sweep: a component's depth rises at the head of each of its loops and falls behind the end.
  void count_loops() {
    std::vector<int> depth(static_cast<std::size_t>(components_), 0);
    std::vector<int> ends(blocks_.size(), 0); // loops of its component that a block ends
    for (int position = 0; position < size(); ++position) {
      int &own = at(depth, at(component_, position));
      if (const int end = end_of_loop(position); end != none) {
        ++own;
        if (end < size()) ++at(ends, end);
      }
      at(blocks_, position)->depth = own;
      at(blocks_, position)->descendants = nullptr;
      own -= at(ends, position);
    }
  }

  std::vector<BB *> blocks_;
  std::vector<int> position_of_dfn_;
  std::vector<int> number_;    // in order of the first visit
  std::vector<int> low_;       // lowest number known to be reached among the open blocks
  std::vector<int> component_; // of blocks that reach each other
  std::vector<int> open_;      // visited, and not yet in a component
  std::vector<Visit> visits_;  // the way to the block at hand
  int visited_ = 0;
  int components_ = 0;
};

} // namespace

void compute_loop_depths() {
  LoopDepths().compute();
}

} // namespace velkor
