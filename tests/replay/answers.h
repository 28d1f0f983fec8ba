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

nlohmann::json EpochInfoFields(const EpochInfo& info);

nlohmann::json DataObject(const CTFDEpoch& object);
nlohmann::json Pairs(const CTFDPaired& pairs);

nlohmann::json Facts(CRecordingFile& recording);
nlohmann::json SetupFieldsOf(const CSetup& setup);

// Adds header, setup, events and all else that an open leaves behind.
void AddState(CRecordingFile& recording, nlohmann::json& answer);

}  // namespace wavelock::replay
