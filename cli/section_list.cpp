#include "cli/section_list.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <iterator>

#include "wavelock/annotations/correction_overlay.h"
#include "wavelock/annotations/stored_records.h"
#include "wavelock/setup/section_tables.h"
#include "wavelock/setup/tff_file.h"

namespace wavelock::command {
namespace {

// ----- Rows of records that are structures as they lie

template <class Field>
struct FieldType;
template <>
struct FieldType<Stored<std::int32_t>> {
  static constexpr const char* kName = "i32";
  static constexpr std::uint32_t kSize = 4;
};
template <>
struct FieldType<Stored<std::uint32_t>> {
  static constexpr const char* kName = "u32";
  static constexpr std::uint32_t kSize = 4;
};
template <>
struct FieldType<Stored<std::uint16_t>> {
  static constexpr const char* kName = "u16";
  static constexpr std::uint32_t kSize = 2;
};
template <>
struct FieldType<Stored<float>> {
  static constexpr const char* kName = "f32";
  static constexpr std::uint32_t kSize = 4;
};
template <>
struct FieldType<Stored<double>> {
  static constexpr const char* kName = "f64";
  static constexpr std::uint32_t kSize = 8;
};
template <std::size_t N>
struct FieldType<StoredText<N>> {
  static constexpr const char* kName = "char";
  static constexpr std::uint32_t kSize = N;
};
template <std::size_t N>
struct FieldType<StoredBytes<N>> {
  static constexpr const char* kName = "byte";
  static constexpr std::uint32_t kSize = N;
};
template <class Element, std::size_t N>
struct FieldType<std::array<Element, N>> : FieldType<Element> {};

template <class Field>
RowInfo RowOfStructure(std::size_t offset, const char* name) {
  RowInfo row;
  row.offset = static_cast<std::uint32_t>(offset);
  row.size = sizeof(Field);
  row.elementSize = FieldType<Field>::kSize;
  row.type = FieldType<Field>::kName;
  row.field = name;
  return row;
}

#define WAVELOCK_STORED(record, member) \
  RowOfStructure<decltype(record::member)>(offsetof(record, member), #member)

std::vector<RowInfo> MarkerRows() {
  return {WAVELOCK_STORED(MarkerRecord, colour),      WAVELOCK_STORED(MarkerRecord, name),
          WAVELOCK_STORED(MarkerRecord, attributeB),  WAVELOCK_STORED(MarkerRecord, attributeC),
          WAVELOCK_STORED(MarkerRecord, attributeD),  WAVELOCK_STORED(MarkerRecord, sampleIndex),
          WAVELOCK_STORED(MarkerRecord, secondValue), WAVELOCK_STORED(MarkerRecord, channel),
          WAVELOCK_STORED(MarkerRecord, epoch),       WAVELOCK_STORED(MarkerRecord, locked),
          WAVELOCK_STORED(MarkerRecord, text),        WAVELOCK_STORED(MarkerRecord, attributeA),
          WAVELOCK_STORED(MarkerRecord, labelMode)};
}

std::vector<RowInfo> TimedMarkerRows() {
  return {WAVELOCK_STORED(TimedMarkerRecord, colour),      WAVELOCK_STORED(TimedMarkerRecord, name),
          WAVELOCK_STORED(TimedMarkerRecord, attributeD),  WAVELOCK_STORED(TimedMarkerRecord, timeMs),
          WAVELOCK_STORED(TimedMarkerRecord, secondValue), WAVELOCK_STORED(TimedMarkerRecord, channel),
          WAVELOCK_STORED(TimedMarkerRecord, epoch),       WAVELOCK_STORED(TimedMarkerRecord, locked),
          WAVELOCK_STORED(TimedMarkerRecord, text),        WAVELOCK_STORED(TimedMarkerRecord, attributeA)};
}

std::vector<RowInfo> LabelRows() {
  return {WAVELOCK_STORED(LabelRecord, text), WAVELOCK_STORED(LabelRecord, value)};
}

std::vector<RowInfo> OverlayParameterRows() {
  return {
      WAVELOCK_STORED(OverlayParameters, storedValue0),  WAVELOCK_STORED(OverlayParameters, storedWord1),
      WAVELOCK_STORED(OverlayParameters, storedValue2),  WAVELOCK_STORED(OverlayParameters, storedValue3),
      WAVELOCK_STORED(OverlayParameters, storedValue4),  WAVELOCK_STORED(OverlayParameters, sampleShift),
      WAVELOCK_STORED(OverlayParameters, storedWords6),  WAVELOCK_STORED(OverlayParameters, storedValue11),
      WAVELOCK_STORED(OverlayParameters, storedValue12), WAVELOCK_STORED(OverlayParameters, polyOrder),
      WAVELOCK_STORED(OverlayParameters, polyChannels),  WAVELOCK_STORED(OverlayParameters, alwaysSave),
      WAVELOCK_STORED(OverlayParameters, storedWords16)};
}

std::vector<RowInfo> OverlayRowRows() {
  return {WAVELOCK_STORED(OverlayRow, startSample), WAVELOCK_STORED(OverlayRow, channelValue)};
}

std::vector<RowInfo> SegmentRows() {
  return {WAVELOCK_STORED(SegmentRecord, firstSample), WAVELOCK_STORED(SegmentRecord, endSample),
          WAVELOCK_STORED(SegmentRecord, id)};
}

std::vector<RowInfo> CoefficientRows() {
  return {WAVELOCK_STORED(CoefficientRecord, value), WAVELOCK_STORED(CoefficientRecord, segmentId)};
}

std::vector<RowInfo> TailRevisionRows() {
  return {RowOfStructure<Stored<std::int32_t>>(0, "revision")};
}

// ----- The kinds

constexpr char kOnce[] = "once";
constexpr char kRepeated[] = "repeated";
constexpr std::uint32_t kMostChannels = 7000;  // the tags up to the next kind

template <class Section>
constexpr SectionKind Kind(const char* about, std::uint32_t tags = 1, const char* occurs = kOnce,
                           std::uint32_t tag = Section::kTag, const char* name = Section::kTitle) {
  return {name, tag, tags, occurs, Section::kVersion, Section::kSize, RowsOf<Section>, about};
}

constexpr char kAboutDerived[] =
    "The outputs of one derivation file, in their order. A reader takes as many of them as the file itself "
    "has "
    "outputs, and makes a default channel for one that is missing.";
constexpr char kAboutLabel[] = "A code and what it is called. Labels are at most 20.";
constexpr std::uint32_t kMostLabels = kSetupLabelCount;
constexpr std::uint32_t kMostDerived = 5000;

constexpr SectionKind kKinds[] = {
    Kind<MainSection>("What a recording is, the names of its files, its bands, and how many records of other "
                      "kinds there are. A reader can do nothing without it."),
    Kind<TimeAxisSection>(
        "The axis of a set or an epoch, what of it is shown, and what went into an average. "
        "Times are milliseconds but for `timeStart` and `timeEnd`, which are seconds."),
    Kind<TriggerSection>("What starts a sweep. A mode of 1 is read and written as 2."),
    Kind<FilterSection>("Filters applied to what is shown."),
    Kind<SpectrumSection>("The axis of a spectrum and what of it is shown, in hertz. A reader turns a 0 in "
                          "`spectrumField84` and `spectrumField88` into 2."),
    Kind<FlagASection>("Two switches and their values. A `windowSeconds` of 50 and more was stored in "
                       "milliseconds."),
    Kind<DisplayOrderSection>(
        "For each of 20 layouts, the channel that is shown at each of 512 places, and a "
        "mark for each place."),
    Kind<ParamsASection>("Settings of an analysis. A section of version 0 counts as missing."),
    Kind<ParamsCSection>("Settings of an analysis. Older sections end after 40 or 48 bytes."),
    Kind<SpareSection>("Numbers that are carried from file to file."),
    Kind<ParamsBSection>("Settings of an analysis."),
    Kind<WaveformSourcesSection>("The files that each of ten slots was made from."),
    Kind<WaveformSlotsSection>("The span of time that each of ten slots shows, in milliseconds."),
    Kind<WaveformNamesSection>("What each of ten slots is called."),
    Kind<ChannelSection>(
        "Name, scale, place and electrode of one channel. A stored integer is itself times "
        "`countScale` times `channelScale` microvolts. A reader can do nothing when one is "
        "missing, and wants the first even where no channel is counted. Version 0 has no colours.",
        kMostChannels, "one for each channel"),
    Kind<SourceNameSection>("What the samples come from."),
    Kind<DerivedChannelSection>(kAboutDerived, kMostDerived, "one for each output of derivation file 0",
                                tag::kFirstDerivedChannel[0], "derived channel of file 0"),
    Kind<DerivedChannelSection>(kAboutDerived, kMostDerived, "one for each output of derivation file 1",
                                tag::kFirstDerivedChannel[1], "derived channel of file 1"),
    Kind<DerivedChannelSection>(kAboutDerived, kMostDerived, "one for each output of derivation file 2",
                                tag::kFirstDerivedChannel[2], "derived channel of file 2"),
    {"label", tag::kLabel, 1, kRepeated, 0, sizeof(LabelRecord), LabelRows,
     "One entry of the list of labels of a continuous recording."},
    Kind<LabelSection>(kAboutLabel, kMostLabels, "one for each event label", tag::kFirstEventLabel,
                       "event label"),
    Kind<LabelSection>(kAboutLabel, kMostLabels, "one for each artifact label", tag::kFirstArtifactLabel,
                       "artifact label"),
    Kind<SubjectSection>("Who was recorded, by whom and where. The fields stand without alignment, and each "
                         "text keeps one byte for its NUL."),
    {"marker", tag::kMarker, 1, kRepeated, 0, sizeof(MarkerRecord), MarkerRows,
     "A mark at a point of a channel's axis.", "version word of the operating system"},
    {"marker, older form", tag::kMarker, 1, kRepeated, 0, sizeof(TimedMarkerRecord), TimedMarkerRows,
     "The same with a time in milliseconds in place of a point. The length tells the forms apart.", "any"},
    {"overlay parameters", tag::kOverlayParameters, 1, kOnce, 0, sizeof(OverlayParameters),
     OverlayParameterRows, "How the corrections of a continuous recording were found and are to be applied."},
    {"overlay row", tag::kOverlayRow, 1, kRepeated, 0, sizeof(OverlayRow), OverlayRowRows,
     "From a sample on, what is added to each channel."},
    {"overlay segment", tag::kOverlaySegment, 1, kRepeated, 0, sizeof(SegmentRecord), SegmentRows,
     "A run of samples that polynomials correct."},
    {"overlay coefficient", tag::kOverlayCoefficient, 1, kRepeated, 0, sizeof(CoefficientRecord),
     CoefficientRows,
     "One coefficient of a segment's polynomials: those of power 0 of all of them, then of power 1, and so "
     "on."},
    {"tail revision", tag::kTailRevision, 1, "once, as the last record of a recording", 0, 4,
     TailRevisionRows, "1. A reader that finds 2 or more asks whether to go on."},
    Kind<RecordTableSection>("A piece of the table of records, which has an entry every 32 bytes: each piece "
                             "repeats what the next one holds.",
                             RecordTableEntry::kMostEntries, "`recordTableCount` times"),
    Kind<AuxInputSection>("The linear scale of one auxiliary input, told by two raw values and what they are "
                          "in physical units.",
                          kAuxInputCount, "one for each of 16 inputs"),
};

}  // namespace

std::span<const SectionKind> SectionKinds() {
  return kKinds;
}

std::vector<RowInfo> ContainerHeaderRows() {
  return {WAVELOCK_STORED(TffHeader, magic), WAVELOCK_STORED(TffHeader, identityBlock),
          WAVELOCK_STORED(TffHeader, flags)};
}

std::vector<RowInfo> RecordHeadRows() {
  return {WAVELOCK_STORED(TffRecord, tag), WAVELOCK_STORED(TffRecord, version),
          WAVELOCK_STORED(TffRecord, length), WAVELOCK_STORED(TffRecord, lengthAgain)};
}

std::string_view NameOfTag(std::uint32_t tag) {
  const auto found = std::find_if(std::begin(kKinds), std::end(kKinds), [tag](const SectionKind& kind) {
    return tag >= kind.tag && tag - kind.tag < kind.tags;
  });
  return found == std::end(kKinds) ? "unknown" : found->name;
}

}  // namespace wavelock::command
