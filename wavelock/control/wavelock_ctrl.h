// CWavelockCtrl: the one object that a client meets. It holds one recording and hands every call to it.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>

#include "wavelock/control/control_base.h"
#include "wavelock/platform/host.h"
#include "wavelock/recording/recording_file.h"

namespace wavelock {

// Reads only. After a close the facts of the last file go on being answered; before the first open they are
// those of an empty recording. One control serves one thread. Nothing throws.
//
// Sizes of blocks are in bytes and exact: a block of any other size than what the range needs is refused, and
// the buffer left alone.
class CWavelockCtrl : public ControlBase {
 public:
  // Messages and questions of the recording go to the host's modal interface, so that opening may wait for a
  // person. The host outlives the control.
  explicit CWavelockCtrl(Host& host = Host::Default()) noexcept;
  CWavelockCtrl(const CWavelockCtrl&) = delete;
  CWavelockCtrl& operator=(const CWavelockCtrl&) = delete;

  // A file that is still open is not closed first: the client does that.
  bool OpenInputDataFile(const std::string& szFileName) noexcept;

  // False when no file was open. An averaged recording is loaded whole when it is opened, and has none.
  bool CloseInputDataFile() noexcept;

  // The last open succeeded and no close came after it.
  bool GetFileActive() const noexcept { return fileActive != 0; }

  // ---- what the file is

  std::int16_t GetNumChannels() noexcept;
  std::int32_t GetRate() noexcept;                    // samples per second
  std::int16_t GetAcqType() noexcept;                 // a DataKind, or -100 without a setup
  std::optional<std::string> GetFileName() noexcept;  // without its folder
  std::int32_t GetNumContinuousPoints() noexcept;     // says nothing of files of other kinds

  // ---- continuous samples from nStart up to, not including, nEnd: all channels of the first, then of the
  // next

  // Stored integers of the file's own width, 2 or 4 bytes, by either of the two.
  bool GetContinuousShortBlock(std::int32_t nStart, std::int32_t nEnd, std::int16_t* pBlock,
                               std::int32_t nBlockSize) noexcept;
  bool GetContinuousIntBlock(std::int32_t nStart, std::int32_t nEnd, std::int32_t* pBlock,
                             std::int32_t nBlockSize) noexcept;
  bool GetContinuousFloatBlock(std::int32_t nStart, std::int32_t nEnd, float* pBlock,
                               std::int32_t nBlockSize) noexcept;  // microvolts

  // ---- events

  std::int32_t GetEventCount() noexcept;

  // The index is an input, passed like the outputs. Outputs that are null are skipped; a refused index leaves
  // all of them alone.
  bool GetEvent(std::int32_t* nEventIndex, std::int32_t* nStimType, std::int32_t* nKeyboard,
                std::int32_t* nKeypad, std::int32_t* nPoint) noexcept;

  // ---- epochs

  std::int32_t GetEpochCount() noexcept;  // 1 for every kind but epoched
  bool GetEpochShortBlock(std::int32_t nIndex, std::int16_t* pBlock, std::int32_t nBlockSize) noexcept;
  bool GetEpochIntBlock(std::int32_t nIndex, std::int32_t* pBlock, std::int32_t nBlockSize) noexcept;
  bool GetEpochFloatBlock(std::int32_t nIndex, float* pBlock, std::int32_t nBlockSize) noexcept;

  // Outputs that are null are skipped. Of `pAccept` only the low byte is written: clear it first.
  bool GetEpochInfo(std::int32_t nEpochIndex, std::int16_t* pTrialType, std::int16_t* pAccept,
                    std::int16_t* pCorrect, float* pReactionTime, std::int16_t* pResponse) noexcept;

  // ---- in a container

  void AboutBox() noexcept;

  bool DoPropExchange(PropertyBag& bag) override;
  void OnResetState() override;
  void OnDraw(Canvas& canvas, const Rectangle& bounds) override;
  std::uint32_t GetControlFlags() override;

  static std::span<const Identifier> PropertyPages() noexcept;

  // Ids of the events that the control sends to its clients: none.
  static constexpr std::span<const std::int32_t> EventTable() noexcept { return {}; }

  // ---- state

  std::unique_ptr<CRecordingFile> recording;  // null only when there was no memory for it
  std::int32_t fileActive = 0;

 private:
  bool ReadContinuousWords(std::int32_t start, std::int32_t end, void* block, std::int32_t bytes) noexcept;
  bool ReadEpochWords(std::int32_t index, void* block, std::int32_t bytes) noexcept;

  Host& host_;
};

}  // namespace wavelock
