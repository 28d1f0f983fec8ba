#include "wavelock/control/variant.h"

#include <cstring>
#include <new>

namespace wavelock {

Variant::Variant(std::string_view text)
    : type_(ValueType::kString),
      bytes_(text.size()),
      text_(static_cast<char*>(std::malloc(text.size() + 1))) {
  if (!text_) throw std::bad_alloc();
  std::memcpy(text_.get(), text.data(), text.size());
  text_.get()[text.size()] = '\0';
}

Variant Variant::NullString() {
  Variant null;
  null.type_ = ValueType::kString;
  return null;
}

}  // namespace wavelock
