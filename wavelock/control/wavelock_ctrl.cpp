#include "wavelock/control/wavelock_ctrl.h"

#include "wavelock/control/about_box.h"
#include "wavelock/control/identifiers.h"

namespace wavelock {
namespace {

constexpr Identifier kPropertyPages[] = {kPropertyPageClassId};

// What `call` gives for the recording, and `failed` without one or when something is thrown.
template <class Value, class Call>
Value Ask(const std::unique_ptr<CRecordingFile>& recording, Value failed, Call call) noexcept {
  if (!recording) return failed;
  try {
    return call(*recording);
  } catch (...) {
    return failed;
  }
}

// Negative positions become huge ones, which no recording has.
std::uint64_t Widened(std::int32_t position) {
  return static_cast<std::uint64_t>(std::int64_t{position});
}

std::uint16_t* Unsigned(std::int16_t* output) {
  return reinterpret_cast<std::uint16_t*>(output);
}

void Store(std::int32_t* output, std::uint32_t value) {
  if (output != nullptr) *output = static_cast<std::int32_t>(value);
}

void StoreLowByte(std::int16_t* output, std::uint8_t value) {
  if (output != nullptr) *output = static_cast<std::int16_t>((*output & ~0xFF) | value);
}

}  // namespace

CWavelockCtrl::CWavelockCtrl(Host& host) noexcept : host_(host) {
  constexpr int kSpeaks = 0;
  try {
    recording = std::make_unique<CRecordingFile>(kSpeaks, host);
  } catch (...) {
    // Every method answers without a recording.
  }
}

bool CWavelockCtrl::OpenInputDataFile(const std::string& szFileName) noexcept {
  const bool opened = Ask(recording, false, [&](auto& file) { return file.OpenFile(szFileName); });
  fileActive = opened ? 1 : 0;
  return opened;
}

bool CWavelockCtrl::CloseInputDataFile() noexcept {
  fileActive = 0;
  return Ask(recording, false, [](auto& file) { return file.CloseFile(); });
}

std::int16_t CWavelockCtrl::GetNumChannels() noexcept {
  return Ask(recording, std::int16_t{0}, [](auto& file) {
    return file.setup ? static_cast<std::int16_t>(file.setup->channelCount) : std::int16_t{0};
  });
}

std::int32_t CWavelockCtrl::GetRate() noexcept {
  return Ask(recording, 0, [](auto& file) { return file.setup ? file.setup->sampleRate : 0; });
}

std::int16_t CWavelockCtrl::GetAcqType() noexcept {
  constexpr std::int16_t kNoRecording = -1;
  return Ask(recording, kNoRecording,
             [](auto& file) { return static_cast<std::int16_t>(file.GetAcquisitionKind()); });
}

std::optional<std::string> CWavelockCtrl::GetFileName() noexcept {
  return Ask(recording, std::optional<std::string>(),
             [](auto& file) { return std::optional(file.GetFileName()); });
}

std::int32_t CWavelockCtrl::GetNumContinuousPoints() noexcept {
  return Ask(recording, 0, [](auto& file) {
    return static_cast<std::int32_t>(static_cast<std::uint32_t>(file.GetContinuousSampleCount()));
  });
}

bool CWavelockCtrl::GetContinuousShortBlock(std::int32_t nStart, std::int32_t nEnd, std::int16_t* pBlock,
                                            std::int32_t nBlockSize) noexcept {
  return ReadContinuousWords(nStart, nEnd, pBlock, nBlockSize);
}

bool CWavelockCtrl::GetContinuousIntBlock(std::int32_t nStart, std::int32_t nEnd, std::int32_t* pBlock,
                                          std::int32_t nBlockSize) noexcept {
  return ReadContinuousWords(nStart, nEnd, pBlock, nBlockSize);
}

bool CWavelockCtrl::ReadContinuousWords(std::int32_t start, std::int32_t end, void* block,
                                        std::int32_t bytes) noexcept {
  return Ask(recording, false, [&](auto& file) {
    return file.ReadContinuousRaw(Widened(start), Widened(end), block, bytes, 0, 0);
  });
}

bool CWavelockCtrl::GetContinuousFloatBlock(std::int32_t nStart, std::int32_t nEnd, float* pBlock,
                                            std::int32_t nBlockSize) noexcept {
  return Ask(recording, false, [&](auto& file) {
    return file.ReadContinuousFloat(Widened(nStart), Widened(nEnd), pBlock,
                                    static_cast<std::uint32_t>(nBlockSize), 0, 0);
  });
}

std::int32_t CWavelockCtrl::GetEventCount() noexcept {
  return Ask(recording, 0, [](auto& file) { return file.GetEventCount(); });
}

bool CWavelockCtrl::GetEvent(std::int32_t* nEventIndex, std::int32_t* nStimType, std::int32_t* nKeyboard,
                             std::int32_t* nKeypad, std::int32_t* nPoint) noexcept {
  return Ask(recording, false, [&](auto& file) {
    const auto events = std::as_const(file).eventGroup.Elements();
    if (nEventIndex == nullptr || *nEventIndex < 0 || *nEventIndex >= file.GetEventCount()) return false;
    const EventRecord event = events[static_cast<std::size_t>(*nEventIndex)];
    Store(nStimType, event.stimType);
    Store(nKeyboard, event.keyboard);
    Store(nKeypad, event.Keypad());
    Store(nPoint, event.point);
    return true;
  });
}

std::int32_t CWavelockCtrl::GetEpochCount() noexcept {
  return Ask(recording, 0, [](auto& file) { return static_cast<std::int32_t>(file.GetEpochCount()); });
}

bool CWavelockCtrl::GetEpochShortBlock(std::int32_t nIndex, std::int16_t* pBlock,
                                       std::int32_t nBlockSize) noexcept {
  return ReadEpochWords(nIndex, pBlock, nBlockSize);
}

bool CWavelockCtrl::GetEpochIntBlock(std::int32_t nIndex, std::int32_t* pBlock,
                                     std::int32_t nBlockSize) noexcept {
  return ReadEpochWords(nIndex, pBlock, nBlockSize);
}

bool CWavelockCtrl::ReadEpochWords(std::int32_t index, void* block, std::int32_t bytes) noexcept {
  return Ask(recording, false, [&](auto& file) {
    return file.ReadEpochRaw(static_cast<std::uint32_t>(index), block, static_cast<std::uint32_t>(bytes));
  });
}

bool CWavelockCtrl::GetEpochFloatBlock(std::int32_t nIndex, float* pBlock, std::int32_t nBlockSize) noexcept {
  return Ask(recording, false, [&](auto& file) {
    return file.ReadEpochFloat(static_cast<std::uint32_t>(nIndex), pBlock,
                               static_cast<std::uint32_t>(nBlockSize));
  });
}

bool CWavelockCtrl::GetEpochInfo(std::int32_t nEpochIndex, std::int16_t* pTrialType, std::int16_t* pAccept,
                                 std::int16_t* pCorrect, float* pReactionTime,
                                 std::int16_t* pResponse) noexcept {
  return Ask(recording, false, [&](auto& file) {
    std::uint8_t accept = 0;
    if (static_cast<std::uint32_t>(nEpochIndex) >= file.GetEpochCount() ||
        !file.GetEpochInfo(nEpochIndex, Unsigned(pTrialType), &accept, Unsigned(pCorrect), pReactionTime,
                           Unsigned(pResponse))) {
      return false;
    }
    StoreLowByte(pAccept, accept);
    return true;
  });
}

void CWavelockCtrl::AboutBox() noexcept {
  try {
    CAboutBox().DoModal(host_);
  } catch (...) {
    // Without memory there is nothing to show.
  }
}

bool CWavelockCtrl::DoPropExchange(PropertyBag& bag) {
  return ExchangeVersion(bag, MakeVersion(kMajorVersion, kMinorVersion)) && ControlBase::DoPropExchange(bag);
}

void CWavelockCtrl::OnResetState() {
  ControlBase::OnResetState();
}

void CWavelockCtrl::OnDraw(Canvas& canvas, const Rectangle& bounds) {
  canvas.FillRectangle(bounds, Brush::kWhite);
  canvas.DrawEllipse(bounds);
}

std::uint32_t CWavelockCtrl::GetControlFlags() {
  return ControlBase::GetControlFlags() | kWindowlessActivate;
}

std::span<const Identifier> CWavelockCtrl::PropertyPages() noexcept {
  return kPropertyPages;
}

}  // namespace wavelock
