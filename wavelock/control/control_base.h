// What every control has in common: a version among its stored properties, and nothing to see.
#pragma once

#include <cstdint>

#include "wavelock/control/embedded_control.h"

namespace wavelock {

constexpr std::uint32_t MakeVersion(std::uint16_t majorVersion, std::uint16_t minorVersion) {
  return std::uint32_t{majorVersion} << 16 | minorVersion;
}

class ControlBase {
 public:
  virtual ~ControlBase() = default;

  // The base has no properties of its own.
  virtual bool DoPropExchange(PropertyBag& bag);

  // Brings the properties back to what they are in a new control.
  virtual void OnResetState();

  virtual void OnDraw(Canvas& canvas, const Rectangle& bounds);
  virtual std::uint32_t GetControlFlags();

 protected:
  // Saves `current`, or loads the version by which the properties were saved: `current` for a bag without
  // one.
  bool ExchangeVersion(PropertyBag& bag, std::uint32_t current);

  std::uint32_t LoadedVersion() const { return loadedVersion_; }

 private:
  std::uint32_t loadedVersion_ = 0;
};

}  // namespace wavelock
