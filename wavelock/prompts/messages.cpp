#include "wavelock/prompts/messages.h"

namespace wavelock {
namespace {

struct Entry {
  MessageNumber number;
  std::string_view text;  // "%s" takes the insertion
};

constexpr Entry kMessages[] = {
    {MessageNumber::kNoticeTitle, "Wavelock"},
    {MessageNumber::kSetupFileNotWritable, "The setup file %s cannot be opened for writing."},
    {MessageNumber::kContinuousInFrequencyDomain,
     "This recording is continuous, but its setup claims the frequency domain. "
     "It is opened in the time domain with an axis of one second."},
    {MessageNumber::kNewerTailQuestion,
     "The setup stored in this recording was written by a newer program and may be read wrongly. Open it all "
     "the same?"},
    {MessageNumber::kTooManyChannelsInOldestHeader,
     "The file does not start with a header that is known: read as the oldest one it claims more channels "
     "than that can have."},
    {MessageNumber::kSpectrumWithoutScale,
     "The spectra in this file carry no amplitude scale. They are taken as amplitudes."},
    {MessageNumber::kSamplesClipped,
     "Some values were too large for the samples of %s and were stored as the largest that fit."},
    {MessageNumber::kFileNotOpened, "The file %s cannot be opened."},
    {MessageNumber::kHeadNotRead,
     "The file cannot be used as a recording: its header or its setup cannot be read."},
    {MessageNumber::kEventsNotRead,
     "The events of this recording cannot be read. It is opened without them."},
    {MessageNumber::kPairMatrixNotRead,
     "The table of channel pairs cannot be read. The recording is opened without its pairs."},
    {MessageNumber::kChannelCountRefused, "The header states a number of channels that no recording has."},
    {MessageNumber::kRateRefused, "The header states a sampling rate or a time axis that no recording has."},
    {MessageNumber::kRatesDisagree,
     "The sampling rate in the header and the one of its time axis differ by more than one per cent."},
    {MessageNumber::kEmptyFile, "The file is empty or its first byte cannot be read."},
    {MessageNumber::kEventsUnreadableLayout,
     "Events cannot be read from samples that are stored in this layout."},
    {MessageNumber::kEventTableHeadShort, "The file ends before its event table."},
    {MessageNumber::kEventTableTooLarge, "There is not enough memory for the event table."},
    {MessageNumber::kEventTableNotWritten, "The event table could not be written."},
    {MessageNumber::kMarkersNotSaved,
     "A continuous recording has no place for markers: those of %s were not saved with it."},
    {MessageNumber::kNoDataObject, "A recording of this kind holds no data set that can be loaded whole."},
};

constexpr std::string_view kInsertionMark = "%s";

}  // namespace

std::string WithInsertion(std::string_view text, std::string_view insertion) {
  std::string full(text);
  if (const auto mark = full.find(kInsertionMark); mark != std::string::npos)
    full.replace(mark, kInsertionMark.size(), insertion);
  return full;
}

ModalText NumberedMessage(MessageNumber number, std::string_view insertion) {
  ModalText message{ModalSource::kNumbered, static_cast<int>(number), {}, std::string(insertion)};
  for (const Entry& entry : kMessages) {
    if (entry.number == number) message.text = WithInsertion(entry.text, insertion);
  }
  return message;
}

}  // namespace wavelock
