#include "storage/register_classes.h"

#include "core/options.h"
#include "core/output.h"
#include "core/state.h"
#include "core/symbols.h"
#include "scalar/live_variables.h"
#include "storage/conflicts.h"

#include <cstring>
#include <vector>

namespace velkor {
namespace {

constexpr std::int32_t lowest_cost = 2; // of a candidate that is worth a register

std::int32_t &at(std::vector<std::int32_t> &array, const SYM *sym) {
  return array[static_cast<std::size_t>(sym->count)];
}
std::uint32_t &at(std::vector<std::uint32_t> &array, const SYM *sym) {
  return array[static_cast<std::size_t>(sym->count)];
}

void push(SYM *sym, SYM *&chain) {
  sym->next = chain;
  chain = sym;
}

// How many symbols took one way out of the graph, and what they cost together.
struct Summary {
  int count = 0;
  long cost = 0;

  void add(const SYM *sym) {
    count += 1;
    cost += velkor::cost(sym);
  }
};

class ClassAllocation {
public:
  SYM *serve(REGCLASS *chain) {
    const auto candidates = static_cast<std::size_t>(live_variables.num_candidates);
    pref_count_.resize(candidates);
    accept_count_.resize(candidates);
    degree_.resize(candidates);
    pref_mask_.resize(candidates);
    accept_mask_.resize(candidates);
    neighbour_regs_.resize(candidates);
    assured_vars_ = new_set(live_variables.words);
    for (REGCLASS *regclass = chain; regclass && state.scalar_syms; regclass = regclass->next)
      serve_class(regclass);
    return packed_syms_;
  }

private:
  void serve_class(REGCLASS *regclass) {
    SYM *chosen = choose(regclass);
    if (regclass->next) state.scalar_syms = sym_list_reverse(state.scalar_syms);
    SYM *order = nullptr;
    if (chosen) {
      order = select_order(chosen);
      note_preferences(order);
      if (state.debug_on) report_conflicts(order);
    }
    debug_print("\n\t----Storage packing information---\n");
    while (SYM *sym = order) {
      order = sym->next;
      push(sym, regclass->pack(sym, regclass) ? packed_syms_ : state.scalar_syms);
    }
  }

  bool classify(SYM *sym, REGCLASS *regclass) {
    return regclass->classify(sym, regclass, &at(pref_count_, sym), &at(pref_mask_, sym),
                              &at(accept_count_, sym), &at(accept_mask_, sym));
  }

  // Takes off scalar_syms what can live in the class.
  SYM *choose(REGCLASS *regclass) {
    SYM *chosen = nullptr;
    SYM *list = state.scalar_syms;
    state.scalar_syms = nullptr;
    while (SYM *sym = list) {
      list = sym->next;
      const bool candidate = is_candidate(sym);
      if (candidate && cost(sym) == 0)
        debug_print("\tNo references in the function for (%d) '%s'\n", sym->count, sym->name);
      else if (candidate && sym->sclass == C_AUTO && cost(sym) >= lowest_cost &&
               classify(sym, regclass))
        push(sym, chosen);
      else
        push(sym, state.scalar_syms);
    }
    return chosen;
  }

  // -- The conflict graph of one class

  bool are_neighbours(const SYM *a, const SYM *b) {
    return set_has(allocation.conflicts[b->count], a->count) &&
           (at(accept_mask_, a) & at(accept_mask_, b)) != 0;
  }

  void build_graph(SYM *list) {
    members_.clear();
    for (SYM *sym = list; sym; sym = sym->next)
      members_.push_back(sym);
    for (SYM *sym : members_) {
      at(neighbour_regs_, sym) = 0;
      at(degree_, sym) = 0;
      for (const SYM *other : members_)
        at(degree_, sym) += are_neighbours(sym, other);
    }
  }

  void leave_graph(const SYM *sym) {
    for (const SYM *other : members_)
      if (are_neighbours(sym, other)) {
        at(degree_, other) -= 1;
        at(neighbour_regs_, other) = 0;
      }
    at(accept_mask_, sym) = 0;
  }

  std::uint32_t registers_of_neighbours(const SYM *sym) {
    std::uint32_t &registers = at(neighbour_regs_, sym);
    if (registers == 0)
      for (const SYM *other : members_)
        if (are_neighbours(sym, other)) registers |= at(accept_mask_, other);
    return registers;
  }

  // One of count registers in mask will be left, whatever the neighbours get.
  bool is_sure(const SYM *sym, std::int32_t count, std::uint32_t mask) {
    return count > at(degree_, sym) || (mask & ~registers_of_neighbours(sym)) != 0;
  }

  // -- Order

  static bool comes_first(const SYM *a, const SYM *b) {
    if (cost(a) != cost(b)) return cost(a) < cost(b);
    return std::strcmp(a->name, b->name) < 0;
  }

  SYM *pick(SYM *list, std::vector<std::int32_t> &counts, std::vector<std::uint32_t> &masks) {
    SYM *best = nullptr;
    for (SYM *sym = list; sym; sym = sym->next)
      if ((!best || comes_first(sym, best)) && is_sure(sym, at(counts, sym), at(masks, sym)))
        best = sym;
    return best;
  }

  float priority(const SYM *sym) {
    const auto degree = static_cast<float>(at(degree_, sym));
    return static_cast<float>(cost(sym)) / (degree * degree);
  }

  bool is_given_up_first(const SYM *a, const SYM *b) {
    if (priority(a) != priority(b)) return priority(a) < priority(b);
    return std::strcmp(a->name, b->name) < 0;
  }

  SYM *pick_sacrifice(SYM *list) {
    SYM *worst = list;
    for (SYM *sym = list->next; sym; sym = sym->next)
      if (is_given_up_first(sym, worst)) worst = sym;
    return worst;
  }

  // From the list to the head of the order.
  void take(SYM *sym, SYM *&list, SYM *&order, Summary &summary, const char *message) {
    list = sym_list_remove(sym, list);
    push(sym, order);
    summary.add(sym);
    leave_graph(sym);
    debug_print(message, sym->name);
  }

  SYM *select_order(SYM *list) {
    build_graph(list);
    SYM *order = nullptr;
    Summary preferred;
    Summary acceptable;
    Summary sacrificed;
    while (list) {
      if (SYM *sym = pick(list, pref_count_, pref_mask_)) {
        set_add(assured_vars_, sym->count);
        take(sym, list, order, preferred, "\t'%s' is assured a preferred register\n");
      } else if (SYM *other = pick(list, accept_count_, accept_mask_)) {
        take(other, list, order, acceptable, "\t'%s' is assured an acceptable register\n");
      } else {
        take(pick_sacrifice(list), list, order, sacrificed,
             "\t'%s' has been sacrificed by priority\n");
      }
    }
    debug_print("\t%4d vars were assured a preferred register (cost: %ld),\n", preferred.count,
                preferred.cost);
    debug_print("\t%4d vars were assured an acceptable register (cost: %ld),\n", acceptable.count,
                acceptable.cost);
    debug_print("\t%4d vars had to be sacrificed (cost: %ld).\n", sacrificed.count,
                sacrificed.cost);
    return order;
  }

  // -- Notes and reports

  static void note_preferences(SYM *order) {
    for (SYM *sym = order; sym; sym = sym->next) {
      ConstSet preferences = allocation.preferences[sym->count];
      if (set_is_empty(preferences, live_variables.words)) continue;
      for (SYM *other = sym->next; other; other = other->next)
        if (set_has(preferences, other->count)) target.note_preference(sym, other);
    }
  }

  // Symbols of the order in whose set of the relation sym is.
  static int count_related(const SYM *sym, const SYM *order, const Set *relation,
                           const char *message) {
    int count = 0;
    for (const SYM *other = order; other; other = other->next) {
      if (!is_candidate(other) || !set_has(relation[other->count], sym->count)) continue;
      ++count;
      if (options.debug_level > 1)
        debug_print(message, sym->count, sym->name, static_cast<long>(cost(sym)), other->count,
                    other->name);
    }
    return count;
  }

  static void report_conflicts(const SYM *order) {
    debug_print("\n\t----Storage conflict information---\n");
    for (const SYM *sym = order; sym; sym = sym->next) {
      if (!is_candidate(sym)) {
        debug_print("\t(%d) '%s'\t is no longer a candidate\n", sym->count, sym->name);
        continue;
      }
      if (cost(sym) == 0) {
        debug_print("\t(%d) '%s'\t(COST=0) has no references\n", sym->count, sym->name);
        continue;
      }
      const int conflicts = count_related(sym, order, allocation.conflicts,
                                          "\t(%d) '%s'\t(COST=%ld) conflicts with (%d) '%s'\n");
      const int preferences = count_related(sym, order, allocation.preferences,
                                            "\t(%d) '%s'\t(COST=%ld) preferences with (%d) '%s'\n");
      debug_print("\t(%d) '%s'\t(COST=%ld)\thas %d conflicts and %d preferences\n", sym->count,
                  sym->name, static_cast<long>(cost(sym)), conflicts, preferences);
    }
  }

  // By candidate number, for the class at hand; classify fills the first four.
  std::vector<std::int32_t> pref_count_;
  std::vector<std::uint32_t> pref_mask_;
  std::vector<std::int32_t> accept_count_;
  std::vector<std::uint32_t> accept_mask_; // 0 for what has left the graph
  std::vector<std::int32_t> degree_;
  std::vector<std::uint32_t> neighbour_regs_; // 0: to be worked out
  std::vector<SYM *> members_;                // the symbols of the graph, gone ones included

  Set assured_vars_ = nullptr;
  SYM *packed_syms_ = nullptr;
};

} // namespace

SYM *allocate_classes(REGCLASS *chain) {
  return ClassAllocation().serve(chain);
}

} // namespace velkor
