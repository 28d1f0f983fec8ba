#include "wavelock/prompts/prompts.h"

namespace wavelock {
namespace {

constexpr char kDontShowAgain[] = "Don't show this again";

}  // namespace

bool CKindPrompt::DoModal(Host& host) {
  ModalDialog dialog{.templateNumber = 362, .name = "CKindPrompt", .caption = "Kind of recording"};
  dialog.texts = {"The file's name and its header disagree about what it holds. Which of them is right?"};
  dialog.choices = {firstReading, secondReading};
  dialog.choice = choice;
  const bool accepted = host.modal.RunDialog(dialog);
  if (accepted) choice = dialog.choice;
  return accepted;
}

bool CModifiedPrompt::DoModal(Host& host) {
  ModalDialog dialog{.templateNumber = 352, .name = "CModifiedPrompt", .caption = "Modified recording"};
  dialog.texts = {
      "This recording was modified by version 4.0 of the software. The setup that it stored is not read."};
  dialog.checkBox = kDontShowAgain;
  dialog.checked = dontShowAgain != 0;
  const bool accepted = host.modal.RunDialog(dialog);
  if (!accepted) return false;
  dontShowAgain = dialog.checked ? 1 : 0;
  if (dontShowAgain != 0) host.profile.SetInt(profile::kState, profile::kHideModifiedWarning, 1);
  return true;
}

bool CNewerVersionPrompt::DoModal(Host& host) {
  ModalDialog dialog{.templateNumber = 1559, .name = "CNewerVersionPrompt", .caption = "Newer version"};
  dialog.texts = {text};
  dialog.checkBox = kDontShowAgain;
  dialog.checked = dontShowAgain != 0;
  const bool accepted = host.modal.RunDialog(dialog);
  if (accepted) dontShowAgain = dialog.checked ? 1 : 0;
  return accepted;
}

}  // namespace wavelock
