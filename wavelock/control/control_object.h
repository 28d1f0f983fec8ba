// The control as clients of the module hold it: counted, called by dispatch, embedded by containers.
#pragma once

#include "wavelock/control/dispatch.h"
#include "wavelock/control/embedded_control.h"
#include "wavelock/control/wavelock_ctrl.h"
#include "wavelock/platform/component_object.h"

namespace wavelock {

class ControlObject final : public ComponentObject<Dispatch, EmbeddedControl> {
 public:
  ControlObject(ModuleUse& use, Host& host) : ComponentObject(use), control_(host) {}

  Result GetIdOfName(const char* name, std::int32_t* id) noexcept override;
  Result Invoke(std::int32_t id, const Variant* arguments, std::uint32_t count, Variant* result,
                std::uint32_t* badArgument) noexcept override;
  const InterfaceInfo* GetTypeInfo() noexcept override;
  const TypeLibraryInfo* GetTypeLibrary() noexcept override;

  void Draw(Canvas* canvas, const Rectangle* bounds) noexcept override;
  bool ExchangeProperties(PropertyBag* bag) noexcept override;
  void ResetState() noexcept override { control_.OnResetState(); }
  std::uint32_t Flags() noexcept override { return control_.GetControlFlags(); }
  const Identifier* PropertyPage(std::uint32_t index) noexcept override;

 private:
  // The dispatch interface goes by its own name too.
  void* Find(const Identifier& interfaceId) noexcept override;

  CWavelockCtrl control_;
};

}  // namespace wavelock
