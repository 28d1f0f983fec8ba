// The events of a recording with the arrays that go with them.
#pragma once

#include <cstdint>

#include "wavelock/annotations/event_table.h"
#include "wavelock/annotations/typed_array.h"

namespace wavelock {

class GroupWordArray : public TypedArray<std::uint32_t> {};
class GroupValueArray : public TypedArray<std::uint32_t> {};

// Only the table itself is filled by what a file holds; the five arrays are there for whoever groups its
// events.
class CEventGroup : public CEventTable {
 public:
  GroupWordArray groupArrayA;
  GroupWordArray groupArrayB;
  GroupWordArray groupArrayC;
  GroupValueArray groupArrayD;
  GroupWordArray groupArrayE;
};

}  // namespace wavelock
