// The fixed block at the start of a recording: a header of 900 bytes and 75 bytes for each channel. The
// structures here are its current layout, byte for byte; older layouts are brought to this one when a file is
// opened.
//
// A field that is called dead is kept in its place and read by nobody; the same holds for the reserved ones.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <tuple>

#include "wavelock/numerics/stored.h"

namespace wavelock {

struct RecordingHeader {
  StoredText<12> versionText;  // "V" first for this layout, anything else for the oldest one
  Stored<std::uint32_t> tailPositionLow;
  Stored<std::uint32_t> tailPositionHigh;  // counts in files of 0x40000000 bytes or more
  Stored<std::uint8_t> fileForm;
  StoredText<20> subjectTextA;
  StoredText<20> operatorName;
  StoredText<20> researcherName;
  StoredText<20> subjectTextB;
  StoredText<20> instituteName;
  StoredText<20> subjectTextC;
  Stored<std::int16_t> subjectAge;
  Stored<char> subjectSex;   // M, F or U
  Stored<char> subjectHand;  // R, L, M or U
  StoredText<20> subjectTextD;
  StoredText<20> subjectTextE;
  StoredText<20> subjectTextF;
  StoredText<20> subjectTextG;
  StoredText<10> recordDate;  // mm/dd/yy, mm/dd/yyyy or mmddyyyy
  StoredText<12> recordTime;
  Stored<float> summaryA;
  StoredBytes<4> reserved251;
  Stored<std::int16_t> summaryB;
  StoredText<38> dashTextA;  // dead
  Stored<float> summaryScale;
  Stored<float> summaryC;
  Stored<float> summaryD;
  StoredText<46> dashTextB;          // dead
  Stored<std::uint32_t> eventCount;  // written only
  StoredBytes<1> reserved357;
  StoredBytes<2> oldBytes358;  // dead
  Stored<std::uint16_t> sweepCount;
  Stored<std::uint16_t> averagedSweeps;  // of an average; number of epochs of an epoched file
  Stored<std::uint16_t> acceptedSweeps;
  Stored<std::uint16_t> rejectedSweeps;
  Stored<std::uint16_t> pointCount;
  Stored<std::uint16_t> channelCount;
  Stored<std::uint16_t> countC;
  Stored<std::uint8_t> frequencyDomain;
  Stored<std::int8_t> hasVariance;
  Stored<std::uint16_t> rateCode;  // samples per second, coded: see DecodeRate
  Stored<double> defaultCalibration;
  Stored<std::int8_t> flagA;
  Stored<std::uint8_t> oldByte387;  // dead
  StoredBytes<2> reserved388;
  Stored<float> valueA;
  StoredBytes<4> oldBlock394;  // dead, with the two behind it
  std::array<Stored<float>, 2> oldValues398;
  StoredBytes<2> oldField406;  // dead
  Stored<std::int16_t> indexA;
  std::array<Stored<std::uint16_t>, 2> oldField410;  // dead
  Stored<std::int8_t> flagB;
  StoredBytes<3> reserved415;
  Stored<std::int16_t> windowPoints;
  StoredBytes<6> reserved420;
  Stored<std::int16_t> valueB;
  std::array<Stored<std::uint16_t>, 3> oldField428;  // dead
  StoredBytes<4> reserved434;
  Stored<float> ampGain;               // written only
  Stored<std::uint8_t> lowpassIndex;   // written only
  Stored<std::uint8_t> highpassIndex;  // written only
  Stored<std::uint8_t> mainsOn;        // written only
  StoredBytes<1> reserved445;
  Stored<std::int8_t> baselineFlag;
  Stored<float> windowAStart;  // seconds, like the other windows
  Stored<float> windowAEnd;
  Stored<std::int8_t> rejectFlag;
  Stored<float> windowBStart;
  Stored<float> windowBEnd;
  Stored<float> rejectMin;
  Stored<float> rejectMax;
  Stored<std::int8_t> triggerMode;  // 1 counts as 2
  Stored<float> triggerValue;
  Stored<std::int8_t> triggerChannel;
  StoredBytes<2> reserved478;
  Stored<float> triggerX;
  StoredBytes<8> oldBlock484;  // dead
  Stored<std::uint8_t> triggerFlagCode;
  StoredBytes<3> reserved493;
  Stored<std::int8_t> autoScale;
  Stored<float> displayMin;
  Stored<float> displayMax;
  Stored<float> timeStart;  // seconds
  Stored<float> timeEnd;    // seconds, behind the last point; hertz in the frequency domain
  Stored<float> viewStart;
  Stored<float> viewEnd;
  StoredBytes<4> reserved521;
  Stored<float> fixValue525;   // dead
  StoredBytes<9> oldBlock529;  // dead
  Stored<std::uint8_t> acquisitionMode;
  StoredBytes<1> oldByte539;  // dead
  std::array<std::uint8_t, 10> rawBlock540;
  Stored<std::int8_t> triggerCommon;
  Stored<float> displayStart;  // seconds, or hertz in the frequency domain
  Stored<float> displayEnd;
  Stored<std::uint8_t> spectrumSource;
  StoredText<42> dashTextC;  // dead
  Stored<float> valueC;      // dead
  StoredText<34> dashTextD;  // dead
  StoredText<35> dashTextE;  // dead
  Stored<std::uint8_t> spectrumScale;
  Stored<std::uint8_t> fixByte676;
  Stored<float> fixValue677;
  StoredBytes<1> reserved681;
  Stored<std::uint8_t> mainsCode;
  Stored<std::int16_t> gainBase;
  StoredBytes<9> reserved685;
  Stored<std::int16_t> filterMode;
  StoredBytes<2> reserved696;
  Stored<float> filterValueA;
  Stored<std::int16_t> filterValueB;
  Stored<std::int16_t> filterValueC;
  Stored<std::uint16_t> filterValueD;
  Stored<std::uint16_t> filterValueE;
  Stored<float> filterValueF;
  Stored<float> filterValueG;
  Stored<std::int16_t> filterValueH;
  StoredText<40> dashTextF;  // dead
  StoredText<40> dashTextG;  // dead
  Stored<float> binWidth;    // hertz per point in the frequency domain
  Stored<std::int8_t> headerRevision;
  Stored<std::uint16_t> countD;
  StoredBytes<1> reserved807;
  StoredBytes<8> reserved808;
  Stored<float> boxWidth;  // on the display grid of 640 by 187
  Stored<float> boxHeight;
  Stored<std::int8_t> flagC;
  StoredBytes<5> reserved825;
  std::array<Stored<float>, 6> fixBlock830;  // dead
  StoredBytes<8> reserved854;
  Stored<std::uint16_t> fixField862;       // dead
  Stored<std::uint32_t> sampleCountField;  // written only
  Stored<std::uint8_t> fixFlag868;         // dead, like the six behind it
  Stored<float> fixBlock869;
  Stored<std::uint16_t> fixBlock873;
  Stored<float> fixBlock875;
  Stored<std::uint16_t> fixBlock879;
  Stored<std::uint8_t> fixBlock881;
  Stored<std::int8_t> fixBlock882;
  StoredBytes<1> reserved883;
  Stored<std::uint8_t> timeFrequencyFlag;
  Stored<std::uint8_t> sampleLayout;         // a SampleLayout, of continuous samples
  Stored<std::uint32_t> eventTablePosition;  // low 32 bits
  StoredBytes<4> reserved890;
  Stored<std::uint32_t> blockBytes;  // of one channel in one block of layout 3
  Stored<std::int8_t> headerByteA;
  Stored<std::uint8_t> headerByteB;
};

struct ChannelRecord {
  StoredText<10> label;
  Stored<std::int8_t> channelLink;  // dead: a channel index or -1
  Stored<std::int8_t> channelType;
  Stored<std::int8_t> channelFlagA;
  Stored<std::uint8_t> enabled;
  Stored<std::int8_t> channelFlagC;
  Stored<std::uint16_t> sweeps;
  StoredBytes<2> reserved17;
  Stored<float> boxX;  // on the display grid of 640 by 187, whose vertical origin is 13
  Stored<float> boxY;
  StoredBytes<4> reserved27;
  StoredBytes<4> reserved31;
  Stored<float> signalRatio;
  StoredBytes<4> reserved39;
  StoredBytes<4> reserved43;
  StoredBytes<2> reserved47;
  StoredBytes<1> reserved49;
  Stored<std::int8_t> channelFlagB;
  StoredBytes<8> reserved51;
  Stored<float> calibration;  // 204.8 times the microvolts of one count
  Stored<std::int8_t> gainIndex;
  Stored<std::int8_t> highpassIndex;
  Stored<std::int8_t> lowpassIndex;
  Stored<std::uint8_t> layoutIndex;
  Stored<std::uint8_t> boxScale;
  Stored<std::uint8_t> channelFlagD;
  Stored<std::uint8_t> physicalChannel;
  StoredBytes<1> reserved70;
  Stored<float> sensitivity;
};

static_assert(sizeof(RecordingHeader) == 900 && alignof(RecordingHeader) == 1);
static_assert(sizeof(ChannelRecord) == 75 && alignof(ChannelRecord) == 1);

// One field out of place moves all behind it: the first field behind every gap, and those that are read one
// by one.
static_assert(offsetof(RecordingHeader, tailPositionLow) == 12);
static_assert(offsetof(RecordingHeader, fileForm) == 20);
static_assert(offsetof(RecordingHeader, subjectAge) == 141);
static_assert(offsetof(RecordingHeader, recordDate) == 225);
static_assert(offsetof(RecordingHeader, recordTime) == 235);
static_assert(offsetof(RecordingHeader, summaryB) == 255);
static_assert(offsetof(RecordingHeader, summaryScale) == 295);
static_assert(offsetof(RecordingHeader, eventCount) == 353);
static_assert(offsetof(RecordingHeader, oldBytes358) == 358);
static_assert(offsetof(RecordingHeader, pointCount) == 368);
static_assert(offsetof(RecordingHeader, defaultCalibration) == 378);
static_assert(offsetof(RecordingHeader, valueA) == 390);
static_assert(offsetof(RecordingHeader, oldField406) == 406);
static_assert(offsetof(RecordingHeader, windowPoints) == 418);
static_assert(offsetof(RecordingHeader, valueB) == 426);
static_assert(offsetof(RecordingHeader, ampGain) == 438);
static_assert(offsetof(RecordingHeader, baselineFlag) == 446);
static_assert(offsetof(RecordingHeader, triggerX) == 480);
static_assert(offsetof(RecordingHeader, triggerFlagCode) == 492);
static_assert(offsetof(RecordingHeader, autoScale) == 496);
static_assert(offsetof(RecordingHeader, fixValue525) == 525);
static_assert(offsetof(RecordingHeader, acquisitionMode) == 538);
static_assert(offsetof(RecordingHeader, triggerCommon) == 550);
static_assert(offsetof(RecordingHeader, valueC) == 602);
static_assert(offsetof(RecordingHeader, spectrumScale) == 675);
static_assert(offsetof(RecordingHeader, mainsCode) == 682);
static_assert(offsetof(RecordingHeader, filterMode) == 694);
static_assert(offsetof(RecordingHeader, filterValueA) == 698);
static_assert(offsetof(RecordingHeader, binWidth) == 800);
static_assert(offsetof(RecordingHeader, headerRevision) == 804);
static_assert(offsetof(RecordingHeader, boxWidth) == 816);
static_assert(offsetof(RecordingHeader, fixBlock830) == 830);
static_assert(offsetof(RecordingHeader, fixField862) == 862);
static_assert(offsetof(RecordingHeader, fixBlock882) == 882);
static_assert(offsetof(RecordingHeader, timeFrequencyFlag) == 884);
static_assert(offsetof(RecordingHeader, blockBytes) == 894);
static_assert(offsetof(ChannelRecord, sweeps) == 15);
static_assert(offsetof(ChannelRecord, boxX) == 19);
static_assert(offsetof(ChannelRecord, reserved27) == 27);
static_assert(offsetof(ChannelRecord, signalRatio) == 35);
static_assert(offsetof(ChannelRecord, reserved47) == 47);
static_assert(offsetof(ChannelRecord, channelFlagB) == 50);
static_assert(offsetof(ChannelRecord, calibration) == 59);
static_assert(offsetof(ChannelRecord, sensitivity) == 71);

// The members that no field has, all of them.
inline constexpr std::tuple kReservedOfHeader(&RecordingHeader::reserved251, &RecordingHeader::reserved357,
                                              &RecordingHeader::reserved388, &RecordingHeader::reserved415,
                                              &RecordingHeader::reserved420, &RecordingHeader::reserved434,
                                              &RecordingHeader::reserved445, &RecordingHeader::reserved478,
                                              &RecordingHeader::reserved493, &RecordingHeader::reserved521,
                                              &RecordingHeader::reserved681, &RecordingHeader::reserved685,
                                              &RecordingHeader::reserved696, &RecordingHeader::reserved807,
                                              &RecordingHeader::reserved808, &RecordingHeader::reserved825,
                                              &RecordingHeader::reserved854, &RecordingHeader::reserved883,
                                              &RecordingHeader::reserved890);
inline constexpr std::tuple kReservedOfChannel(&ChannelRecord::reserved17, &ChannelRecord::reserved27,
                                               &ChannelRecord::reserved31, &ChannelRecord::reserved39,
                                               &ChannelRecord::reserved43, &ChannelRecord::reserved47,
                                               &ChannelRecord::reserved49, &ChannelRecord::reserved51,
                                               &ChannelRecord::reserved70);

template <class Record, std::size_t... kSizes>
constexpr std::size_t BytesIn(const std::tuple<StoredBytes<kSizes> Record::*...>&) {
  return (kSizes + ...);
}
static_assert(BytesIn(kReservedOfHeader) == 69 && BytesIn(kReservedOfChannel) == 30);

// Values of `sampleLayout`. Those above are read like kPlain and counted like kBlocks.
enum SampleLayout : int {
  kWithTriggers = 0,  // two trigger words behind the channels of each sample
  kPlain = 1,
  kWithLeadingWord = 2,  // one word ahead of the channels of each sample
  kBlocks = 3,           // blocks of one run of samples for each channel
};

inline constexpr int kFirstRevisionWithTail = 14;
inline constexpr int kModifiedRevision = 15;  // by a program whose tails are not to be trusted

inline constexpr int kMaxChannels = 512;

// The whole block in memory, with room for the most channels that a recording can have.
struct HeaderImage {
  RecordingHeader header;
  std::array<ChannelRecord, kMaxChannels> channels;

  // The records of the channels that the header counts, at most all of them.
  std::span<ChannelRecord> ChannelsInUse() { return std::span(channels).first(UsedCount()); }
  std::span<const ChannelRecord> ChannelsInUse() const { return std::span(channels).first(UsedCount()); }

 private:
  std::size_t UsedCount() const {
    return header.channelCount < kMaxChannels ? std::size_t{header.channelCount} : std::size_t{kMaxChannels};
  }
};
static_assert(sizeof(HeaderImage) == 900 + 512 * 75);

// Bytes of the block for that many channels.
inline constexpr std::size_t HeaderSizeFor(int channelCount) {
  return sizeof(RecordingHeader) + static_cast<std::size_t>(channelCount) * sizeof(ChannelRecord);
}

// Setups may have more channels than any reader of a header takes; these are counts whose block can be
// written.
inline constexpr bool IsStorableChannelCount(int count) {
  constexpr int kMost = 1 << 20;
  return count >= 0 && count <= kMost;
}

inline constexpr bool IsChannelCount(int count) {
  return count >= 1 && count <= kMaxChannels;
}

}  // namespace wavelock
