// Every field of a setup by its name, once and in the order of the model: for printing, comparing, and
// setting a field that is told by its path.
//
// VisitFields(object, visit) calls visit(name, value) for each field of a structure, VisitElements(object,
// visit) calls visit(index, value) for each part of a structure whose parts are known by their places. A
// value is
//
//   a number              std::int32_t or float
//   a text                FixedText or std::string (kIsFixedText tells)
//   bytes                 std::array of std::uint8_t
//   an array              any other std::array, or std::span
//   a structure           HasFields or HasElements
//   channels or nothing   std::optional<std::span<SetupChannel>>: those in use, when there are any
//
// Values of a const object are const; channelLimit always is.
#pragma once

#include <array>
#include <concepts>
#include <cstddef>
#include <optional>
#include <span>
#include <type_traits>

#include "wavelock/setup/setup.h"

namespace wavelock {

template <class Object, class Model>
concept ConstOrNot = std::same_as<std::remove_const_t<Object>, Model>;

// T, const where Object is.
template <class Object, class T>
using ConstLike = std::conditional_t<std::is_const_v<Object>, const T, T>;

#define WAVELOCK_FIELD(name) visit(#name, fields.name)

template <ConstOrNot<FilterSpec> Filter, class Visitor>
void VisitElements(Filter& filter, Visitor&& visit) {
  visit(0, filter.value0);
  visit(1, filter.value1);
  visit(2, filter.value2);
  visit(3, filter.value3);
  visit(4, filter.value4);
  visit(5, filter.value5);
  visit(6, filter.value6);
  visit(7, filter.value7);
  visit(8, filter.value8);
  visit(9, filter.value9);
  visit(10, filter.value10);
  visit(11, filter.value11);
}

template <ConstOrNot<LongFilterSpec> Filter, class Visitor>
void VisitElements(Filter& filter, Visitor&& visit) {
  VisitElements(filter.description, visit);
  for (std::size_t i = 0; i < filter.values12To16.size(); ++i) visit(12 + i, filter.values12To16[i]);
}

template <ConstOrNot<ChannelLink> Link, class Visitor>
void VisitElements(Link& link, Visitor&& visit) {
  visit(0, link.linkA);
  visit(1, link.linkIndex);
  visit(2, link.linkC);
}

template <ConstOrNot<SetupChannel> Fields, class Visitor>
void VisitFields(Fields& fields, Visitor&& visit) {
  WAVELOCK_FIELD(label);
  WAVELOCK_FIELD(channelType);
  WAVELOCK_FIELD(channelFlagA);
  WAVELOCK_FIELD(channelFlagB);
  WAVELOCK_FIELD(channelFlagC);
  WAVELOCK_FIELD(channelValueA);
  WAVELOCK_FIELD(channelValueB);
  WAVELOCK_FIELD(disabled);
  WAVELOCK_FIELD(channelValueC);
  WAVELOCK_FIELD(channelValueD);
  WAVELOCK_FIELD(textA);
  WAVELOCK_FIELD(textB);
  WAVELOCK_FIELD(layoutScale);
  WAVELOCK_FIELD(layoutSelected);
  WAVELOCK_FIELD(boxLeft);
  WAVELOCK_FIELD(boxRight);
  WAVELOCK_FIELD(boxTop);
  WAVELOCK_FIELD(boxBottom);
  WAVELOCK_FIELD(zoomLeft);
  WAVELOCK_FIELD(zoomRight);
  WAVELOCK_FIELD(zoomTop);
  WAVELOCK_FIELD(zoomBottom);
  WAVELOCK_FIELD(channelScale);
  WAVELOCK_FIELD(physicalChannel);
  WAVELOCK_FIELD(countScale);
  WAVELOCK_FIELD(gain);
  WAVELOCK_FIELD(filterField);
  WAVELOCK_FIELD(lowpassHz);
  WAVELOCK_FIELD(lowpassField);
  WAVELOCK_FIELD(highpassHz);
  WAVELOCK_FIELD(highpassField);
  WAVELOCK_FIELD(filterSpec);
  WAVELOCK_FIELD(position);
  WAVELOCK_FIELD(position2);
  WAVELOCK_FIELD(channelValueE);
  WAVELOCK_FIELD(channelValueF);
  WAVELOCK_FIELD(channelValueG);
  WAVELOCK_FIELD(links);
  WAVELOCK_FIELD(sweeps);
  WAVELOCK_FIELD(channelValueH);
  WAVELOCK_FIELD(signalRatio);
  WAVELOCK_FIELD(colorA);
  WAVELOCK_FIELD(colorB);
  WAVELOCK_FIELD(colorC);
  WAVELOCK_FIELD(colorD);
  WAVELOCK_FIELD(channelFlagD);
}

template <ConstOrNot<SetupBand> Fields, class Visitor>
void VisitFields(Fields& fields, Visitor&& visit) {
  WAVELOCK_FIELD(bandField0);
  WAVELOCK_FIELD(bandField4);
  WAVELOCK_FIELD(bandField8);
  WAVELOCK_FIELD(bandScale);
  WAVELOCK_FIELD(bandLow);
  WAVELOCK_FIELD(bandHigh);
  WAVELOCK_FIELD(bandName);
  WAVELOCK_FIELD(mapFile);
  WAVELOCK_FIELD(mappingLdrFile);
  WAVELOCK_FIELD(bandField1068);
  WAVELOCK_FIELD(bandField1072);
  WAVELOCK_FIELD(bandField1076);
  WAVELOCK_FIELD(bandField1080);
  WAVELOCK_FIELD(bandField1084);
  WAVELOCK_FIELD(bandField1088);
}

template <ConstOrNot<BandTableRow> Fields, class Visitor>
void VisitFields(Fields& fields, Visitor&& visit) {
  WAVELOCK_FIELD(rowName);
  WAVELOCK_FIELD(rowLow);
  WAVELOCK_FIELD(rowHigh);
  WAVELOCK_FIELD(rowField0);
  WAVELOCK_FIELD(rowScale);
  WAVELOCK_FIELD(rowField1);
}

template <ConstOrNot<SetupLabel> Fields, class Visitor>
void VisitFields(Fields& fields, Visitor&& visit) {
  WAVELOCK_FIELD(code);
  WAVELOCK_FIELD(text);
}

template <ConstOrNot<ParamsA> Fields, class Visitor>
void VisitFields(Fields& fields, Visitor&& visit) {
  WAVELOCK_FIELD(aMode);
  WAVELOCK_FIELD(aCount);
  WAVELOCK_FIELD(aRangeLow);
  WAVELOCK_FIELD(aRangeHigh);
  WAVELOCK_FIELD(aWindowStart);
  WAVELOCK_FIELD(aWindowEnd);
  WAVELOCK_FIELD(aLevel);
  WAVELOCK_FIELD(aField28);
  WAVELOCK_FIELD(aChannel);
  WAVELOCK_FIELD(aField48);
  WAVELOCK_FIELD(aField52);
  WAVELOCK_FIELD(aField56);
  WAVELOCK_FIELD(aField60);
  WAVELOCK_FIELD(aField64);
  WAVELOCK_FIELD(aField68);
  WAVELOCK_FIELD(aField72);
  WAVELOCK_FIELD(aField76);
  WAVELOCK_FIELD(aField80);
  WAVELOCK_FIELD(aField84);
  WAVELOCK_FIELD(aField88);
  WAVELOCK_FIELD(aField92);
  WAVELOCK_FIELD(aChannel2);
  WAVELOCK_FIELD(aFilter);
}

template <ConstOrNot<ParamsB> Fields, class Visitor>
void VisitFields(Fields& fields, Visitor&& visit) {
  WAVELOCK_FIELD(bMode);
  WAVELOCK_FIELD(bCount);
  WAVELOCK_FIELD(bWindowStart);
  WAVELOCK_FIELD(bWindowEnd);
  WAVELOCK_FIELD(bField16);
  WAVELOCK_FIELD(bField20);
  WAVELOCK_FIELD(bField24);
  WAVELOCK_FIELD(bField28);
  WAVELOCK_FIELD(bLevel);
  WAVELOCK_FIELD(bField36);
  WAVELOCK_FIELD(bField40);
  WAVELOCK_FIELD(bField44);
  WAVELOCK_FIELD(bSpare);
  WAVELOCK_FIELD(bField48);
  WAVELOCK_FIELD(bField52);
  WAVELOCK_FIELD(bField56);
  WAVELOCK_FIELD(bField60);
  WAVELOCK_FIELD(bField64);
  WAVELOCK_FIELD(bField68);
  WAVELOCK_FIELD(bFilter);
}

template <ConstOrNot<ParamsC> Fields, class Visitor>
void VisitFields(Fields& fields, Visitor&& visit) {
  WAVELOCK_FIELD(cCount);
  WAVELOCK_FIELD(cWindowStart);
  WAVELOCK_FIELD(cWindowEnd);
  WAVELOCK_FIELD(cLevel);
  WAVELOCK_FIELD(cField16);
  WAVELOCK_FIELD(cField20);
  WAVELOCK_FIELD(cField24);
  WAVELOCK_FIELD(cRangeLow);
  WAVELOCK_FIELD(cRangeHigh);
  WAVELOCK_FIELD(cField40);
  WAVELOCK_FIELD(cField44);
  WAVELOCK_FIELD(cField48);
  WAVELOCK_FIELD(cField52);
  WAVELOCK_FIELD(cField56);
  WAVELOCK_FIELD(cField60);
}

template <ConstOrNot<AuxInputs> Fields, class Visitor>
void VisitFields(Fields& fields, Visitor&& visit) {
  WAVELOCK_FIELD(auxSlope);
  WAVELOCK_FIELD(auxOffset);
  WAVELOCK_FIELD(auxRawLow);
  WAVELOCK_FIELD(auxRawHigh);
  WAVELOCK_FIELD(auxField16);
  WAVELOCK_FIELD(auxField20);
  WAVELOCK_FIELD(auxField24);
  WAVELOCK_FIELD(auxField28);
  WAVELOCK_FIELD(auxUnit);
  WAVELOCK_FIELD(auxField52);
  WAVELOCK_FIELD(auxLabel);
  WAVELOCK_FIELD(auxField66);
  WAVELOCK_FIELD(auxField70);
}

template <ConstOrNot<WaveformSource> Fields, class Visitor>
void VisitFields(Fields& fields, Visitor&& visit) {
  WAVELOCK_FIELD(value0);
  WAVELOCK_FIELD(value1);
  WAVELOCK_FIELD(file);
  WAVELOCK_FIELD(handle);
}

template <ConstOrNot<WaveformSources> Fields, class Visitor>
void VisitFields(Fields& fields, Visitor&& visit) {
  WAVELOCK_FIELD(sourceA);
  WAVELOCK_FIELD(sourceB);
  WAVELOCK_FIELD(sourceC);
  WAVELOCK_FIELD(sourceNote);
}

template <ConstOrNot<WaveformSlot> Fields, class Visitor>
void VisitFields(Fields& fields, Visitor&& visit) {
  WAVELOCK_FIELD(slotFlag);
  WAVELOCK_FIELD(slotStart);
  WAVELOCK_FIELD(slotEnd);
  WAVELOCK_FIELD(slotPoints);
  WAVELOCK_FIELD(slotField16);
  WAVELOCK_FIELD(slotField20);
  WAVELOCK_FIELD(slotField24);
  WAVELOCK_FIELD(slotField28);
  WAVELOCK_FIELD(slotField32);
  WAVELOCK_FIELD(slotField36);
  WAVELOCK_FIELD(slotField40);
  WAVELOCK_FIELD(slotField44);
  WAVELOCK_FIELD(slotField48);
  WAVELOCK_FIELD(slotField52);
  WAVELOCK_FIELD(slotField56);
  WAVELOCK_FIELD(slotField60);
  WAVELOCK_FIELD(slotField64);
  WAVELOCK_FIELD(slotField68);
  WAVELOCK_FIELD(slotFile);
}

template <ConstOrNot<WaveformNames> Fields, class Visitor>
void VisitFields(Fields& fields, Visitor&& visit) {
  WAVELOCK_FIELD(waveNames);
  WAVELOCK_FIELD(waveField0);
  WAVELOCK_FIELD(waveField1);
  WAVELOCK_FIELD(waveFile);
}

template <ConstOrNot<WaveformSet> Fields, class Visitor>
void VisitFields(Fields& fields, Visitor&& visit) {
  WAVELOCK_FIELD(sources);
  WAVELOCK_FIELD(slots);
  WAVELOCK_FIELD(names);
}

template <ConstOrNot<SubjectFields> Fields, class Visitor>
void VisitFields(Fields& fields, Visitor&& visit) {
  WAVELOCK_FIELD(age);
  WAVELOCK_FIELD(recordDate);
  WAVELOCK_FIELD(department);
  WAVELOCK_FIELD(subjectTextH);
  WAVELOCK_FIELD(subjectValueA);
  WAVELOCK_FIELD(subjectTextA);
  WAVELOCK_FIELD(instituteName);
  WAVELOCK_FIELD(subjectTextD);
  WAVELOCK_FIELD(subjectTextC);
  WAVELOCK_FIELD(operatorName);
  WAVELOCK_FIELD(subjectTextB);
  WAVELOCK_FIELD(researcherName);
  WAVELOCK_FIELD(subjectValueB);
  WAVELOCK_FIELD(recordTime);
  WAVELOCK_FIELD(unitName);
  WAVELOCK_FIELD(subjectTextF);
  WAVELOCK_FIELD(subjectValueC);
  WAVELOCK_FIELD(subjectTextE);
  WAVELOCK_FIELD(subjectTextI);
  WAVELOCK_FIELD(subjectTextJ);
  WAVELOCK_FIELD(subjectTextG);
  WAVELOCK_FIELD(sex);
  WAVELOCK_FIELD(hand);
}

template <ConstOrNot<SetupFields> Fields, class Visitor>
void VisitFields(Fields& fields, Visitor&& visit) {
  WAVELOCK_FIELD(dataKind);
  WAVELOCK_FIELD(sampleRate);
  WAVELOCK_FIELD(channelCount);
  WAVELOCK_FIELD(mainField8172);
  WAVELOCK_FIELD(mainsFrequency);
  WAVELOCK_FIELD(frequencyDomain);
  WAVELOCK_FIELD(headerByteA);
  WAVELOCK_FIELD(headerByteB);
  WAVELOCK_FIELD(flagC);
  WAVELOCK_FIELD(mainField928);
  WAVELOCK_FIELD(mainField932);
  WAVELOCK_FIELD(mainField936);
  WAVELOCK_FIELD(mainField940);
  WAVELOCK_FIELD(mainField944);
  WAVELOCK_FIELD(mainField948);
  WAVELOCK_FIELD(ldrFile);
  WAVELOCK_FIELD(ldrEnabled);
  WAVELOCK_FIELD(derivedCount);
  WAVELOCK_FIELD(derivedBuild);
  WAVELOCK_FIELD(ldrLoadedCount);
  WAVELOCK_FIELD(mainField2512);
  WAVELOCK_FIELD(mainField2516);
  WAVELOCK_FIELD(mainField2520);
  WAVELOCK_FIELD(bands);
  WAVELOCK_FIELD(artifactLabels);
  WAVELOCK_FIELD(eventLabels);
  WAVELOCK_FIELD(mainField2500);
  WAVELOCK_FIELD(mainField2504);
  WAVELOCK_FIELD(mainField2508);
  WAVELOCK_FIELD(autoScale);
  WAVELOCK_FIELD(mainField8176);
  WAVELOCK_FIELD(pointCount);
  WAVELOCK_FIELD(baselineFlag);
  WAVELOCK_FIELD(windowAStart);
  WAVELOCK_FIELD(windowAEnd);
  WAVELOCK_FIELD(rejectFlag);
  WAVELOCK_FIELD(windowBStart);
  WAVELOCK_FIELD(windowBEnd);
  WAVELOCK_FIELD(rejectMin);
  WAVELOCK_FIELD(rejectMax);
  WAVELOCK_FIELD(sweepCount);
  WAVELOCK_FIELD(countC);
  WAVELOCK_FIELD(displayStart);
  WAVELOCK_FIELD(displayMax);
  WAVELOCK_FIELD(displayMin);
  WAVELOCK_FIELD(displayEnd);
  WAVELOCK_FIELD(displayField64);
  WAVELOCK_FIELD(displayField68);
  WAVELOCK_FIELD(displayField72);
  WAVELOCK_FIELD(displayField76);
  WAVELOCK_FIELD(displayFile);
  WAVELOCK_FIELD(displayField636);
  WAVELOCK_FIELD(triggerMode);
  WAVELOCK_FIELD(triggerValue);
  WAVELOCK_FIELD(triggerFlagA);
  WAVELOCK_FIELD(triggerChannel);
  WAVELOCK_FIELD(triggerCommon);
  WAVELOCK_FIELD(triggerCount);
  WAVELOCK_FIELD(triggerFlagB);
  WAVELOCK_FIELD(triggerX);
  WAVELOCK_FIELD(filterMode);
  WAVELOCK_FIELD(filterFlag);
  WAVELOCK_FIELD(filterValueA);
  WAVELOCK_FIELD(filterValueB);
  WAVELOCK_FIELD(filterValueC);
  WAVELOCK_FIELD(filterValueD);
  WAVELOCK_FIELD(filterValueE);
  WAVELOCK_FIELD(filterValueG);
  WAVELOCK_FIELD(filterValueF);
  WAVELOCK_FIELD(filterValueH);
  WAVELOCK_FIELD(filterValueI);
  WAVELOCK_FIELD(filterValueJ);
  WAVELOCK_FIELD(spectrumField0);
  WAVELOCK_FIELD(spectrumScale);
  WAVELOCK_FIELD(spectrumField8);
  WAVELOCK_FIELD(spectrumField16);
  WAVELOCK_FIELD(spectrumField12);
  WAVELOCK_FIELD(spectrumField20);
  WAVELOCK_FIELD(spectrumField24);
  WAVELOCK_FIELD(spectrumPoints);
  WAVELOCK_FIELD(spectrumField32);
  WAVELOCK_FIELD(spectrumField36);
  WAVELOCK_FIELD(spectrumDisplayStart);
  WAVELOCK_FIELD(spectrumDisplayEnd);
  WAVELOCK_FIELD(spectrumDisplayMin);
  WAVELOCK_FIELD(spectrumDisplayMax);
  WAVELOCK_FIELD(spectrumField56);
  WAVELOCK_FIELD(spectrumField60);
  WAVELOCK_FIELD(spectrumField64);
  WAVELOCK_FIELD(spectrumField68);
  WAVELOCK_FIELD(binWidth);
  WAVELOCK_FIELD(spectrumStart);
  WAVELOCK_FIELD(spectrumEnd);
  WAVELOCK_FIELD(spectrumField84);
  WAVELOCK_FIELD(spectrumField88);
  WAVELOCK_FIELD(bandTableCount);
  WAVELOCK_FIELD(spectrumField92);
  WAVELOCK_FIELD(spectrumField96);
  WAVELOCK_FIELD(spectrumField100);
  WAVELOCK_FIELD(displayField80);
  WAVELOCK_FIELD(artifactLabelCount);
  WAVELOCK_FIELD(eventLabelCount);
  WAVELOCK_FIELD(mainField7996);
  WAVELOCK_FIELD(mainField8000);
  WAVELOCK_FIELD(mainField8004);
  WAVELOCK_FIELD(acceptedSweeps);
  WAVELOCK_FIELD(rejectedSweeps);
  WAVELOCK_FIELD(averagedSweeps);
  WAVELOCK_FIELD(summaryB);
  WAVELOCK_FIELD(summaryA);
  WAVELOCK_FIELD(summaryD);
  WAVELOCK_FIELD(summaryC);
  WAVELOCK_FIELD(hasVariance);
  WAVELOCK_FIELD(mainField8012);
  WAVELOCK_FIELD(mainField8016);
  WAVELOCK_FIELD(detailKind);
  WAVELOCK_FIELD(fromRecording);
  WAVELOCK_FIELD(timeStart);
  WAVELOCK_FIELD(timeEnd);
  WAVELOCK_FIELD(actualRate);
  WAVELOCK_FIELD(flagA);
  WAVELOCK_FIELD(valueA);
  WAVELOCK_FIELD(indexA);
  WAVELOCK_FIELD(flagB);
  WAVELOCK_FIELD(windowSeconds);
  WAVELOCK_FIELD(valueB);
  WAVELOCK_FIELD(hasImaginary);
  WAVELOCK_FIELD(mainField8036);
  WAVELOCK_FIELD(mainField8040);
  WAVELOCK_FIELD(adcCounts);
  WAVELOCK_FIELD(adcRangeVolts);
  WAVELOCK_FIELD(displayOrder);
  WAVELOCK_FIELD(displayMark);
  WAVELOCK_FIELD(recordTableCount);
  WAVELOCK_FIELD(recordTable);
  WAVELOCK_FIELD(hasPositions);
  WAVELOCK_FIELD(rawBlock540);
  WAVELOCK_FIELD(recordDateRaw);
  WAVELOCK_FIELD(recordTimeRaw);
  WAVELOCK_FIELD(mainField8088);
  WAVELOCK_FIELD(bandTable);
  WAVELOCK_FIELD(writerVersionMajor);
  WAVELOCK_FIELD(writerVersionMinor);
  WAVELOCK_FIELD(mainField8164);
  WAVELOCK_FIELD(mainField8168);
  WAVELOCK_FIELD(mainField8180);
  WAVELOCK_FIELD(mainField8184);
  WAVELOCK_FIELD(mainField8188);
  WAVELOCK_FIELD(mainField8192);
  WAVELOCK_FIELD(mainField8196);
}

// The first `count` channels, or nothing where there are none.
template <ConstOrNot<ChannelArray> Array>
auto InUse(Array& channels, std::int32_t count) {
  return channels ? std::optional(channels.First(count)) : std::nullopt;
}

template <ConstOrNot<CSetup> Fields, class Visitor>
void VisitFields(Fields& fields, Visitor&& visit) {
  WAVELOCK_FIELD(paramsC);
  WAVELOCK_FIELD(paramsA);
  WAVELOCK_FIELD(paramsB);
  VisitFields(static_cast<ConstLike<Fields, SetupFields>&>(fields), visit);
  visit("channels", InUse(fields.channels, fields.channelCount));
  visit("channelGroups", std::array{InUse(fields.channelGroups[0], fields.derivedCount[0]),
                                    InUse(fields.channelGroups[1], fields.derivedCount[1]),
                                    InUse(fields.channelGroups[2], fields.derivedCount[2])});
  visit("channelsSnapshot", InUse(fields.channelsSnapshot, fields.channelCount));
  WAVELOCK_FIELD(channelCapacity);
  WAVELOCK_FIELD(channelLimit);
  WAVELOCK_FIELD(modified);
  WAVELOCK_FIELD(waveforms);
  WAVELOCK_FIELD(wideSamples);
  WAVELOCK_FIELD(block1010);
  WAVELOCK_FIELD(auxInputs);
  WAVELOCK_FIELD(sourceName);
  WAVELOCK_FIELD(setupTitle);
  visit("subject", static_cast<ConstLike<Fields, SubjectFields>&>(*fields.subject));
  WAVELOCK_FIELD(setupFileName);
}

#undef WAVELOCK_FIELD

struct AnyVisitor {
  void operator()(auto&&...) const {}
};

template <class T>
concept HasFields = requires(T& object) {
  VisitFields(object, AnyVisitor());
};

template <class T>
concept HasElements = requires(T& object) {
  VisitElements(object, AnyVisitor());
};

}  // namespace wavelock
