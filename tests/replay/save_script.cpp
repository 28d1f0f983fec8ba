#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>
#include <map>
#include <memory>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "tests/replay/answers.h"
#include "tests/replay/recorded_host.h"
#include "tests/replay/scripts.h"
#include "tests/support/setup_values.h"

namespace wavelock::replay {

using nlohmann::json;

namespace {

// ---- values of a script

std::vector<std::byte> FromHexadecimal(const std::string& text) {
  std::vector<std::byte> bytes;
  for (std::size_t i = 0; i + 1 < text.size(); i += 2) {
    bytes.push_back(static_cast<std::byte>(std::stoul(text.substr(i, 2), nullptr, 16)));
  }
  return bytes;
}

template <class T>
std::vector<T> Numbers(const json& step, const char* name) {
  const std::vector<std::byte> bytes = FromHexadecimal(step.at(name).get<std::string>());
  std::vector<T> values;
  values.reserve(bytes.size() / sizeof(T) + 1);  // a block without values is a block too, and no null
  values.resize(bytes.size() / sizeof(T));
  if (!values.empty()) std::memcpy(values.data(), bytes.data(), values.size() * sizeof(T));
  return values;
}

double NumberOf(const json& value) {
  if (!value.is_string()) return value.get<double>();
  if (value == "nan") return std::nan("");
  const double infinity = std::numeric_limits<double>::infinity();
  return value == "-inf" ? -infinity : infinity;
}

// What is not in the script stays as it is.
template <class T>
void Take(const json& step, const char* name, T& target) {
  if (step.contains(name)) target = step.at(name).get<T>();
}

template <class T>
void Take(const json& step, const char* name, Stored<T>& target) {
  if (step.contains(name)) target = step.at(name).get<T>();
}

template <class T, std::size_t N>
void Take(const json& step, const char* name, std::array<Stored<T>, N>& target) {
  if (!step.contains(name)) return;
  for (std::size_t i = 0; i < std::min(N, step.at(name).size()); ++i) target[i] = step.at(name)[i].get<T>();
}

void Take(const json& step, const char* name, double& target) {
  if (step.contains(name)) target = NumberOf(step.at(name));
}

void Take(const json& step, const char* name, std::string& target) {
  if (step.contains(name)) target = Utf8ToLatin1(step.at(name).get<std::string>());
}

// ---- fields of the setup

template <class Leaf>
void StoreLeaf(Leaf& leaf, const json& value) {
  if constexpr (std::is_const_v<Leaf>) {
    throw std::runtime_error("the field is constant");
  } else if constexpr (std::is_floating_point_v<Leaf>) {
    leaf = static_cast<Leaf>(NumberOf(value));
  } else if constexpr (std::is_arithmetic_v<Leaf>) {
    leaf = static_cast<Leaf>(value.get<std::int64_t>());
  } else if constexpr (std::is_same_v<Leaf, std::string>) {
    leaf = Utf8ToLatin1(value.get<std::string>());
  } else {
    leaf.Assign(Utf8ToLatin1(value.get<std::string>()));
  }
}

// What is to be put into fields, by their paths, all in one pass over the setup. A field of bytes is known by
// their hexadecimal digits, each byte of it by its index.
class PendingFields {
 public:
  void Add(const std::string& path, const json& value) { values_[path] = {.json = value, .bytes = {}}; }

  void Store(CSetup& setup) {
    if (values_.empty()) return;
    VisitLeaves("", setup, [this](const std::string& path, auto& leaf) {
      if (Value* const value = Find(path)) {
        StoreLeaf(leaf, value->json);
      } else if constexpr (std::is_same_v<std::remove_reference_t<decltype(leaf)>, std::uint8_t>) {
        const std::size_t bracket = path.rfind('[');
        if (Value* const bytes = bracket == path.npos ? nullptr : Find(path.substr(0, bracket)))
          StoreByte(leaf, *bytes, std::stoul(path.substr(bracket + 1)));
      }
    });
    for (const auto& [path, value] : values_) {
      if (!value.isStored) throw std::runtime_error("the setup has no field " + path);
    }
    values_.clear();
  }

 private:
  struct Value {
    nlohmann::json json;
    std::vector<std::byte> bytes;
    bool isStored = false;
  };

  Value* Find(const std::string& path) {
    const auto found = values_.find(path);
    if (found == values_.end()) return nullptr;
    found->second.isStored = true;
    return &found->second;
  }

  static void StoreByte(std::uint8_t& leaf, Value& value, std::size_t index) {
    if (value.bytes.empty()) value.bytes = FromHexadecimal(value.json.get<std::string>());
    if (index < value.bytes.size()) leaf = std::to_integer<std::uint8_t>(value.bytes[index]);
  }

  std::map<std::string, Value> values_;
};

// ---- steps

struct Stage {
  CRecordingFile& recording;
  RecordedHost& host;
  const std::string& path;
  PendingFields fields{};  // that were set since the last other step
};

json Set(Stage& stage, const json& step) {
  stage.fields.Add(step.at("field").get<std::string>(), step.at("value"));
  return nullptr;
}

json MakeGroup(Stage& stage, const json& step) {
  CSetup& setup = *stage.recording.setup;
  const auto group = step.at("group").get<std::size_t>();
  setup.derivedCount.at(group) = step.at("count").get<std::int32_t>();
  setup.MakeChannelGroup(static_cast<std::int32_t>(group));
  std::int32_t index = 0;
  for (SetupChannel& channel : setup.GroupChannels(group)) {
    channel = DefaultDerivedChannel(index, std::string("D").append(std::to_string(index + 1)));
    ++index;
  }
  return nullptr;
}

json AddEvent(Stage& stage, const json& step) {
  EventRecord event{};
  const std::vector<std::byte> raw = FromHexadecimal(step.at("raw").get<std::string>());
  std::memcpy(&event, raw.data(), std::min(raw.size(), sizeof event));
  stage.recording.eventGroup.Append(event);
  return nullptr;
}

json AddMarker(Stage& stage, const json& step) {
  auto marker = std::make_unique<CMarker>();
  VisitMarker(*marker, [&step](const char* name, auto& value) { Take(step, name, value); });
  stage.recording.markerList.Add(std::move(marker));
  return nullptr;
}

json AddLabel(Stage& stage, const json& step) {
  LabelEntry label;
  Take(step, "text", label.text);
  Take(step, "value", label.value);
  stage.recording.labelList.Add(std::move(label));
  return nullptr;
}

json SetOverlayParameters(Stage& stage, const json& step) {
  VisitParameters(stage.recording.overlay.params,
                  [&step](const char* name, auto& value) { Take(step, name, value); });
  return nullptr;
}

json AddOverlayRow(Stage& stage, const json& step) {
  OverlayRow row{};
  Take(step, "startSample", row.startSample);
  const std::vector<float> values = Numbers<float>(step, "values");
  for (std::size_t c = 0; c < std::min(values.size(), row.channelValue.size()); ++c) {
    row.channelValue[c] = values[c];
  }
  stage.recording.overlay.AddRow(row);
  return nullptr;
}

json AddOverlaySegment(Stage& stage, const json& step) {
  auto segment = std::make_unique<OverlaySegment>();
  Take(step, "firstSample", segment->firstSample);
  Take(step, "endSample", segment->endSample);
  Take(step, "id", segment->id);
  for (const double value : Numbers<double>(step, "coefficients")) segment->coefficients.Append(value);
  stage.recording.overlay.AddSegment(std::move(segment));
  return nullptr;
}

json Create(Stage& stage, const json& step) {
  return stage.recording.CreateFile(stage.path, step.at("width").get<int>());
}

// Of a call with data: the size that the script states, or that of the data.
std::uint32_t SizeOf(const json& step, std::span<const float> data) {
  return step.value("bytes", static_cast<std::uint32_t>(data.size_bytes()));
}

json AppendContinuous(Stage& stage, const json& step) {
  const std::vector<float> data = Numbers<float>(step, "data");
  return stage.recording.AppendContinuousFloat(data.data(), SizeOf(step, data));
}

json AppendEpochHead(Stage& stage, const json& step) {
  const std::vector<float> reactionTime = Numbers<float>(step, "reactionTime");
  return stage.recording.AppendEpochHead(
      step.at("trialType").get<std::uint16_t>(), step.at("accept").get<std::uint8_t>(),
      step.at("correct").get<std::uint16_t>(), reactionTime.at(0), step.at("response").get<std::uint16_t>());
}

json AppendEpoch(Stage& stage, const json& step) {
  const std::vector<float> data = Numbers<float>(step, "data");
  return stage.recording.AppendEpochFloat(data.data(), SizeOf(step, data));
}

json WriteAverage(Stage& stage, const json& step) {
  const std::vector<float> data = Numbers<float>(step, "data");
  return stage.recording.WriteAverageSection(data.data(), SizeOf(step, data), step.at("section").get<int>());
}

json WriteVariance(Stage& stage, const json& step) {
  const std::vector<float> data = Numbers<float>(step, "data");
  return stage.recording.WriteVarianceSection(data.data(), SizeOf(step, data));
}

void Fill(FloatMatrix& matrix, const std::vector<float>& values) {
  const std::span<float> all = matrix.All();
  std::copy_n(values.begin(), std::min(values.size(), all.size()), all.begin());
}

json WriteTimeFrequency(Stage& stage, const json& step) {
  CTFDEpoch data(stage.recording.GetSetup(), 0);
  if (!data.imaginary) data.AllocImaginary();
  Fill(data.main, Numbers<float>(step, "main"));
  Fill(data.imaginary, Numbers<float>(step, "imaginary"));
  return stage.recording.WriteTimeFrequencyData(&data);
}

json WritePaired(Stage& stage, const json& step) {
  const json& pairs = step.at("pairs");
  CTFDPaired data(stage.recording.GetSetup(), static_cast<std::int32_t>(pairs.size()));
  for (std::size_t k = 0; k < pairs.size() && data.ready != 0; ++k) {
    data.pairIndex[0][k] = pairs[k][0].get<std::int32_t>();
    data.pairIndex[1][k] = pairs[k][1].get<std::int32_t>();
  }
  Fill(data.real, Numbers<float>(step, "real"));
  Fill(data.imaginary, Numbers<float>(step, "imaginary"));
  return stage.recording.WritePairedData(&data);
}

json SetProfile(Stage& stage, const json& step) {
  stage.host.SetProfile(step.at("section"), step.at("key"), step.at("value"));
  return nullptr;
}

json SaveAndClose(Stage& stage, const json& step) {
  return stage.recording.SaveAndClose(step.at("stamp").get<std::int64_t>());
}

using Operation = json (*)(Stage&, const json&);

const std::map<std::string, Operation>& Operations() {
  static const std::map<std::string, Operation> operations = {
      {"set", Set},
      {"makeGroup", MakeGroup},
      {"event", AddEvent},
      {"marker", AddMarker},
      {"label", AddLabel},
      {"overlayParams", SetOverlayParameters},
      {"overlayRow", AddOverlayRow},
      {"overlaySegment", AddOverlaySegment},
      {"create", Create},
      {"appendContinuousFloat", AppendContinuous},
      {"appendEpochHead", AppendEpochHead},
      {"appendEpochFloat", AppendEpoch},
      {"writeAverageSection", WriteAverage},
      {"writeVarianceSection", WriteVariance},
      {"writeTimeFrequencyData", WriteTimeFrequency},
      {"writePairedData", WritePaired},
      {"profile", SetProfile},
      {"saveAndClose", SaveAndClose},
  };
  return operations;
}

}  // namespace

json RunSaveScript(const json& script) {
  RecordedHost host(script.value("host", json::object()));
  const std::string path = script.at("path").get<std::string>();
  const bool isSilent = script.contains("host") && script.at("host").value("silent", false);
  CRecordingFile recording(isSilent ? 1 : 0, host.Get());
  Stage stage{recording, host, path};
  json results = json::array();
  for (const json& step : script.at("steps")) {
    const std::string operation = step.at("op");
    if (operation != "set") stage.fields.Store(*recording.setup);
    results.push_back(Operations().at(operation)(stage, step));
  }
  stage.fields.Store(*recording.setup);
  return {{"results", std::move(results)},
          {"messages", host.User().TakeMessages()},
          {"setupAfter", SetupFieldsOf(*recording.GetSetup())}};
}

}  // namespace wavelock::replay
