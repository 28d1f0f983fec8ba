#include "wavelock/control/property_page.h"

#include <string>

#include "wavelock/control/resources.h"

namespace wavelock {

const PropertyPageInfo* CWavelockPropPage::GetPageInfo() noexcept {
  static const PropertyPageInfo info{
      .caption = StringResource(kPropertyPageCaption).data(),  // a literal, so a NUL ends it
      .helpText = "Names to appear in the control",
      .helpFile = "WAVELOCK.HLP",
      .helpContext = 0,
      .dialogTemplate = kPropertyPageDialog,
      .propertyCount = 0,
  };
  return &info;
}

bool CWavelockPropPage::Show() noexcept {
  try {
    ModalDialog dialog{.templateNumber = kPropertyPageDialog,
                       .name = "CWavelockPropPage",
                       .caption = std::string(StringResource(kPropertyPageCaption))};
    dialog.texts = {"The Wavelock Control has no properties."};
    return host_.modal.RunDialog(dialog);
  } catch (...) {
    return false;
  }
}

}  // namespace wavelock
