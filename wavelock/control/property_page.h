// The page that a container shows when it edits the control's properties. The control has none that could be
// edited, so the page holds a placeholder.
#pragma once

#include <cstdint>

#include "wavelock/platform/component_object.h"
#include "wavelock/platform/host.h"

namespace wavelock {

// Texts stay as long as the module is loaded.
struct PropertyPageInfo {
  const char* caption;
  const char* helpText;
  const char* helpFile;
  std::uint32_t helpContext;
  std::int32_t dialogTemplate;
  std::uint32_t propertyCount;
};

class PropertyPage : public Component {
 public:
  static constexpr Identifier kId = *ParseIdentifier("{37AF969E-B022-43AB-B91C-26ED8184F058}");

  virtual const PropertyPageInfo* GetPageInfo() noexcept = 0;

  // Runs the page as a dialog of its own and takes over what the person left. True when it was accepted.
  virtual bool Show() noexcept = 0;

 protected:
  ~PropertyPage() = default;
};

class CWavelockPropPage final : public ComponentObject<PropertyPage> {
 public:
  CWavelockPropPage(ModuleUse& use, Host& host) : ComponentObject(use), host_(host) {}

  const PropertyPageInfo* GetPageInfo() noexcept override;
  bool Show() noexcept override;

 private:
  Host& host_;
};

}  // namespace wavelock
