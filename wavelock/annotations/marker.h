// Markers: named points on the time axis of a recording.
#pragma once

#include <cstdint>
#include <string>

#include "wavelock/platform/archive.h"

namespace wavelock {

// Fields are open to the classes of the system.
class CMarker {
 public:
  virtual ~CMarker() = default;
  CMarker() = default;
  CMarker(const CMarker&) = default;
  CMarker& operator=(const CMarker&) = default;

  std::string GetName() const { return name; }
  void SetName(std::string newName);

  // What the marker shows, by `labelMode`: its name, its numbers with one decimal, or nothing for a mode that
  // does not exist. With `raw` always the name.
  std::string GetLabel(bool raw) const;

  // Stores the marker or loads it. A form older than the second generation has no `labelMode`; `firstValue`
  // is in none of them. False when the archive failed; a marker that was to be loaded is then as it was.
  bool Serialize(Archive& archive);
  static constexpr int kSchema = 2;

  enum LabelMode : std::int32_t { kShowName, kShowFirstValue, kShowSecondValue, kShowBothValues };

  std::int32_t labelMode = kShowName;
  std::int32_t locked = 0;
  std::uint32_t colour = 255;  // red in the low byte, then green, then blue
  // Carried for whoever wrote them.
  std::int32_t attributeA = 1;
  std::int32_t attributeB = 0;
  std::int32_t attributeC = 0;
  std::int32_t attributeD = 1;
  std::int32_t transient = 0;  // not 0: left out when the list is saved
  double firstValue = 0;
  double timeMs = 0;              // counts while there is no sampleIndex
  std::int32_t sampleIndex = -1;  // point on the time axis; -1: still to be worked out from timeMs
  double secondValue = 0;
  std::int32_t channel = -1;
  std::int32_t epoch = -1;
  std::string text;  // of text and name 49 characters survive a save
  std::string name;

 private:
  void Exchange(Archive& archive);  // in the order of the archive
};

}  // namespace wavelock
