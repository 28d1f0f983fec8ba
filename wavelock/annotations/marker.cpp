#include "wavelock/annotations/marker.h"

#include <cstdio>
#include <new>
#include <utility>

namespace wavelock {
namespace {

std::string OneDecimal(double value) {
  constexpr std::size_t kLongest = 320;  // the largest double has 309 digits
  char text[kLongest];
  const int length = std::snprintf(text, sizeof text, "%.1f", value);
  return {text, static_cast<std::size_t>(length)};
}

}  // namespace

void CMarker::SetName(std::string newName) {
  name = std::move(newName);
}

std::string CMarker::GetLabel(bool raw) const {
  switch (raw ? std::int32_t{kShowName} : labelMode) {
    case kShowName:
      return name;
    case kShowFirstValue:
      return OneDecimal(firstValue);
    case kShowSecondValue:
      return OneDecimal(secondValue);
    case kShowBothValues:
      return OneDecimal(firstValue) + "," + OneDecimal(secondValue);
    default:
      return {};
  }
}

bool CMarker::Serialize(Archive& archive) {
  try {
    CMarker marker = *this;
    marker.Exchange(archive);
    if (archive.HasFailed()) return false;
    if (!archive.IsStoring()) *this = marker;
    return true;
  } catch (const std::bad_alloc&) {
    archive.Fail();
    return false;
  }
}

void CMarker::Exchange(Archive& archive) {
  archive.Number(locked);
  archive.Number(colour);
  archive.Text(name);
  archive.Number(attributeA);
  archive.Number(attributeB);
  archive.Number(attributeC);
  archive.Number(attributeD);
  archive.Number(transient);
  archive.Number(sampleIndex);
  archive.Number(secondValue);
  archive.Number(channel);
  archive.Number(epoch);
  archive.Text(text);
  const bool hasLabelMode = archive.IsStoring() || archive.ObjectSchema() >= kSchema;
  if (hasLabelMode) archive.Number(labelMode);
  if (archive.IsStoring()) return;
  if (!hasLabelMode) labelMode = kShowName;
  timeMs = 0;
}

}  // namespace wavelock
