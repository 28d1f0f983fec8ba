#include "wavelock/annotations/label_list.h"

#include <cstddef>
#include <new>
#include <utility>

#include "wavelock/annotations/exchange_sort.h"
#include "wavelock/annotations/stored_records.h"
#include "wavelock/numerics/stored.h"
#include "wavelock/setup/section_tags.h"

namespace wavelock {
namespace {

constexpr std::size_t kLongestText = 255;

LabelEntry EntryFrom(const LabelRecord& record) {
  return {std::string(record.text.View().substr(0, kLongestText)), record.value};
}

}  // namespace

bool CLabelList::Add(LabelEntry entry) {
  try {
    entries_.push_back(std::move(entry));
    return true;
  } catch (const std::bad_alloc&) {
    return false;
  }
}

bool CLabelList::SortByValue() {
  try {
    std::vector<std::uint32_t> values;
    values.reserve(entries_.size());
    for (const LabelEntry& entry : entries_) values.push_back(entry.value);
    const std::vector<std::uint32_t> order = ExchangeSortOrder(values);
    std::vector<LabelEntry> sorted(entries_.size());
    for (std::size_t i = 0; i < order.size(); ++i) sorted[i] = std::move(entries_[order[i]]);
    entries_ = std::move(sorted);
    return true;
  } catch (const std::bad_alloc&) {
    return false;
  }
}

bool CLabelList::Load(CTffFile& container) {
  RemoveAll();
  try {
    LabelRecord record{};
    std::uint64_t length = sizeof record;
    container.ReadSection(tag::kLabel, length, &record);
    while (length != 0) {
      entries_.push_back(EntryFrom(record));
      record = {};
      length = sizeof record;
      container.ReadNextSection(tag::kLabel, length, &record);
    }
    return true;
  } catch (const std::bad_alloc&) {
    RemoveAll();
    return false;
  }
}

bool CLabelList::Save(CTffFile& container) const {
  bool isWritten = true;
  for (const LabelEntry& entry : entries_) {
    if (entry.text.size() > kLongestText) return false;
    LabelRecord record{};
    record.text.Assign(entry.text);
    record.value = entry.value;
    isWritten &= container.WriteSection(tag::kLabel, sizeof record, &record, 0);
  }
  return isWritten;
}

}  // namespace wavelock
