// What the library returned, as JSON.
#pragma once

#include <cstddef>
#include <cstdint>
#include <nlohmann/json.hpp>
#include <span>
#include <string>
#include <string_view>

#include "wavelock/annotations/epoch_info.h"
#include "wavelock/recording/recording_file.h"
#include "wavelock/setup/setup.h"

namespace wavelock::replay {

std::string Latin1ToUtf8(std::string_view text);
std::string Utf8ToLatin1(std::string_view text);  // what came from the other
std::string Hexadecimal(std::span<const std::byte> bytes);
std::string Sha256(std::span<const std::byte> bytes);

// A block of values by its count, its digest and its first values.
nlohmann::json RawBlock(std::span<const std::byte> bytes, int width);
nlohmann::json FloatBlock(std::span<const float> values);

// Fields with their names, to be told or set.
template <class Marker, class Visit>
void VisitMarker(Marker& marker, Visit&& visit) {
  visit("labelMode", marker.labelMode);
  visit("locked", marker.locked);
  visit("colour", marker.colour);
  visit("attributeA", marker.attributeA);
  visit("attributeB", marker.attributeB);
  visit("attributeC", marker.attributeC);
  visit("attributeD", marker.attributeD);
  visit("transient", marker.transient);
  visit("firstValue", marker.firstValue);
  visit("timeMs", marker.timeMs);
  visit("sampleIndex", marker.sampleIndex);
  visit("secondValue", marker.secondValue);
  visit("channel", marker.channel);
  visit("epoch", marker.epoch);
  visit("text", marker.text);
  visit("name", marker.name);
}

template <class Parameters, class Visit>
void VisitParameters(Parameters& params, Visit&& visit) {
  visit("storedValue0", params.storedValue0);
  visit("storedWord1", params.storedWord1);
  visit("storedValue2", params.storedValue2);
  visit("storedValue3", params.storedValue3);
  visit("storedValue4", params.storedValue4);
  visit("sampleShift", params.sampleShift);
  visit("storedWords6", params.storedWords6);
  visit("storedValue11", params.storedValue11);
  visit("storedValue12", params.storedValue12);
  visit("polyOrder", params.polyOrder);
  visit("polyChannels", params.polyChannels);
  visit("alwaysSave", params.alwaysSave);
  visit("storedWords16", params.storedWords16);
}

nlohmann::json EpochInfoFields(const EpochInfo& info);

nlohmann::json DataObject(const CTFDEpoch& object);
nlohmann::json Pairs(const CTFDPaired& pairs);

nlohmann::json Facts(CRecordingFile& recording);
nlohmann::json SetupFieldsOf(const CSetup& setup);

// Adds header, setup, events and all else that an open leaves behind.
void AddState(CRecordingFile& recording, nlohmann::json& answer);

}  // namespace wavelock::replay
