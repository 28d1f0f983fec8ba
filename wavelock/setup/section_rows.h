// How a stored section is declared: a table with a row for each field, that says where it stands, as what it
// is stored and since which version. One walk over the table reads the section, one writes it; rows that
// overlap, leave the section or do not fit their field do not compile.
//
//   struct TriggerSection {
//     using Model = CSetup;                              // whose fields it holds
//     static constexpr std::uint32_t kSize = 832;        // bytes; what no row names is zero
//     static constexpr std::uint16_t kVersion = 0;       // as written
//     static constexpr Row<Model> kRows[] = {
//         WAVELOCK_ROW(0, I32, triggerMode),             // by rising offset
//         WAVELOCK_ROW(4, F32, triggerValue),
//     };
//   };
#pragma once

#include <algorithm>
#include <array>
#include <concepts>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <span>
#include <string>
#include <string_view>
#include <tuple>
#include <type_traits>
#include <utility>
#include <vector>

#include "wavelock/setup/fixed_text.h"

namespace wavelock {

// ----- What is known about a row without its model

struct RowInfo {
  std::uint32_t offset = 0;
  std::uint32_t size = 0;         // of all elements together
  std::uint32_t elementSize = 0;  // of one
  const char* type = "";          // of one: "i32", "f32", "char", "byte", or the name of a layout
  const char* field = "";         // as the model calls it
  std::uint16_t since = 0;        // the first version of the section that has it
  bool isRead = true;
  bool isWritten = true;
  const char* reason = "";  // why only one direction uses it

  // The rows of the layout that an element has, where it has one.
  std::vector<RowInfo> (*layout)() = nullptr;
};

template <class Model>
struct Row : RowInfo {
  void (*load)(Model&, const std::byte*) = nullptr;
  void (*store)(Model&, std::byte*) = nullptr;

  constexpr Row Since(std::uint16_t version) const {
    Row row = *this;
    row.since = version;
    return row;
  }
  constexpr Row ReadOnly(const char* why) const {
    Row row = *this;
    row.isWritten = false;
    row.reason = why;
    return row;
  }
  constexpr Row WriteOnly(const char* why) const {
    Row row = *this;
    row.isRead = false;
    row.reason = why;
    return row;
  }
};

// Rows inside their section, by rising offset, each byte named by one row at most in each direction.
template <class Section>
constexpr bool IsSound() {
  std::uint32_t read = 0;
  std::uint32_t written = 0;
  std::uint32_t last = 0;
  for (const RowInfo& row : Section::kRows) {
    const std::uint32_t end = row.offset + row.size;
    if (row.offset < last || end > Section::kSize) return false;
    if (row.isWritten && row.since > Section::kVersion) return false;
    if ((row.isRead && row.offset < read) || (row.isWritten && row.offset < written)) return false;
    if (row.isRead) read = end;
    if (row.isWritten) written = end;
    last = row.offset;
  }
  return true;
}

// Fills a model from the image of a section of some version. Fields that the version lacks stay.
template <class Section>
void LoadRows(const std::byte* image, std::uint16_t version, typename Section::Model& model) {
  static_assert(IsSound<Section>());
  for (const auto& row : Section::kRows) {
    if (row.isRead && version >= row.since) row.load(model, image + row.offset);
  }
}

// Puts the fields of a model in their places. Bytes that no row names stay.
template <class Section>
void StoreRows(typename Section::Model& model, std::byte* image) {
  static_assert(IsSound<Section>());
  for (const auto& row : Section::kRows) {
    if (row.isWritten) row.store(model, image + row.offset);
  }
}

template <class Section>
std::vector<RowInfo> RowsOf() {
  return {std::begin(Section::kRows), std::end(Section::kRows)};
}

// ----- What one element is stored as

template <class T>
struct StoredNumber {
  static constexpr std::uint32_t kSize = sizeof(T);
  static constexpr const char* kType = std::is_floating_point_v<T> ? "f32" : "i32";
  template <class Field>
  static constexpr bool kFits = std::same_as<Field, T>;

  static void Load(const std::byte* from, T& field) { std::memcpy(&field, from, sizeof field); }
  static void Store(const T& field, std::byte* to) { std::memcpy(to, &field, sizeof field); }
};
using I32 = StoredNumber<std::int32_t>;
using F32 = StoredNumber<float>;

// A text of at most N - 1 characters and a NUL, zero behind it.
template <std::size_t N>
struct Chars {
  static constexpr std::uint32_t kSize = N;
  static constexpr const char* kType = "char";
  template <class Field>
  static constexpr bool kFits = std::same_as<Field, FixedText<N>> || std::same_as<Field, std::string>;

  static void Load(const std::byte* from, FixedText<N>& field) { field.Assign(TextAt(from)); }
  static void Load(const std::byte* from, std::string& field) { field = TextAt(from); }
  static void Store(const FixedText<N>& field, std::byte* to) { StoreText(field.View(), to); }
  static void Store(const std::string& field, std::byte* to) { StoreText(field, to); }

 private:
  static std::string_view TextAt(const std::byte* from) {
    const std::string_view all(reinterpret_cast<const char*>(from), N - 1);
    return all.substr(0, all.find('\0'));
  }
  static void StoreText(std::string_view text, std::byte* to) {
    FixedText<N> image;
    image.Assign(text);
    std::memcpy(to, &image, N);
  }
};

// Bytes as they are.
template <std::size_t N>
struct Bytes {
  static constexpr std::uint32_t kSize = N;
  static constexpr const char* kType = "byte";
  template <class Field>
  static constexpr bool kFits =
      std::same_as<Field, std::array<std::uint8_t, N>> || std::same_as<Field, std::span<std::uint8_t, N>>;

  template <class Field>
  static void Load(const std::byte* from, Field& field) {
    std::memcpy(field.data(), from, N);
  }
  template <class Field>
  static void Store(const Field& field, std::byte* to) {
    std::memcpy(to, field.data(), N);
  }
};

// A structure with a table of its own.
template <class Layout>
struct Image {
  static constexpr std::uint32_t kSize = Layout::kSize;
  static constexpr const char* kType = Layout::kTitle;
  template <class Field>
  static constexpr bool kFits = std::same_as<Field, typename Layout::Model>;

  static void Load(const std::byte* from, typename Layout::Model& field) {
    LoadRows<Layout>(from, Layout::kVersion, field);
  }
  static void Store(typename Layout::Model& field, std::byte* to) { StoreRows<Layout>(field, to); }
};

template <class Codec>
inline constexpr std::vector<RowInfo> (*kLayoutOf)() = nullptr;
template <class Layout>
inline constexpr std::vector<RowInfo> (*kLayoutOf<Image<Layout>>)() = &RowsOf<Layout>;

// ----- Fields of one element or of many, one behind the other

template <class Codec, class Field>
constexpr std::uint32_t SizeAs() {
  if constexpr (Codec::template kFits<Field>) {
    return Codec::kSize;
  } else {
    return static_cast<std::uint32_t>(std::tuple_size_v<Field>) * SizeAs<Codec, typename Field::value_type>();
  }
}

template <class Codec, class Field>
void LoadAs(const std::byte* from, Field& field) {
  if constexpr (Codec::template kFits<Field>) {
    Codec::Load(from, field);
  } else {
    for (auto& element : field) {
      LoadAs<Codec>(from, element);
      from += SizeAs<Codec, typename Field::value_type>();
    }
  }
}

template <class Codec, class Field>
void StoreAs(Field& field, std::byte* to) {
  if constexpr (Codec::template kFits<Field>) {
    Codec::Store(field, to);
  } else {
    for (auto& element : field) {
      StoreAs<Codec>(element, to);
      to += SizeAs<Codec, typename Field::value_type>();
    }
  }
}

// ----- Making rows

// The field of a model behind a pointer to a member. A model that holds one entry of parallel arrays has
// overloads of its own.
template <class Model, class Owner, class Field>
Field& FieldOf(Model& model, Field Owner::*member) {
  return model.*member;
}

template <class Model, class Codec, auto member>
constexpr Row<Model> RowOf(std::uint32_t offset, const char* name) {
  using Field = std::remove_cvref_t<decltype(FieldOf(std::declval<Model&>(), member))>;
  Row<Model> row;
  row.offset = offset;
  row.size = SizeAs<Codec, Field>();
  row.elementSize = Codec::kSize;
  row.type = Codec::kType;
  row.field = name;
  row.layout = kLayoutOf<Codec>;
  row.load = [](Model& model, const std::byte* from) { LoadAs<Codec>(from, FieldOf(model, member)); };
  row.store = [](Model& model, std::byte* to) { StoreAs<Codec>(FieldOf(model, member), to); };
  return row;
}

// A value that the writer works out; `reason` says why no reader takes it.
template <class Model, class Codec, auto compute>
constexpr Row<Model> ComputedRow(std::uint32_t offset, const char* what, const char* reason) {
  Row<Model> row;
  row.offset = offset;
  row.size = row.elementSize = Codec::kSize;
  row.type = Codec::kType;
  row.field = what;
  row.isRead = false;
  row.reason = reason;
  row.store = [](Model& model, std::byte* to) { Codec::Store(compute(model), to); };
  return row;
}

// One table out of a common one and what is added to it; by rising offset again.
template <class Model, std::size_t A, std::size_t B>
constexpr std::array<Row<Model>, A + B> Merged(const Row<Model> (&common)[A], const Row<Model> (&added)[B]) {
  std::array<Row<Model>, A + B> all{};
  std::size_t a = 0;
  std::size_t b = 0;
  for (Row<Model>& row : all) {
    const bool takesCommon = b == B || (a < A && common[a].offset <= added[b].offset);
    row = takesCommon ? common[a++] : added[b++];
  }
  return all;
}

// Inside of a section: a field of its model by its name, or a field that belongs to another class.
#define WAVELOCK_ROW(offset, codec, member) WAVELOCK_ROW_OF(Model, offset, codec, member)
#define WAVELOCK_ROW_OF(owner, offset, codec, member) RowOf<Model, codec, &owner::member>(offset, #member)

}  // namespace wavelock
