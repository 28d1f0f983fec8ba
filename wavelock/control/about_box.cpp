#include "wavelock/control/about_box.h"

#include "wavelock/control/resources.h"

namespace wavelock {

void CAboutBox::DoModal(Host& host) {
  ModalDialog dialog{
      .templateNumber = kAboutDialog, .name = "CAboutBox", .caption = "About Wavelock Control"};
  dialog.texts = {"Wavelock Control, Version 1.0"};
  dialog.icon = kIcon;
  host.modal.RunDialog(dialog);
}

}  // namespace wavelock
