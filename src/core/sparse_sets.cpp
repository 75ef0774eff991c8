#include "core/sparse_sets.h"

#include <algorithm>
#include <cstddef>

namespace velkor {
namespace {

using Word = SparseSet::Word;

// Room for so many words; what the set holds stays.
void reserve(SparseSet &set, int words) {
  if (words <= set.capacity) return;
  const int capacity = std::max({words, 2 * set.capacity, 4});
  auto *larger = static_cast<Word *>(lalloc(static_cast<std::size_t>(capacity) * sizeof(Word)));
  std::copy_n(set.words, set.size, larger);
  set.words = larger;
  set.capacity = capacity;
}

// The first word at the place or behind it. No two words have one place, so it stands at most as
// far from the first one as the places do: in a set without gaps it is found at once.
Word *find_word(const SparseSet &set, int place) {
  if (set.size == 0 || place <= set.words[0].place) return set.words;
  Word *farthest = set.words + std::min(set.size, place - set.words[0].place);
  if (farthest[-1].place == place - 1) return farthest;
  return std::lower_bound(set.words, farthest, place,
                          [](const Word &word, int at) { return word.place < at; });
}

// The bits that a set holds at ascending places, without a search for each.
class Reader {
public:
  explicit Reader(const SparseSet &set) : word_(set.words), end_(set.words + set.size) {}
  std::uint32_t bits_at(int place) {
    while (word_ != end_ && word_->place < place)
      ++word_;
    return word_ != end_ && word_->place == place ? word_->bits : 0;
  }

private:
  const Word *word_;
  const Word *end_;
};

// Adds the bits to the words that into has already. Returns how many words it lacks.
int union_of_common_words(SparseSet &into, const SparseSet &from, const SparseSet &without,
                          bool &changed) {
  Reader removed(without);
  int lacking = 0;
  Word *word = into.words;
  const Word *end = into.words + into.size;
  for (int i = 0; i < from.size; ++i) {
    const int place = from.words[i].place;
    const std::uint32_t bits = from.words[i].bits & ~removed.bits_at(place);
    while (word != end && word->place < place)
      ++word;
    if (word != end && word->place == place) {
      changed |= (bits & ~word->bits) != 0;
      word->bits |= bits;
    } else {
      lacking += bits != 0;
    }
  }
  return lacking;
}

// Adds the words that into lacks, from the end on, so that each word moves once.
void insert_lacking_words(SparseSet &into, const SparseSet &from, const SparseSet &without,
                          int lacking) {
  reserve(into, into.size + lacking);
  const Word *old = into.words + into.size;
  Word *place_for = into.words + into.size + lacking;
  into.size += lacking;
  const Word *removed = without.words + without.size;
  for (int i = from.size; lacking > 0;) {
    const Word &word = from.words[--i];
    while (old != into.words && old[-1].place > word.place)
      *--place_for = *--old;
    if (old != into.words && old[-1].place == word.place) continue;
    while (removed != without.words && removed[-1].place > word.place)
      --removed;
    const bool is_cut = removed != without.words && removed[-1].place == word.place;
    const std::uint32_t bits = word.bits & ~(is_cut ? removed[-1].bits : 0);
    if (bits == 0) continue;
    *--place_for = {word.place, bits};
    --lacking;
  }
}

} // namespace

std::uint32_t set_word(const SparseSet &set, int place) {
  const Word *word = find_word(set, place);
  return word != set.words + set.size && word->place == place ? word->bits : 0;
}

bool set_has(const SparseSet &set, int element) {
  return (set_word(set, element >> 5) >> (element & 31) & 1) != 0;
}

void set_add(SparseSet &set, int element) {
  Word *word = find_word(set, element >> 5);
  if (word == set.words + set.size || word->place != element >> 5) {
    const auto index = word - set.words;
    reserve(set, set.size + 1);
    word = set.words + index;
    std::copy_backward(word, set.words + set.size, set.words + set.size + 1);
    ++set.size;
    *word = {element >> 5, 0};
  }
  word->bits |= 1u << (element & 31);
}

void set_remove(SparseSet &set, int element) {
  Word *word = find_word(set, element >> 5);
  if (word != set.words + set.size && word->place == element >> 5)
    word->bits &= ~(1u << (element & 31));
}

bool set_is_empty(const SparseSet &set) {
  return std::all_of(set.words, set.words + set.size,
                     [](const Word &word) { return word.bits == 0; });
}

void set_copy(SparseSet &to, const SparseSet &from) {
  reserve(to, from.size);
  std::copy_n(from.words, from.size, to.words);
  to.size = from.size;
}

void set_copy(Set to, const SparseSet &from, int words) {
  set_clear(to, words);
  for (int i = 0; i < from.size; ++i)
    to[from.words[i].place] = from.words[i].bits;
}

bool set_union(SparseSet &into, const SparseSet &from) {
  return set_union_without(into, from, SparseSet{});
}

bool set_union_without(SparseSet &into, const SparseSet &from, const SparseSet &without) {
  bool changed = false;
  const int lacking = union_of_common_words(into, from, without, changed);
  if (lacking == 0) return changed;
  insert_lacking_words(into, from, without, lacking);
  return true;
}

void set_intersect(SparseSet &into, const SparseSet &from) {
  Reader kept(from);
  for (int i = 0; i < into.size; ++i)
    into.words[i].bits &= kept.bits_at(into.words[i].place);
}

void set_subtract(SparseSet &into, const SparseSet &from) {
  Reader removed(from);
  for (int i = 0; i < into.size; ++i)
    into.words[i].bits &= ~removed.bits_at(into.words[i].place);
}

} // namespace velkor
