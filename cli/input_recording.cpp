#include "cli/input_recording.h"

#include <algorithm>

#include "cli/complaint.h"

namespace wavelock::command {
namespace {

// Messages of an open that succeeded all the same.
constexpr MessageNumber kLosses[] = {MessageNumber::kEventsNotRead, MessageNumber::kPairMatrixNotRead,
                                     MessageNumber::kRateRefused, MessageNumber::kRatesDisagree};

}  // namespace

std::unique_ptr<File> ReadOnlyFiles::Open(const std::string& path, OpenMode mode, std::string* errorText) {
  if (mode == OpenMode::kCreate || mode == OpenMode::kCreateNew) return nullptr;
  return files_.Open(path, OpenMode::kReadOnly, errorText);
}

ModalText NamedModalInterface::Named(ModalText text) {
  if (text.source == ModalSource::kNumbered) shown_.insert(text.number);
  if (text.text.find(path_) == std::string::npos) text.text = path_ + ": " + text.text;
  return text;
}

void NamedModalInterface::ShowMessage(const ModalText& message) {
  modal_.ShowMessage(Named(message));
}

bool NamedModalInterface::AskYesNo(const ModalText& question) {
  return modal_.AskYesNo(Named(question));
}

bool NamedModalInterface::RunDialog(ModalDialog& dialog) {
  const std::string caption = dialog.caption;
  dialog.caption = path_ + ": " + caption;
  const bool isAccepted = modal_.RunDialog(dialog);
  dialog.caption = caption;
  return isAccepted;
}

InputRecording::InputRecording(const std::string& path)
    : path_(path),
      files_(Host::Default().files),
      modal_(Host::Default().modal, path),
      host_{files_, Host::Default().profile, modal_, Host::Default().process},
      recording_(0, host_) {}

std::unique_ptr<InputRecording> InputRecording::Open(const std::string& path) {
  std::unique_ptr<InputRecording> input(new InputRecording(path));
  if (!input->recording_.OpenFile(path)) return nullptr;
  return input;
}

bool InputRecording::HasLoss() const {
  return std::any_of(std::begin(kLosses), std::end(kLosses),
                     [this](MessageNumber number) { return HasShown(number); });
}

bool InputRecording::Require(std::initializer_list<int> kinds) {
  const int kind = recording_.GetFileClass(&recording_.rawHeader);
  if (std::find(kinds.begin(), kinds.end(), kind) != kinds.end()) return true;
  std::string wanted;
  for (const int each : kinds) wanted += (wanted.empty() ? "" : " or ") + std::string(NameOfKind(each));
  Complain(path_, "This needs a recording of " + wanted + " data, and the file holds " +
                      std::string(NameOfKind(kind)) + " data.");
  return false;
}

// A header that could not be used to its end leaves channels that are not those of the data.
bool InputRecording::RequireChannels() {
  if (recording_.GetSetup()->Channels().size() == recording_.rawHeader.header.channelCount) return true;
  Complain(path_, "The header does not tell the channels of the data.");
  return false;
}

std::vector<std::string> LabelsOf(const CSetup& setup) {
  std::vector<std::string> labels;
  for (const SetupChannel& channel : setup.Channels()) labels.emplace_back(channel.label.View());
  return labels;
}

std::string_view NameOfKind(int dataKind) {
  switch (dataKind) {
    case kAverage:
      return "averaged";
    case kEpochs:
      return "epoched";
    case kContinuous:
      return "continuous";
    case kAverageWithStatistics:
      return "averaged with statistics";
    case kTimeFrequency:
      return "time-frequency";
    default:
      return "unknown";
  }
}

}  // namespace wavelock::command
