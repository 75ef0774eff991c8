// The labels of a function by number.
#pragma once

#include "core/records.h"

#include <vector>

namespace velkor {

// Numbers are positive for labels of the file, negative for those that the optimizer made. Of two
// labels with one number the first that was added counts.
class LabelIndex {
public:
  void add(LABEL *label) {
    std::vector<LABEL *> &labels = label->index < 0 ? own_ : from_file_;
    const std::size_t position = position_of(label->index);
    if (position >= labels.size()) labels.resize(position + 1, nullptr);
    if (!labels[position]) labels[position] = label;
  }

  // The label, or none.
  [[nodiscard]] LABEL *find(std::int32_t index) const {
    const std::vector<LABEL *> &labels = index < 0 ? own_ : from_file_;
    const std::size_t position = position_of(index);
    return position < labels.size() ? labels[position] : nullptr;
  }

  void clear() {
    own_.clear();
    from_file_.clear();
  }

private:
  static std::size_t position_of(std::int32_t index) {
    return static_cast<std::size_t>(index < 0 ? -static_cast<std::int64_t>(index) : index);
  }

  std::vector<LABEL *> from_file_;
  std::vector<LABEL *> own_;
};

} // namespace velkor
