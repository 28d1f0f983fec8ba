// The labels of a continuous recording: short texts with a number each, carried for whoever wrote them.
#pragma once

#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <vector>

#include "wavelock/setup/tff_file.h"

namespace wavelock {

struct LabelEntry {
  std::string text;  // at most 255 characters can be saved
  std::uint32_t value = 0;
};

class CLabelList {
 public:
  CLabelList() = default;
  virtual ~CLabelList() = default;
  CLabelList(const CLabelList&) = delete;
  CLabelList& operator=(const CLabelList&) = delete;

  std::span<const LabelEntry> Entries() const { return entries_; }

  // False when there is no memory for it.
  bool Add(LabelEntry entry);

  void RemoveAll() { entries_.clear(); }

  // Upwards by value. The order of equal values is that of an exchange sort, which files have always been
  // written in. False, and the list is as it was, when memory ran out.
  bool SortByValue();

  // Reads the labels in place of those that are there; a container without any gives an empty list. False,
  // and the list is empty, when memory ran out.
  bool Load(CTffFile& container);

  // Appends the labels. A text that is too long ends that with false; a record that cannot be written makes
  // the result false, and the rest is still written.
  bool Save(CTffFile& container) const;

 private:
  std::vector<LabelEntry> entries_;
};

}  // namespace wavelock
