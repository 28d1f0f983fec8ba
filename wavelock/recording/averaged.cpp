// The sections of an averaged file: floats, channel by channel. Of each channel the file has the average,
// with its variance if the header says so, and, if it counts accepted sweeps, two values for each of these.
#include <algorithm>
#include <cstring>
#include <limits>
#include <new>
#include <optional>

#include "wavelock/numerics/positions.h"
#include "wavelock/numerics/transpose.h"
#include "wavelock/prompts/messages.h"
#include "wavelock/recording/recording_file.h"
#include "wavelock/recording/statistics.h"

namespace wavelock {

// Where one section lies and what each of its channels takes.
struct SectionShape {
  std::uint64_t position;
  std::size_t prefix;
  std::size_t values;

  std::size_t RowBytes() const { return prefix + values * sizeof(float); }
};

namespace {

enum Section : int { kAverageSection = 1, kVarianceSection = 2, kFirstFsp = 3, kSecondFsp = 4 };

// Ahead of each channel of the average; written as zero.
constexpr std::size_t kAveragePrefix = 5;

// Bytes of whole channels that are worked on at a time.
constexpr std::size_t kChunkBytes = 512 * 1024;
// At least so many channels, so that lines of the cache are filled at once; fewer than half a line is slow.
constexpr std::size_t kFewestAtOnce = 16;
// Of each of these channels, so that what is worked on stays in the innermost cache.
constexpr std::size_t kMostValuesAtOnce = 256;

bool HasSection(const RecordingHeader& header, int section) {
  switch (section) {
    case kAverageSection:
      return true;
    case kVarianceSection:
      return header.hasVariance != 0;
    case kFirstFsp:
    case kSecondFsp:
      return header.acceptedSweeps != 0;
    default:
      return false;
  }
}

SectionShape ShapeOf(const RecordingHeader& header, int section, std::uint64_t dataStart) {
  const std::uint64_t channels = header.channelCount;
  const std::size_t points = header.pointCount;
  const std::size_t sweeps = header.acceptedSweeps;
  SectionShape shape{dataStart, kAveragePrefix, points};
  if (section == kAverageSection) return shape;
  shape = {shape.position + shape.RowBytes() * channels, 0, points};
  if (section == kVarianceSection) return shape;
  if (HasSection(header, kVarianceSection)) shape.position += shape.RowBytes() * channels;
  shape.values = sweeps;
  if (section == kSecondFsp) shape.position += shape.RowBytes() * channels;
  return shape;
}

std::size_t ChannelsAtOnce(const SectionShape& shape) {
  return std::max(kFewestAtOnce, kChunkBytes / std::max<std::size_t>(1, shape.RowBytes()));
}

std::span<float> TakeFloats(WorkBuffer& buffer, std::size_t count) {
  const std::span<std::byte> bytes = buffer.Take(count * sizeof(float));
  return {reinterpret_cast<float*>(bytes.data()), bytes.size() / sizeof(float)};
}

// ---- old files

bool IsOldSpectrum(const RecordingHeader& header) {
  constexpr int kOtherMode = 7;
  return header.frequencyDomain == 1 && header.spectrumSource == 0 && header.acquisitionMode != kOtherMode &&
         header.fileForm != 6 && header.fileForm != 3;
}

// Spectra before revision 11 were stored as root mean square or as half amplitudes; the factor brings them to
// amplitudes, and their variance to its square.
float DomainFactor(const RecordingHeader& header, int headerRevision, int section) {
  constexpr int kFirstRevisionOfAmplitudes = 11;
  constexpr float kRootOfTwo = 1.41421356F;
  if (headerRevision >= kFirstRevisionOfAmplitudes || !IsOldSpectrum(header)) return 1;
  const bool isVariance = section == kVarianceSection;
  switch (header.spectrumScale) {
    case 1:
      return isVariance ? 2.0F : kRootOfTwo;
    case 2:
      return isVariance ? 4.0F : 2.0F;
    default:
      return 1;
  }
}

// Before revision 13 the sensitivity was left out of averaged powers. Whether that is so here.
bool LacksSensitivity(const HeaderImage& image, int headerRevision) {
  constexpr int kFirstRevisionWithSensitivity = 13;
  constexpr int kPowers = 2;
  const auto channels = image.ChannelsInUse();
  const bool anyOther = std::any_of(channels.begin(), channels.end(), [](const ChannelRecord& channel) {
    return !(channel.sensitivity == 1.0F);
  });
  return anyOther && headerRevision < kFirstRevisionWithSensitivity && image.header.summaryB >= 2 &&
         image.header.spectrumScale == kPowers && IsOldSpectrum(image.header);
}

// ---- values

// Values of one channel as they lie in the file, into numbers that can be worked on.
void TakeValues(const std::byte* stored, std::span<float> values) {
  if (!values.empty()) std::memcpy(values.data(), stored, values.size_bytes());
}

void Multiply(std::span<float> values, float factor) {
  for (float& value : values) value *= factor;
}

void ApplyRules(const SectionRules& rules, std::size_t channel, std::span<float> values) {
  if (rules.domain != 1) Multiply(values, rules.domain);
  if (rules.hasSensitivities) Multiply(values, rules.sensitivities[channel]);
}

void ScaleAverage(std::span<float> values, double sweeps, double scale, double half) {
  for (float& value : values) value = static_cast<float>(value / sweeps * scale * half);
}

void UnscaleAverage(std::span<float> values, double sweeps, double scale) {
  for (float& value : values) value = static_cast<float>(value / scale * sweeps);
}

// ---- what a setup says of a section to be written, wherever that will lie

SectionShape ShapeToWrite(const CSetup& setup, int section) {
  const bool isOfPoints = section == kAverageSection || section == kVarianceSection;
  const std::int32_t values = isOfPoints ? setup.pointCount : setup.acceptedSweeps;
  const std::size_t prefix = section == kAverageSection ? kAveragePrefix : 0;
  return {0, prefix, static_cast<std::size_t>(std::max(values, 0))};
}

// Nothing for sections that no file can hold.
std::optional<std::int32_t> SizeToWrite(const CSetup& setup, int section) {
  const auto channels = static_cast<std::uint64_t>(std::max(setup.channelCount, 0));
  const auto size = CheckedMultiply(channels, ShapeToWrite(setup, section).RowBytes());
  if (!size || *size > std::numeric_limits<std::int32_t>::max()) return std::nullopt;
  return static_cast<std::int32_t>(*size);
}

bool HasValues(const CSetup& setup, int section) {
  return setup.channelCount > 0 && ShapeToWrite(setup, section).values != 0;
}

bool HasAllChannels(const CSetup& setup) {
  return setup.Channels().size() == static_cast<std::size_t>(std::max(setup.channelCount, 0));
}

}  // namespace

// Takes the sensitivities out of the image, so that they are laid over one section only.
SectionRules CRecordingFile::TakeSectionRules(int section) {
  SectionRules rules;
  if (section != kAverageSection && section != kVarianceSection) return rules;
  rules.domain = DomainFactor(rawHeader.header, headerRevision, section);
  rules.hasSensitivities = LacksSensitivity(rawHeader, headerRevision);
  if (!rules.hasSensitivities) return rules;
  std::size_t c = 0;
  for (ChannelRecord& channel : rawHeader.ChannelsInUse()) {
    rules.sensitivities[c++] = channel.sensitivity * channel.sensitivity;
    channel.sensitivity = 1;
  }
  return rules;
}

bool CRecordingFile::ReadAveragedSection(std::int32_t count, float* out, int section) try {
  const int fileClass = GetFileClass(&rawHeader);
  if (fileClass != kAverage && fileClass != kAverageWithStatistics) return false;
  if (count <= 0 || out == nullptr || !HasSection(rawHeader.header, section) || !file) return false;
  const std::size_t channels = rawHeader.header.channelCount;
  const std::optional<std::uint64_t> before = file->Position();
  if (!before || dataStart < 0 || setup->channels.Size() < channels) return false;
  const SectionShape shape = ShapeOf(rawHeader.header, section, static_cast<std::uint64_t>(dataStart));
  SectionRules rules = TakeSectionRules(section);
  if (section == kAverageSection && setup->frequencyDomain != 0 && setup->spectrumScale == 0) {
    halveSpectrum = 1;
    rules.isHalved = true;
    TakeSpectrumAsAmplitudes();
  }
  if (section == kAverageSection && !opened_.averageRules) opened_.averageRules = rules;
  const std::span<float> values(out, static_cast<std::size_t>(count) * channels);
  const bool isWhole = LiesInside(shape.position, shape.RowBytes() * channels, fileSize) &&
                       file->SeekTo(shape.position) && ReadSectionRows(section, shape, rules, values);
  if (!file->SeekTo(*before) || !isWhole) return false;
  const bool lacksFigures = setup->mainField8164 == 0 || setup->mainField8168 == 0;
  if (section != kAverageSection || setup->frequencyDomain != 0 || !lacksFigures) return true;
  return IsPlausibleSet(setup->pointCount, setup->channelCount) && FillSignalFigures(values, *setup);
} catch (const std::bad_alloc&) {
  return false;
}

// Some channels at a time: from the file, through what there is to be done to each, into their places.
bool CRecordingFile::ReadSectionRows(int section, const SectionShape& shape, const SectionRules& rules,
                                     std::span<float> out) {
  const std::size_t channels = rawHeader.header.channelCount;
  const std::size_t count = out.size() / channels;
  const std::size_t stored = std::min(count, shape.values);
  const std::size_t atOnce = ChannelsAtOnce(shape);
  const std::size_t valuesAtOnce = std::min(kMostValuesAtOnce, stored);
  for (std::size_t first = 0; first < channels; first += atOnce) {
    const std::size_t rows = std::min(atOnce, channels - first);
    const std::span<std::byte> bytes = readBuffer_.Take(rows * shape.RowBytes());
    const std::span<float> values = TakeFloats(rawBuffer_, rows * valuesAtOnce);
    if (bytes.size() < rows * shape.RowBytes() || values.size() < rows * valuesAtOnce) return false;
    if (!file->ReadExactly(bytes)) return false;
    if (section == kAverageSection) {
      for (std::size_t r = 0; r < rows; ++r) {
        SetupChannel& channel = setup->channels[first + r];
        channel.sweeps = std::max(channel.sweeps, 1);
      }
    }
    for (std::size_t v = 0; v < stored; v += valuesAtOnce) {
      const std::size_t length = std::min(valuesAtOnce, stored - v);
      for (std::size_t r = 0; r < rows; ++r) {
        const std::span<float> row = values.subspan(r * length, length);
        TakeValues(bytes.data() + r * shape.RowBytes() + shape.prefix + v * sizeof(float), row);
        ApplyRules(rules, first + r, row);
        if (section != kAverageSection) continue;
        const SetupChannel& channel = setup->channels[first + r];
        ScaleAverage(row, channel.sweeps, static_cast<double>(channel.channelScale),
                     halveSpectrum == 1 ? 0.5 : 1);
      }
      Transpose(values.data(), rows, length, length, out.data() + v * channels + first, channels);
    }
  }
  // The setup may tell of more points than the header does.
  std::fill(out.begin() + static_cast<std::ptrdiff_t>(stored * channels), out.end(), 0.0F);
  return true;
}

// ---- writing

std::int32_t CRecordingFile::WriteAverageSection(const float* data, std::uint32_t bytes, int section) try {
  if (section != kAverageSection && section != kFirstFsp && section != kSecondFsp) return 0;
  if (!setup || !IsBeingMade() || (data == nullptr && HasValues(*setup, section))) return 0;
  const std::optional<std::int32_t> size = SizeToWrite(*setup, section);
  if (!size || (section == kAverageSection && !HasAllChannels(*setup))) return 0;
  const auto limit = section == kAverageSection ? static_cast<std::uint32_t>(*size)
                                                : std::min(bytes, static_cast<std::uint32_t>(*size));
  if (!WriteSectionRows(data, section, limit)) return 0;
  if (section == kSecondFsp) wroteStatistics = 1;
  return *size;
} catch (const std::bad_alloc&) {
  return 0;
}

std::int32_t CRecordingFile::WriteVarianceSection(const float* data, std::uint32_t /*bytes*/) try {
  constexpr std::int32_t kNoMemory = -1;
  if (!setup || !IsBeingMade() || (data == nullptr && HasValues(*setup, kVarianceSection))) return 0;
  const std::optional<std::int32_t> size = SizeToWrite(*setup, kVarianceSection);
  if (!size || !WriteSectionRows(data, kVarianceSection, static_cast<std::uint32_t>(*size))) return kNoMemory;
  wroteVariance = 1;
  return *size;
} catch (const std::bad_alloc&) {
  return -1;
}

// At most `limit` bytes of the section. False only when memory ran out: the caller of a write that failed
// goes on, and what is saved then is no recording.
bool CRecordingFile::WriteSectionRows(const float* data, int section, std::uint32_t limit) {
  const auto channels = static_cast<std::size_t>(setup->channelCount);
  const SectionShape shape = ShapeToWrite(*setup, section);
  const std::size_t atOnce = ChannelsAtOnce(shape);
  for (std::size_t first = 0; first < channels && limit > 0; first += atOnce) {
    const std::size_t rows = std::min(atOnce, channels - first);
    const std::span<std::byte> bytes = readBuffer_.Take(rows * shape.RowBytes());
    const std::span<float> values = TakeFloats(rawBuffer_, rows * shape.values);
    if (bytes.size() < rows * shape.RowBytes() || values.size() < rows * shape.values) return false;
    if (shape.values != 0) {
      Transpose(data + first, shape.values, rows, channels, values.data(), shape.values);
    }
    std::fill(bytes.begin(), bytes.end(), std::byte{0});
    for (std::size_t r = 0; r < rows; ++r) {
      const std::span<float> row = values.subspan(r * shape.values, shape.values);
      if (section == kAverageSection) {
        const SetupChannel& channel = setup->channels[first + r];
        UnscaleAverage(row, channel.sweeps, static_cast<double>(channel.channelScale));
      }
      std::copy_n(std::as_bytes(row).begin(), row.size_bytes(),
                  bytes.begin() + static_cast<std::ptrdiff_t>(r * shape.RowBytes() + shape.prefix));
    }
    const std::span<std::byte> written = bytes.first(std::min<std::size_t>(bytes.size(), limit));
    if (!file->Write(written)) {
      created_->lacksSection = true;
      return true;
    }
    limit -= static_cast<std::uint32_t>(written.size());
  }
  return true;
}

// ---- copying

// A plain average counts its sweeps whether or not it has sections of them.
bool CRecordingFile::LacksStatistics() {
  if (GetFileClass(&rawHeader) != kAverage) return false;
  const SectionShape last = ShapeOf(rawHeader.header, kSecondFsp, static_cast<std::uint64_t>(dataStart));
  return !LiesInside(last.position, last.RowBytes() * rawHeader.header.channelCount, DataEnd());
}

CRecordingFile::DataExtent CRecordingFile::ExtentOfSections() {
  const RecordingHeader& header = rawHeader.header;
  int last = HasSection(header, kVarianceSection) ? kVarianceSection : kAverageSection;
  if (HasSection(header, kSecondFsp) && !LacksStatistics()) last = kSecondFsp;
  const SectionShape shape = ShapeOf(header, last, static_cast<std::uint64_t>(dataStart));
  return {shape.position + shape.RowBytes() * header.channelCount, DataEnd()};
}

// A header that counts too little leaves at least one channel's values behind the last section.
bool CRecordingFile::CountsAllSections() {
  const auto [end, next] = ExtentOfSections();
  const auto start = static_cast<std::uint64_t>(dataStart);
  return next < end || next - end < ShapeOf(rawHeader.header, kAverageSection, start).RowBytes();
}

bool CRecordingFile::CopySections(File& target) {
  const bool lacksStatistics = LacksStatistics();
  for (const int section : {kAverageSection, kVarianceSection, kFirstFsp, kSecondFsp}) {
    const bool isOfStatistics = section == kFirstFsp || section == kSecondFsp;
    if (!HasSection(rawHeader.header, section) || (isOfStatistics && lacksStatistics)) continue;
    const SectionRules rules = section == kAverageSection && opened_.averageRules ? *opened_.averageRules
                                                                                  : TakeSectionRules(section);
    if (!CopySectionRows(section, rules, target)) return false;
  }
  return true;
}

// As the rows are stored, but with the rules for old files done once and for all. Half of a value is exact,
// so it may be taken before the value is scaled.
bool CRecordingFile::CopySectionRows(int section, const SectionRules& rules, File& target) {
  const std::size_t channels = rawHeader.header.channelCount;
  const SectionShape shape = ShapeOf(rawHeader.header, section, static_cast<std::uint64_t>(dataStart));
  if (!LiesInside(shape.position, shape.RowBytes() * channels, fileSize) || !file->SeekTo(shape.position))
    return false;
  const std::size_t atOnce = ChannelsAtOnce(shape);
  for (std::size_t first = 0; first < channels; first += atOnce) {
    const std::size_t rows = std::min(atOnce, channels - first);
    const std::span<std::byte> bytes = readBuffer_.Take(rows * shape.RowBytes());
    const std::span<float> row = TakeFloats(rawBuffer_, shape.values);
    if (bytes.size() < rows * shape.RowBytes() || row.size() < shape.values) return false;
    if (!file->ReadExactly(bytes)) return false;
    for (std::size_t r = 0; r < rows; ++r) {
      const std::span<std::byte> values =
          bytes.subspan(r * shape.RowBytes() + shape.prefix, row.size_bytes());
      TakeValues(values.data(), row);
      ApplyRules(rules, first + r, row);
      if (rules.isHalved) Multiply(row, 0.5F);
      std::copy_n(std::as_bytes(row).begin(), values.size(), values.begin());
    }
    if (!target.Write(bytes)) return false;
  }
  return true;
}

}  // namespace wavelock
