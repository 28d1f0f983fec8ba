#include "tests/replay/cases.h"

#include <algorithm>
#include <cstdio>
#include <fstream>
#include <iterator>
#include <nlohmann/json.hpp>
#include <span>
#include <string>
#include <vector>

#include "tests/replay/answers.h"
#include "tests/replay/recorded_host.h"
#include "tests/replay/scripts.h"
#include "tests/support/temporary_folder.h"
#include "wavelock/recording/recording_file.h"

namespace wavelock::replay {
namespace {

using nlohmann::json;
namespace fs = std::filesystem;

// ---- what an answer keeps

bool IsListOfParts(const json& value) {
  return value.is_array() && !value.empty() && value.front().is_structured();
}

// A list of one value, many times.
json Contracted(const json& value) {
  const bool isEven =
      value.is_array() && value.size() > 1 &&
      std::all_of(value.begin(), value.end(), [&](const json& v) { return v == value.front(); });
  return isEven ? json{{"count", value.size()}, {"each", value.front()}} : value;
}

// Of objects the fields, and of lists of objects the places, that differ from the base.
json Changes(const json& base, const json& value) {
  const bool hasPlaces = IsListOfParts(value) && base.is_array();
  if (!hasPlaces && !(value.is_object() && base.is_object())) return Contracted(value);
  json changes = json::object();
  if (hasPlaces && value.size() != base.size()) changes["count"] = value.size();
  for (const auto& [name, part] : value.items()) {
    const bool hasBase = hasPlaces ? std::stoul(name) < base.size() : base.contains(name);
    if (!hasBase) {
      changes[name] = part;
      continue;
    }
    const json& basePart = hasPlaces ? base.at(std::stoul(name)) : base.at(name);
    if (part != basePart) changes[name] = Changes(basePart, part);
  }
  return changes;
}

// Runs of bytes that are not zero, by their offset.
json NonzeroRuns(const std::string& hexadecimal) {
  json runs = json::object();
  std::size_t end = 0;  // of the last run
  std::string* run = nullptr;
  for (std::size_t at = 0; at < hexadecimal.size(); at += 2) {
    const std::string byte = hexadecimal.substr(at, 2);
    if (byte == "00") continue;
    if (run == nullptr || end != at) {
      std::string offset = std::to_string(at / 2);
      offset.insert(0, offset.size() < 5 ? 5 - offset.size() : 0, '0');
      run = (runs[offset] = std::string()).get_ptr<std::string*>();
    }
    run->append(byte);
    end = at + 2;
  }
  return runs;
}

json DigestOf(const json& value) {
  const std::string text = value.dump(-1, ' ', false, json::error_handler_t::replace);
  return {{"count", value.size()}, {"sha256", Sha256(std::as_bytes(std::span(text)))}};
}

// The first channels as they are; all others by one digest.
void ShortenChannels(json& setup) {
  constexpr std::size_t kShownChannels = 3;
  json& channels = setup["channels"];
  if (channels.size() <= kShownChannels) return;
  const auto behind = channels.begin() + kShownChannels;
  setup["otherChannels"] = DigestOf(json(std::vector<json>(behind, channels.end())));
  channels.erase(behind, channels.end());
}

void ShortenCalls(json& recording) {
  for (json& call : recording["calls"]) {
    for (const char* said : {"start", "end", "outBytes", "skipPolynomials", "skipRows", "index", "section"})
      call.erase(said);
    if (call.at("op") == "facts") call["result"] = Changes(recording.at("facts"), call.at("result"));
  }
}

// Without what the script says already, and without all that a recording or a setup holds from the start.
json Shortened(json answer) {
  RecordedHost host(json::object());  // a fresh object takes texts from the profile, which is nobody's here
  CRecordingFile recording(1, host.Get());
  json fresh;
  AddState(recording, fresh);
  for (const char* setup : {"setup", "setupAfter"}) {
    if (!answer.contains(setup)) continue;
    ShortenChannels(answer[setup]);
    answer[setup] = Changes(fresh.at("setup"), answer.at(setup));
  }
  if (!answer.contains("recordings")) return answer;
  for (json& opened : answer["recordings"]) {
    ShortenCalls(opened);
    ShortenChannels(opened["setup"]);
    opened["header"] = NonzeroRuns(opened.at("header").get<std::string>());
    opened = Changes(fresh, opened);
  }
  return answer;
}

json FileFacts(const fs::path& path) {
  std::ifstream file(path, std::ios::binary);
  if (!file) return nullptr;
  const std::vector<char> bytes(std::istreambuf_iterator<char>(file), {});
  return {{"bytes", bytes.size()}, {"sha256", Sha256(std::as_bytes(std::span(bytes)))}};
}

// ---- a case

json Answer(const fs::path& path, json script) {
  const TemporaryFolder folder;
  const fs::path before = fs::current_path();
  const bool isSave = script.at("kind") == "save";
  const std::string saved = isSave ? script.at("path") : script.value("saveSetup", json(""));
  if (script.contains("saveSetup")) script["saveSetup"] = folder.Path(saved);
  fs::current_path(isSave ? fs::path(folder.Path()) : path.parent_path());
  json answer = Shortened(RunScript(script));
  if (!saved.empty()) answer["saved"] = FileFacts(folder.Path(saved));
  fs::current_path(before);
  return answer;
}

json ReadCase(const fs::path& path) {
  std::ifstream in(path);
  return json::parse(in);
}

// A line for each part of a recording's answer and for each step of a save, however long.
void Print(std::string& text, const json& value, int depth = 0) {
  constexpr std::size_t kWidth = 110;
  constexpr int kDeepest = 4;
  const std::string line = value.dump(-1, ' ', false, json::error_handler_t::replace);
  if (!value.is_structured() || depth == kDeepest || line.size() <= kWidth) {
    text += line;
    return;
  }
  const auto indent = static_cast<std::size_t>(depth + 1);
  text += value.is_object() ? '{' : '[';
  const char* separator = "\n";
  for (const auto& [name, part] : value.items()) {
    text.append(separator).append(indent, ' ');
    if (value.is_object()) text.append(json(name).dump()).append(": ");
    Print(text, part, depth + 1);
    separator = ",\n";
  }
  text.append("\n").append(indent - 1, ' ') += value.is_object() ? '}' : ']';
}

}  // namespace

bool CheckCase(const fs::path& path) {
  const json frozen = ReadCase(path);
  const json& expected = frozen.at("answer");
  const json differences = json::diff(expected, Answer(path, frozen.at("script")));
  for (const json& difference : differences) {
    const std::string place = difference.at("path");
    const json::json_pointer pointer(place);
    const json was = expected.contains(pointer) ? expected.at(pointer) : json("nothing");
    std::fprintf(stderr, "%s%s: %s, and now %s\n", path.stem().string().c_str(), place.c_str(),
                 was.dump().c_str(), difference.value("value", json("nothing")).dump().c_str());
  }
  return differences.empty();
}

void FreezeCase(const fs::path& path) {
  const json script = ReadCase(path).at("script");
  std::string text = "{\n \"script\": ";
  Print(text, script, 1);
  Print(text += ",\n \"answer\": ", Answer(path, script), 1);
  std::ofstream(path) << text << "\n}\n";
}

}  // namespace wavelock::replay
