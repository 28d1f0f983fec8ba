// One section on its way between a container and a model.
#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>

#include "wavelock/setup/section_rows.h"
#include "wavelock/setup/tff_file.h"

namespace wavelock {

template <class Section>
class StoredSection {
 public:
  // The three read what a container holds under a tag, up to the section's size, and tell whether there was
  // anything. Behind what came, the image is zero after the first two; the third leaves it as it was.
  bool Read(CTffFile& file, std::uint32_t tag = Section::kTag) { return Cleared(ReadOver(file, tag)); }
  bool ReadNext(CTffFile& file, std::uint32_t tag) {
    length_ = bytes_.size();
    file.ReadNextSection(tag, length_, bytes_.data());
    version_ = file.LastVersion();
    return Cleared(length_ != 0);
  }
  bool ReadOver(CTffFile& file, std::uint32_t tag = Section::kTag) {
    length_ = bytes_.size();
    file.ReadSection(tag, length_, bytes_.data());
    version_ = file.LastVersion();
    return length_ != 0;
  }

  // The next record of a run that lies in order, or else the same record wherever it is. False when it is
  // missing or short.
  bool ReadWholeOfRun(CTffFile& file, std::uint32_t tag) {
    return (ReadNext(file, tag) && IsWhole()) || (Read(file, tag) && IsWhole());
  }

  // Of what was read last.
  std::uint64_t Length() const { return length_; }
  bool IsWhole() const { return length_ == Section::kSize; }
  std::uint16_t Version() const { return version_; }

  void LoadInto(typename Section::Model& model) const { LoadRows<Section>(bytes_.data(), version_, model); }

  void TakeFrom(typename Section::Model& model) {
    bytes_ = {};
    StoreRows<Section>(model, bytes_.data());
  }
  bool Write(CTffFile& file, std::uint32_t tag = Section::kTag) const {
    return file.WriteSection(tag, Section::kSize, bytes_.data(), Section::kVersion);
  }

 private:
  bool Cleared(bool isThere) {
    std::fill(bytes_.begin() + static_cast<std::ptrdiff_t>(length_), bytes_.end(), std::byte{});
    return isThere;
  }

  std::array<std::byte, Section::kSize> bytes_{};
  std::uint64_t length_ = 0;
  std::uint16_t version_ = 0;
};

template <class Section>
bool WriteSectionOf(typename Section::Model& model, CTffFile& file, std::uint32_t tag = Section::kTag) {
  StoredSection<Section> section;
  section.TakeFrom(model);
  return section.Write(file, tag);
}

// Reads a section that counts only when it is complete; otherwise the model stays as it was.
template <class Section>
bool ReadExactSection(CTffFile& file, typename Section::Model& model, std::uint16_t* version = nullptr) {
  StoredSection<Section> section;
  if (!section.Read(file) || !section.IsWhole()) return false;
  section.LoadInto(model);
  if (version != nullptr) *version = section.Version();
  return true;
}

}  // namespace wavelock
