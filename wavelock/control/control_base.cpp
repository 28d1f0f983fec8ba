#include "wavelock/control/control_base.h"

namespace wavelock {
namespace {

constexpr char kVersionProperty[] = "_Version";

// Holds nothing, so that loading from it gives every property its first value.
class EmptyBag : public PropertyBag {
 public:
  bool IsLoading() const noexcept override { return true; }
  bool LoadNumber(const char*, std::uint32_t*) noexcept override { return false; }
  bool SaveNumber(const char*, std::uint32_t) noexcept override { return false; }
};

}  // namespace

bool ControlBase::DoPropExchange(PropertyBag& /*bag*/) {
  return true;
}

void ControlBase::OnResetState() {
  EmptyBag empty;
  DoPropExchange(empty);
}

void ControlBase::OnDraw(Canvas& /*canvas*/, const Rectangle& /*bounds*/) {}

std::uint32_t ControlBase::GetControlFlags() {
  return kFastBeginPaint | kClipPaint;
}

bool ControlBase::ExchangeVersion(PropertyBag& bag, std::uint32_t current) {
  if (!bag.IsLoading()) return bag.SaveNumber(kVersionProperty, current);
  loadedVersion_ = current;
  bag.LoadNumber(kVersionProperty, &loadedVersion_);
  return true;
}

}  // namespace wavelock
