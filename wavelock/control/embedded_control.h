// What a container of windows needs of a control that it embeds, beside the control's own methods.
#pragma once

#include <cstdint>

#include "wavelock/control/canvas.h"
#include "wavelock/platform/component.h"

namespace wavelock {

// Where a container keeps the properties of its controls.
class PropertyBag {
 public:
  virtual bool IsLoading() const noexcept = 0;

  // False when the bag has no such number; `*value` is then as it was.
  virtual bool LoadNumber(const char* name, std::uint32_t* value) noexcept = 0;
  virtual bool SaveNumber(const char* name, std::uint32_t value) noexcept = 0;

 protected:
  ~PropertyBag() = default;
};

// Bits of what a control tells of itself.
enum ControlFlags : std::uint32_t {
  kFastBeginPaint = 0x1,
  kClipPaint = 0x2,
  kWindowlessActivate = 0x10,
};

class EmbeddedControl : public Component {
 public:
  static constexpr Identifier kId = *ParseIdentifier("{709D5B2A-F890-4E0E-9B06-746508B0A4A5}");

  virtual void Draw(Canvas* canvas, const Rectangle* bounds) noexcept = 0;

  // Loads or saves, as the bag asks for. False when the bag failed.
  virtual bool ExchangeProperties(PropertyBag* bag) noexcept = 0;
  virtual void ResetState() noexcept = 0;
  virtual std::uint32_t Flags() noexcept = 0;

  // The class of the property page of that index; null behind the last.
  virtual const Identifier* PropertyPage(std::uint32_t index) noexcept = 0;

 protected:
  ~EmbeddedControl() = default;
};

}  // namespace wavelock
