// One argument or result of a dispatch call: a value of an automation type, a reference to one of the
// caller's variables, or an array of the caller's.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <span>
#include <string_view>

namespace wavelock {

// The numbers are those of the component model.
enum class ValueType : std::uint16_t {
  kEmpty = 0,
  kI2 = 2,
  kI4 = 3,
  kR4 = 4,
  kString = 8,
  kBool = 11,
  kVoid = 24,  // of a method without a result
};

enum class Passing : std::uint16_t {
  kByValue,
  kByReference,
  kBlock,  // an array whose size in bytes is told by the argument behind it
};

template <class T>
constexpr ValueType kTypeOf = ValueType::kEmpty;
template <>
inline constexpr ValueType kTypeOf<std::int16_t> = ValueType::kI2;
template <>
inline constexpr ValueType kTypeOf<std::int32_t> = ValueType::kI4;
template <>
inline constexpr ValueType kTypeOf<float> = ValueType::kR4;

// Knows how large its target is, so that nobody writes beyond it. Its text is allocated by malloc and may be
// freed by another module than the one that made it.
class Variant {
 public:
  Variant() = default;
  Variant(std::int16_t value) : type_(ValueType::kI2) { value_.i2 = value; }
  Variant(std::int32_t value) : type_(ValueType::kI4) { value_.i4 = value; }
  Variant(float value) : type_(ValueType::kR4) { value_.r4 = value; }
  Variant(bool value) : type_(ValueType::kBool) { value_.i2 = value ? kTrue : kFalse; }
  Variant(const char* text) : Variant(std::string_view(text)) {}
  Variant(char* text) : Variant(std::string_view(text)) {}
  Variant(std::string_view text);  // std::bad_alloc without memory
  template <class T>
  Variant(T*) = delete;  // would be taken for a boolean

  static Variant NullString();

  // To a variable of the caller, or to none.
  template <class T>
  static Variant ByReference(T* target) {
    return Variant(kTypeOf<T>, Passing::kByReference, target, target != nullptr ? sizeof(T) : 0);
  }

  template <class T, std::size_t kExtent>
  static Variant Block(std::span<T, kExtent> elements) {
    return Variant(kTypeOf<T>, Passing::kBlock, elements.data(), elements.size_bytes());
  }

  ValueType Type() const { return type_; }
  Passing HowPassed() const { return passing_; }

  // The value; of another type than this, 0, false or an empty text.
  std::int16_t I2() const { return Holds(ValueType::kI2) ? value_.i2 : std::int16_t{0}; }
  std::int32_t I4() const { return Holds(ValueType::kI4) ? value_.i4 : 0; }
  float R4() const { return Holds(ValueType::kR4) ? value_.r4 : 0; }
  bool Bool() const { return Holds(ValueType::kBool) && value_.i2 != kFalse; }
  std::string_view Text() const { return text_ ? std::string_view(text_.get(), bytes_) : std::string_view(); }
  bool IsNullString() const { return Holds(ValueType::kString) && !text_; }

  // A boolean as its 16 bits: -1 or 0.
  std::int16_t BoolBits() const { return Holds(ValueType::kBool) ? value_.i2 : kFalse; }

  // Of a reference or a block: where it is, null for none, and how much room it has.
  void* Target() const { return passing_ == Passing::kByValue ? nullptr : value_.target; }
  std::size_t TargetBytes() const { return passing_ == Passing::kByValue ? 0 : bytes_; }

 private:
  static constexpr std::int16_t kTrue = -1;
  static constexpr std::int16_t kFalse = 0;

  struct Free {
    void operator()(char* text) const { std::free(text); }
  };

  Variant(ValueType type, Passing passing, void* target, std::size_t bytes)
      : type_(type), passing_(passing), bytes_(target != nullptr ? bytes : 0) {
    value_.target = target;
  }

  bool Holds(ValueType type) const { return type_ == type && passing_ == Passing::kByValue; }

  ValueType type_ = ValueType::kEmpty;
  Passing passing_ = Passing::kByValue;
  std::size_t bytes_ = 0;  // of the target or the text
  union {
    std::int16_t i2;
    std::int32_t i4;
    float r4;
    void* target;
  } value_{};
  std::unique_ptr<char, Free> text_;
};

}  // namespace wavelock
