#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "tests/replay/answers.h"
#include "tests/replay/recorded_host.h"
#include "tests/replay/scripts.h"

namespace wavelock::replay {

using nlohmann::json;

namespace {

// Room for `bytes` bytes; none for sizes that no caller could have meant, so that the call meets a null
// buffer.
class OutputBuffer {
 public:
  explicit OutputBuffer(std::int64_t bytes) {
    constexpr std::int64_t kMost = std::int64_t{1} << 30;
    if (bytes >= 0 && bytes <= kMost) words_.resize(static_cast<std::size_t>(bytes) / sizeof(float) + 1);
    size_ = static_cast<std::size_t>(bytes);
  }

  void* Data() { return words_.empty() ? nullptr : words_.data(); }
  float* Floats() { return words_.empty() ? nullptr : words_.data(); }
  std::uint32_t Size() const { return static_cast<std::uint32_t>(size_); }
  std::span<const std::byte> Bytes() const { return std::as_bytes(std::span(words_)).first(size_); }
  std::span<const float> Values() const { return std::span(words_).first(size_ / sizeof(float)); }

 private:
  std::vector<float> words_;
  std::size_t size_ = 0;
};

std::uint64_t Widened(const json& call, const char* name) {
  return static_cast<std::uint64_t>(call.at(name).get<std::int64_t>());
}

std::uint32_t IndexOf(const json& call) {
  return static_cast<std::uint32_t>(call.at("index").get<std::int64_t>());
}

void ContinuousRaw(CRecordingFile& recording, const json& call, json& answer) {
  const auto bytes = call.at("outBytes").get<std::int64_t>();
  OutputBuffer out(bytes);
  const bool done = recording.ReadContinuousRaw(Widened(call, "start"), Widened(call, "end"), out.Data(),
                                                static_cast<std::int32_t>(bytes),
                                                call.value("skipPolynomials", 0), call.value("skipRows", 0));
  answer["result"] = done ? 1 : 0;
  if (done) answer.update(RawBlock(out.Bytes(), recording.sampleWidth));
}

void ContinuousFloat(CRecordingFile& recording, const json& call, json& answer) {
  const auto bytes = call.at("outBytes").get<std::int64_t>();
  OutputBuffer out(bytes);
  const bool done = recording.ReadContinuousFloat(
      Widened(call, "start"), Widened(call, "end"), out.Floats(), static_cast<std::uint32_t>(bytes),
      call.value("skipPolynomials", 0), call.value("skipRows", 0));
  answer["result"] = done ? 1 : 0;
  if (done) answer.update(FloatBlock(out.Values()));
}

void EpochRaw(CRecordingFile& recording, const json& call, json& answer) {
  OutputBuffer out(call.at("outBytes").get<std::int64_t>());
  const bool done = recording.ReadEpochRaw(IndexOf(call), out.Data(), out.Size());
  answer["result"] = done ? 1 : 0;
  if (done) answer.update(RawBlock(out.Bytes(), recording.sampleWidth));
}

void EpochFloat(CRecordingFile& recording, const json& call, json& answer) {
  OutputBuffer out(call.at("outBytes").get<std::int64_t>());
  const bool done = recording.ReadEpochFloat(IndexOf(call), out.Floats(), out.Size());
  answer["result"] = done ? 1 : 0;
  if (done) answer.update(FloatBlock(out.Values()));
}

void EpochFacts(CRecordingFile& recording, const json& call, json& answer) {
  EpochInfo info;
  const bool done = recording.GetEpochInfo(static_cast<std::int32_t>(IndexOf(call)), &info.trialType,
                                           &info.accept, &info.correct, &info.reactionTime, &info.response);
  answer["result"] = done ? 1 : 0;
  if (done) answer.update(EpochInfoFields(info));
}

void LoadDataObject(CRecordingFile& recording, const json& call, json& answer) {
  const CTFDEpoch* const object = recording.LoadDataObject(IndexOf(call));
  answer["result"] = object != nullptr ? 1 : 0;
  if (object != nullptr) answer["object"] = DataObject(*object);
}

void AveragedSection(CRecordingFile& recording, const json& call, json& answer) {
  const auto count = call.value("count", 1);
  answer["count"] = count;
  OutputBuffer out(std::int64_t{count} * recording.rawHeader.header.channelCount *
                   static_cast<std::int64_t>(sizeof(float)));
  const bool done = recording.ReadAveragedSection(count, out.Floats(), call.at("section").get<int>());
  answer["result"] = done ? 1 : 0;
  if (done) answer.update(FloatBlock(out.Values()));
}

void BuildPairedData(CRecordingFile& recording, const json&, json& answer) {
  const CTFDPaired* const pairs = recording.BuildPairedData();
  answer["result"] = pairs != nullptr ? 1 : 0;
  if (pairs != nullptr) answer["pairs"] = Pairs(*pairs);
}

void Event(CRecordingFile& recording, const json& call, json& answer) {
  const auto index = call.at("index").get<std::int64_t>();
  const bool exists = index >= 0 && index < recording.GetEventCount();
  answer["result"] = exists ? 1 : 0;
  if (!exists) return;
  const EventRecord& event = recording.GetEventTable().Elements()[static_cast<std::size_t>(index)];
  answer["nStimType"] = std::uint16_t{event.stimType};
  answer["nKeyboard"] = std::uint8_t{event.keyboard};
  answer["nKeypad"] = event.Keypad();
  answer["nPoint"] = static_cast<std::int32_t>(std::uint32_t{event.point});
}

using Operation = void (*)(CRecordingFile&, const json&, json&);

const std::map<std::string, Operation>& Operations() {
  static const std::map<std::string, Operation> operations = {
      {"continuousRaw", ContinuousRaw},
      {"continuousFloat", ContinuousFloat},
      {"epochRaw", EpochRaw},
      {"epochFloat", EpochFloat},
      {"epochInfo", EpochFacts},
      {"loadDataObject", LoadDataObject},
      {"averagedSection", AveragedSection},
      {"buildPairedData", BuildPairedData},
      {"event", Event},
      {"closeFile",
       [](CRecordingFile& r, const json&, json& answer) { answer["result"] = r.CloseFile() ? 1 : 0; }},
      {"facts", [](CRecordingFile& r, const json&, json& answer) { answer["result"] = Facts(r); }},
  };
  return operations;
}

json Call(CRecordingFile& recording, const json& call, RecordingUser& user) {
  json answer = call;
  const auto operation = Operations().find(call.at("op").get<std::string>());
  if (operation != Operations().end()) operation->second(recording, call, answer);
  if (json messages = user.TakeMessages(); !messages.empty()) answer["messages"] = std::move(messages);
  return answer;
}

json Differences(const json& before, const json& after) {
  json changed = json::object();
  for (const auto& [name, value] : after.items()) {
    if (before.at(name) != value) changed[name] = value;
  }
  return changed;
}

json OpenAndCall(CRecordingFile& recording, const json& entry, const std::string& saveSetup,
                 RecordingUser& user) {
  json answer;
  answer["open"] = recording.OpenFile(entry.at("path").get<std::string>()) ? 1 : 0;
  answer["messages"] = user.TakeMessages();
  if (!saveSetup.empty()) SaveSetupTo(*recording.GetSetup(), saveSetup);
  AddState(recording, answer);
  const json setupAfterOpen = answer["setup"];
  answer["calls"] = json::array();
  bool isClosed = false;
  for (const json& call : entry.at("calls")) {
    if (call.at("op") == "closeFile" && !isClosed) {
      answer["setupChanges"] = Differences(setupAfterOpen, SetupFieldsOf(*recording.GetSetup()));
      isClosed = true;
    }
    answer["calls"].push_back(Call(recording, call, user));
  }
  return answer;
}

}  // namespace

json RunOpenScript(const json& script) {
  RecordedHost host(script.at("host"));
  CRecordingFile recording(script.at("host").value("silent", false) ? 1 : 0, host.Get());
  json answers = json::array();
  std::string saveSetup = script.value("saveSetup", std::string());  // goes with the first recording
  for (const json& entry : script.at("recordings")) {
    answers.push_back(OpenAndCall(recording, entry, std::exchange(saveSetup, {}), host.User()));
  }
  return {{"recordings", answers}};
}

}  // namespace wavelock::replay
