// The numbered messages: every one, its number and its words in one table.
#pragma once

#include <string>
#include <string_view>

#include "wavelock/platform/modal_interface.h"

namespace wavelock {

enum class MessageNumber : int {
  kNoticeTitle = 3,
  kSetupFileNotWritable = 5,  // takes the file's name
  kContinuousInFrequencyDomain = 1760,
  kNewerTailQuestion = 1761,
  kTooManyChannelsInOldestHeader = 1762,
  kSpectrumWithoutScale = 1763,
  kSamplesClipped = 1764,  // takes the file's name
  kFileNotOpened = 1765,   // takes the path
  kHeadNotRead = 1766,
  kEventsNotRead = 1767,
  kPairMatrixNotRead = 1768,
  kChannelCountRefused = 1769,
  kRateRefused = 1770,
  kRatesDisagree = 1771,
  kEmptyFile = 1772,
  kEventsUnreadableLayout = 1774,
  kEventTableHeadShort = 1775,
  kEventTableTooLarge = 1776,
  kEventTableNotWritten = 1777,
  kMarkersNotSaved = 1778,  // takes the file's name
  kNoDataObject = 1779,
};

// The text with `insertion` in place of its first "%s", if it has one.
std::string WithInsertion(std::string_view text, std::string_view insertion);

// The message with `insertion` in its place, ready to be shown.
ModalText NumberedMessage(MessageNumber number, std::string_view insertion = {});

}  // namespace wavelock
