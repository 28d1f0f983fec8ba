#include "tests/replay/answers.h"

#include <sha256.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <vector>

#include "wavelock/setup/visit_fields.h"

namespace wavelock::replay {

using nlohmann::json;

namespace {

constexpr std::size_t kShownValues = 4;
constexpr std::size_t kShownEvents = 2000;

json Number(double value) {
  if (std::isnan(value)) return "nan";
  if (std::isinf(value)) return value > 0 ? "inf" : "-inf";
  return value;
}

template <class T>
std::span<const std::byte> BytesOfArray(const T& array) {
  return std::as_bytes(std::span(array.data(), array.size()));
}

// ---- setup fields by their type

json Value(std::int32_t value) {
  return value;
}
json Value(std::uint32_t value) {
  return value;
}
json Value(float value) {
  return Number(value);
}
json Value(double value) {
  return Number(value);
}
template <class T>
json Value(Stored<T> value) {
  return Value(T{value});
}
json Value(const std::string& text) {
  return Latin1ToUtf8(text);
}
template <std::size_t N>
json Value(const FixedText<N>& text) {
  return Latin1ToUtf8(text.View());
}
template <std::size_t N>
json Value(const std::array<std::uint8_t, N>& bytes) {
  return Hexadecimal(BytesOfArray(bytes));
}
template <HasFields Object>
json Value(const Object& object);
template <HasElements Object>
json Value(const Object& object);
template <class T>
json Value(std::span<const T> values);

template <class T, std::size_t N>
json Value(const std::array<T, N>& values) {
  return Value(std::span<const T>(values));
}

json Value(const std::optional<std::span<const SetupChannel>>& channels) {
  return channels ? Value(*channels) : json(nullptr);
}

template <class T>
json Value(std::span<const T> values) {
  json list = json::array();
  for (const T& value : values) list.push_back(Value(value));
  return list;
}

template <HasFields Object>
json Value(const Object& object) {
  json fields = json::object();
  VisitFields(object, [&fields](const char* name, const auto& value) { fields[name] = Value(value); });
  return fields;
}

template <HasElements Object>
json Value(const Object& object) {
  json parts = json::array();
  VisitElements(object, [&parts](std::size_t, const auto& value) { parts.push_back(Value(value)); });
  return parts;
}

// Tables are too large to be told field by field.
template <class Table>
json ZeroOrNot(const Table& table) {
  return {{"sha256", Sha256(BytesOfArray(table))}, {"zero", table == Table{}}};
}

json Event(const EventRecord& event) {
  const auto extra = BytesOf(event).subspan(offsetof(EventRecord, extraA));
  return {{"stimType", std::uint16_t{event.stimType}},
          {"keyboard", std::uint8_t{event.keyboard}},
          {"keypad", event.Keypad()},
          {"segmentClass", event.SegmentClass()},
          {"point", std::uint32_t{event.point}},
          {"extra", Hexadecimal(extra)}};
}

json Marker(const CMarker& marker) {
  json fields;
  VisitMarker(marker, [&fields](const char* name, const auto& value) { fields[name] = Value(value); });
  return fields;
}

json Markers(const CMarkerList& list) {
  json markers = json::array();
  for (std::int32_t i = 0; i < list.GetCount(); ++i) markers.push_back(Marker(*list.GetAt(i)));
  return markers;
}

json Labels(const CLabelList& list) {
  json labels = json::array();
  for (const LabelEntry& label : list.Entries()) {
    labels.push_back({{"text", Latin1ToUtf8(label.text)}, {"value", label.value}});
  }
  return labels;
}

// ---- corrections

json Parameters(const OverlayParameters& params) {
  json fields;
  VisitParameters(params, [&fields](const char* name, const auto& value) { fields[name] = Value(value); });
  return fields;
}

json Row(const OverlayRow& row) {
  constexpr std::size_t kShownChannels = 16;
  json first = json::array();
  for (std::size_t c = 0; c < kShownChannels; ++c) first.push_back(Value(row.channelValue[c]));
  return {{"startSample", Value(row.startSample)},
          {"first16", std::move(first)},
          {"sha256", Sha256(BytesOf(row))}};
}

json Segment(const OverlaySegment& segment) {
  json coefficients = json::array();
  for (const double value : segment.coefficients.Elements()) coefficients.push_back(Number(value));
  return {{"firstSample", segment.firstSample},
          {"endSample", segment.endSample},
          {"id", segment.id},
          {"coefficients", std::move(coefficients)}};
}

json Overlay(const CCorrectionOverlay& overlay) {
  json rows = json::array();
  json segments = json::array();
  for (const OverlayRow& row : overlay.Rows()) rows.push_back(Row(row));
  for (const auto& segment : overlay.Segments()) segments.push_back(Segment(*segment));
  return {
      {"params", Parameters(overlay.params)}, {"rows", std::move(rows)}, {"segments", std::move(segments)}};
}

json MatrixRows(const Matrix<std::int32_t>& matrix) {
  json rows = json::array();
  for (std::size_t i = 0; i < matrix.Rows(); ++i)
    rows.push_back(std::vector(matrix[i], matrix[i] + matrix.Columns()));
  return rows;
}

}  // namespace

std::string Latin1ToUtf8(std::string_view text) {
  std::string utf8;
  for (const char c : text) {
    const auto code = static_cast<unsigned char>(c);
    if (code < 0x80) {
      utf8 += c;
    } else {
      utf8 += static_cast<char>(0xC0 | (code >> 6));
      utf8 += static_cast<char>(0x80 | (code & 0x3F));
    }
  }
  return utf8;
}

std::string Utf8ToLatin1(std::string_view text) {
  std::string latin1;
  for (std::size_t i = 0; i < text.size(); ++i) {
    const auto code = static_cast<unsigned char>(text[i]);
    const bool isPair = code >= 0xC0 && i + 1 < text.size();
    latin1 += isPair ? static_cast<char>((code & 0x03) << 6 | (static_cast<unsigned char>(text[++i]) & 0x3F))
                     : text[i];
  }
  return latin1;
}

std::string Hexadecimal(std::span<const std::byte> bytes) {
  constexpr char kDigits[] = "0123456789abcdef";
  std::string text;
  for (const std::byte byte : bytes) {
    text += kDigits[std::to_integer<unsigned>(byte) >> 4];
    text += kDigits[std::to_integer<unsigned>(byte) & 15];
  }
  return text;
}

std::string Sha256(std::span<const std::byte> bytes) {
  char digest[SHA256_DIGEST_STRING_LENGTH];
  return SHA256Data(reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size(), digest);
}

json RawBlock(std::span<const std::byte> bytes, int width) {
  const std::size_t count = bytes.size() / static_cast<std::size_t>(width);
  json first = json::array();
  for (std::size_t i = 0; i < std::min(count, kShownValues); ++i) {
    std::int16_t narrow;
    std::int32_t wide;
    if (width == 2) {
      std::memcpy(&narrow, bytes.data() + i * 2, 2);
      first.push_back(narrow);
    } else {
      std::memcpy(&wide, bytes.data() + i * 4, 4);
      first.push_back(wide);
    }
  }
  return {{"count", count}, {"sha256", Sha256(bytes)}, {"first", first}};
}

json FloatBlock(std::span<const float> values) {
  constexpr std::uint32_t kOneNan = 0x7FC00000;  // every NaN counts as this one
  std::vector<std::uint32_t> words(values.size());
  if (!values.empty()) std::memcpy(words.data(), values.data(), values.size_bytes());
  json first = json::array();
  for (std::size_t i = 0; i < values.size(); ++i) {
    if (std::isnan(values[i])) words[i] = kOneNan;
    if (i < kShownValues) first.push_back(Number(values[i]));
  }
  return {{"count", values.size()}, {"sha256", Sha256(BytesOfArray(words))}, {"first", first}};
}

json EpochInfoFields(const EpochInfo& info) {
  const auto reactionTime = std::as_bytes(std::span(&info.reactionTime, 1));
  return {{"trialType", info.trialType},
          {"accept", info.accept},
          {"correct", info.correct},
          {"reactionTime", Hexadecimal(reactionTime)},
          {"reactionTimeValue", Number(info.reactionTime)},
          {"response", info.response}};
}

json DataObject(const CTFDEpoch& object) {
  const auto block = [](std::span<const float> values, bool exists) {
    return exists ? FloatBlock(values) : json(nullptr);
  };
  const CSetup& setup = *object.GetConfig();
  json info = EpochInfoFields(object.epochInfo);
  info["tail"] = object.epochInfo.tail;
  return {{"multiplexed", object.IsMultiplexed()},
          {"valid", object.valid},
          {"blockBytes", object.blockBytes},
          {"fspBytes", object.fspBytes},
          {"config",
           {{"channelCount", setup.channelCount},
            {"pointCount", setup.pointCount},
            {"dataKind", setup.dataKind},
            {"hasImaginary", setup.hasImaginary},
            {"hasVariance", setup.hasVariance},
            {"acceptedSweeps", setup.acceptedSweeps},
            {"frequencyDomain", setup.frequencyDomain},
            {"mainField8036", setup.mainField8036},
            {"mainField8040", setup.mainField8040},
            {"spectrumScale", setup.spectrumScale}}},
          {"epochInfo", std::move(info)},
          {"markers", Markers(object.markers)},
          {"main", block(object.main.All(), static_cast<bool>(object.main))},
          {"imaginary", block(object.imaginary.All(), static_cast<bool>(object.imaginary))},
          {"variance", block(object.variance.All(), static_cast<bool>(object.variance))},
          {"varianceImaginary",
           block(object.varianceImaginary.All(), static_cast<bool>(object.varianceImaginary))},
          {"fspFirst", block(object.fspFirst.All(), static_cast<bool>(object.fspFirst))},
          {"fspSecond", block(object.fspSecond.All(), static_cast<bool>(object.fspSecond))}};
}

json Pairs(const CTFDPaired& pairs) {
  const CSetup& setup = *pairs.GetConfig();
  return {{"pairCount", pairs.GetPairCount()},
          {"ready", pairs.ready},
          {"pairIndex", MatrixRows(pairs.pairIndex)},
          {"real", FloatBlock(pairs.real.All())},
          {"imaginary", FloatBlock(pairs.imaginary.All())},
          {"config",
           {{"channelCount", setup.channelCount},
            {"pointCount", setup.pointCount},
            {"dataKind", setup.dataKind},
            {"hasImaginary", setup.hasImaginary},
            {"mainField8036", setup.mainField8036},
            {"mainField8040", setup.mainField8040}}}};
}

json Facts(CRecordingFile& recording) {
  const CSetup& setup = *recording.GetSetup();
  const RecordingHeader& header = recording.rawHeader.header;
  const std::uint64_t samples = recording.GetContinuousSampleCount();
  return {{"numChannels", static_cast<std::int16_t>(setup.channelCount)},
          {"rate", setup.sampleRate},
          {"acqType", recording.GetAcquisitionKind()},
          {"fileName", Latin1ToUtf8(recording.GetFileName())},
          {"numContinuousPoints", static_cast<std::int32_t>(samples)},
          {"sampleCount", samples},
          {"eventCount", recording.GetEventCount()},
          {"epochCount", recording.GetEpochCount()},
          {"halveSpectrum", recording.halveSpectrum},
          {"fileClass", recording.GetFileClass(&recording.rawHeader)},
          {"sampleWidth", recording.sampleWidth},
          {"dataStart", recording.dataStart},
          {"headerRevision", recording.headerRevision},
          {"fileSize", recording.fileSize},
          {"largeFile", recording.largeFile},
          {"tailPosition", recording.TailPosition()},
          {"eventTablePosition", std::uint32_t{header.eventTablePosition}},
          {"fileOpen", recording.file ? 1 : 0}};
}

json SetupFieldsOf(const CSetup& setup) {
  json fields = Value(setup);
  json& rows = fields["bandTable"];
  const auto used = static_cast<std::size_t>(std::max(setup.bandTableCount, 0));
  while (rows.size() > used) rows.erase(rows.size() - 1);
  fields["displayOrder"] = {{"sha256", Sha256(BytesOfArray(setup.displayOrder))},
                            {"identity", setup.displayOrder == DefaultDisplayOrder()}};
  fields["displayMark"] = ZeroOrNot(setup.displayMark);
  fields["recordTable"] = ZeroOrNot(setup.recordTable);
  return fields;
}

void AddState(CRecordingFile& recording, json& answer) {
  answer["facts"] = Facts(recording);
  const auto image = std::as_bytes(std::span(&recording.rawHeader, 1));
  const std::size_t channels = recording.rawHeader.header.channelCount;
  const std::size_t used = std::min(image.size(), sizeof(RecordingHeader) + channels * sizeof(ChannelRecord));
  answer["header"] = Hexadecimal(image.first(used));
  answer["setup"] = SetupFieldsOf(*recording.GetSetup());
  const auto events = recording.GetEventTable().Elements();
  answer["events"] = json::array();
  for (const EventRecord& event : events.first(std::min(events.size(), kShownEvents))) {
    answer["events"].push_back(Event(event));
  }
  if (recording.GetFileClass(&recording.rawHeader) == kTimeFrequency) {
    answer["pairMatrix"] = recording.pairMatrix ? MatrixRows(recording.pairMatrix) : json(nullptr);
  }
  answer["markers"] = Markers(recording.markerList);
  answer["labels"] = Labels(recording.labelList);
  answer["overlay"] = Overlay(recording.overlay);
  if (events.size() > kShownEvents) answer["eventsSha256"] = Sha256(std::as_bytes(events));
}

}  // namespace wavelock::replay
