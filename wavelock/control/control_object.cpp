#include "wavelock/control/control_object.h"

#include "wavelock/control/identifiers.h"
#include "wavelock/control/wavelock_dispatch.h"

namespace wavelock {

Result ControlObject::GetIdOfName(const char* name, std::int32_t* id) noexcept {
  if (name == nullptr || id == nullptr) return Result::kNullPointer;
  const auto found = FindMethodId(name);
  if (!found) return Result::kUnknownName;
  *id = *found;
  return Result::kDone;
}

Result ControlObject::Invoke(std::int32_t id, const Variant* arguments, std::uint32_t count, Variant* result,
                             std::uint32_t* badArgument) noexcept {
  if (arguments == nullptr && count != 0) return Result::kNullPointer;
  return InvokeMethod(control_, id, {arguments, count}, result, badArgument);
}

const InterfaceInfo* ControlObject::GetTypeInfo() noexcept {
  return TypeLibrary().classes[0].dispatch;
}

const TypeLibraryInfo* ControlObject::GetTypeLibrary() noexcept {
  return &TypeLibrary();
}

void ControlObject::Draw(Canvas* canvas, const Rectangle* bounds) noexcept {
  if (canvas != nullptr && bounds != nullptr) control_.OnDraw(*canvas, *bounds);
}

bool ControlObject::ExchangeProperties(PropertyBag* bag) noexcept {
  return bag != nullptr && control_.DoPropExchange(*bag);
}

const Identifier* ControlObject::PropertyPage(std::uint32_t index) noexcept {
  const auto pages = CWavelockCtrl::PropertyPages();
  return index < pages.size() ? &pages[index] : nullptr;
}

void* ControlObject::Find(const Identifier& interfaceId) noexcept {
  return ComponentObject::Find(interfaceId == kDispatchId ? Dispatch::kId : interfaceId);
}

}  // namespace wavelock
