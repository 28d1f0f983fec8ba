// Every kind of record that a tagged container can hold, with its layout as the library declares it.
#pragma once

#include <cstdint>
#include <span>
#include <string_view>
#include <vector>

#include "wavelock/setup/section_rows.h"

namespace wavelock::command {

struct SectionKind {
  const char* name;
  std::uint32_t tag;   // the first one, for a run that counts up
  std::uint32_t tags;  // how many a run may have
  const char* occurs;
  std::uint16_t version;  // as written
  std::uint32_t size;     // bytes of payload
  std::vector<RowInfo> (*rows)();
  const char* about;
  const char* versionWords = nullptr;  // of a record whose version is no fixed number
};

// By rising tag. A record that has two forms comes once for each.
std::span<const SectionKind> SectionKinds();

// The rows of the container's own header and of the head of each record.
std::vector<RowInfo> ContainerHeaderRows();
std::vector<RowInfo> RecordHeadRows();

// "unknown" for a tag that belongs to no kind.
std::string_view NameOfTag(std::uint32_t tag);

}  // namespace wavelock::command
