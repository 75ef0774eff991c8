// Sparse sets against the library's.
#include "core/sparse_sets.h"

#include <gtest/gtest.h>
#include <random>
#include <set>

namespace velkor {
namespace {

using Elements = std::set<int>;

// Holds the elements, and words that have come to be empty.
SparseSet make_set(const Elements &elements, const Elements &taken_out) {
  SparseSet set;
  for (const Elements *each : {&taken_out, &elements})
    for (const int element : *each)
      set_add(set, element);
  for (const int element : taken_out)
    if (!elements.contains(element)) set_remove(set, element);
  return set;
}

Elements members(const SparseSet &set, int universe) {
  Elements result;
  for (int element = 0; element < universe; ++element)
    if (set_has(set, element)) result.insert(element);
  return result;
}

TEST(SparseSets, AgreeWithTheLibrary) {
  std::mt19937 random(1);
  for (int round = 0; round < 400; ++round) {
    const int universe = 1 + static_cast<int>(random() % 300);
    const auto some = [&] {
      Elements result;
      for (auto count = random() % 12; count > 0; --count)
        result.insert(static_cast<int>(random() % static_cast<unsigned>(universe)));
      return result;
    };
    const Elements a = some();
    const Elements b = some();
    const Elements c = some();
    SparseSet set = make_set(a, some());
    const SparseSet other = make_set(b, some());
    EXPECT_EQ(members(set, universe), a);
    EXPECT_EQ(set_is_empty(set), a.empty());

    Elements expected = a;
    for (const int element : b)
      if (!c.contains(element)) expected.insert(element);
    EXPECT_EQ(set_union_without(set, other, make_set(c, some())), expected != a);
    EXPECT_EQ(members(set, universe), expected);
    EXPECT_FALSE(set_union_without(set, other, make_set(c, some())));

    std::erase_if(expected, [&](int element) { return c.contains(element); });
    set_subtract(set, make_set(c, some()));
    EXPECT_EQ(members(set, universe), expected);
    SparseSet copy;
    set_copy(copy, set);
    std::erase_if(expected, [&](int element) { return !b.contains(element); });
    set_intersect(copy, other);
    EXPECT_EQ(members(copy, universe), expected);
    expected.insert(b.begin(), b.end());
    set_union(copy, other);
    EXPECT_EQ(members(copy, universe), expected);
  }
  end_of_function();
}

} // namespace
} // namespace velkor
