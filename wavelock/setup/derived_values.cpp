// The small calculations that keep the axes of a setup in step and translate between points and time.
// Everything is worked out in double precision and rounded to single where it is stored.
#include <algorithm>
#include <limits>

#include "wavelock/numerics/conversions.h"
#include "wavelock/setup/setup.h"

namespace wavelock {
namespace {

constexpr std::int32_t kLargestInt32 = std::numeric_limits<std::int32_t>::max();
constexpr float kSpreadSquared = 100.0F;  // a distance of 10 units

std::int32_t OneMore(std::int32_t count) {
  return count < kLargestInt32 ? count + 1 : count;
}

// Cuts a display window to an axis; a window that has nothing left becomes the whole axis.
void FitWindow(float& start, float& end, double axisStart, double axisEnd) {
  if (start < axisStart) start = static_cast<float>(axisStart);
  if (end > axisEnd) end = static_cast<float>(axisEnd);
  if (start < end) return;
  start = static_cast<float>(axisStart);
  end = static_cast<float>(axisEnd);
}

void RaiseAndLower(float& value, float low, float high) {
  if (value < low) value = low;
  if (value > high) value = high;
}

// True when the value changed.
bool Replace(float& value, float with) {
  const bool changes = value != with;
  if (changes) value = with;  // a zero keeps its sign
  return changes;
}

void AdjustSlot(WaveformSlot& slot, float startMs, float endMs, std::int32_t rate) {
  const bool startChanged = Replace(slot.slotStart, startMs);
  const bool endChanged = Replace(slot.slotEnd, endMs);
  if (startChanged || endChanged) {
    slot.slotField52 = startMs;
    slot.slotField64 = endMs;
  }
  for (float* field : {&slot.slotField24, &slot.slotField28, &slot.slotField36, &slot.slotField40,
                       &slot.slotField52, &slot.slotField64})
    RaiseAndLower(*field, startMs, endMs);
  const double span = static_cast<double>(slot.slotEnd) - slot.slotStart;
  slot.slotPoints = OneMore(TruncateToInt32(span * rate * 0.001));
}

float SquaredDistance(const SetupChannel& a, const SetupChannel& b) {
  double sum = 0;
  for (std::size_t axis = 0; axis < a.position.size(); ++axis) {
    const double difference = static_cast<double>(a.position[axis]) - b.position[axis];
    sum += difference * difference;
  }
  return static_cast<float>(sum);
}

// A continuous recording has no spectrum: such a setup falls back to one second of time.
void LeaveFrequencyDomain(SetupFields& setup) {
  setup.frequencyDomain = 0;
  setup.timeStart = 0;
  setup.actualRate = static_cast<float>(setup.sampleRate);
  setup.timeEnd = 1;
  setup.pointCount = setup.sampleRate;
}

void AgreeOnRate(SetupFields& setup) {
  if (setup.fromRecording != 0)
    setup.sampleRate = TruncateToInt32(setup.actualRate + 0.5);
  else
    setup.actualRate = static_cast<float>(setup.sampleRate);
}

// `lastBin` counts from spectrumStart.
void FitSpectrum(SetupFields& setup, double lastBin) {
  const double half = setup.actualRate * 0.5;
  double top = setup.frequencyDomain != 0 ? lastBin * setup.binWidth + setup.spectrumStart
                                          : static_cast<double>(setup.spectrumEnd);
  top = std::min(top, half);
  if (top <= setup.spectrumStart) {
    setup.spectrumStart = 0;
    top = half;
  }
  setup.spectrumEnd = static_cast<float>(top);
  FitWindow(setup.spectrumDisplayStart, setup.spectrumDisplayEnd, setup.spectrumStart, top + setup.binWidth);
}

}  // namespace

double Round5(double value) {
  return TruncateToInt32(value * 100000.0 + (value >= 0 ? 0.5 : -0.5)) / 100000.0;
}

double CSetup::Rate() const {
  return fromRecording != 0 ? static_cast<double>(actualRate) : sampleRate;
}

std::int32_t CSetup::GetPoints() {
  if (frequencyDomain != 0) return spectrumPoints;
  if (fromRecording != 0) spectrumPoints = pointCount;
  return pointCount;
}

double CSetup::TimeOfPoint(std::int64_t point) {
  const std::int64_t last = std::int64_t{GetPoints()} - 1;
  const std::int64_t onAxis = std::min(std::max<std::int64_t>(point, 0), last);
  return Round5(static_cast<double>(onAxis) / Rate() + timeStart);
}

std::int32_t CSetup::PointOfTime(double seconds) {
  const double sinceStart = Round5(seconds) - Round5(timeStart);
  const std::int32_t point = OneMore(TruncateToInt32(sinceStart * Rate() + 0.5));
  return std::min(std::max(point, 0), GetPoints());
}

std::int32_t CSetup::ZeroPoint() const {
  if (frequencyDomain != 0 || Rate() <= 0) return 0;
  const std::int32_t start = TruncateToInt32(Rate() * timeStart + (timeStart >= 0 ? 0.5 : -0.5));
  return -std::max(start, -kLargestInt32);
}

double CSetup::AxisStartMs() const {
  return timeStart * 1000.0;
}

double CSetup::AxisEndMs() {
  const bool isSpectrum = frequencyDomain != 0 && fromRecording != 0;
  const std::int64_t points = isSpectrum ? spectrumPoints : pointCount;
  return TimeOfPoint(points - 1) * 1000.0;
}

double CSetup::AxisEnd() {
  return frequencyDomain != 0 ? static_cast<double>(spectrumEnd) : TimeOfPoint(pointCount);
}

std::int32_t CSetup::UpdateBins() {
  const double rate = actualRate;
  if (frequencyDomain != 0) {
    binWidth = static_cast<float>(rate / spectrumPoints);
    return pointCount;
  }
  binWidth = static_cast<float>(rate / pointCount);
  if (fromRecording != 0) spectrumPoints = pointCount;
  const float half = actualRate * 0.5F;
  float top = std::min(spectrumEnd, half);
  if (top <= spectrumStart) {
    spectrumStart = 0;
    top = half;
  }
  return OneMore(TruncateToInt32((static_cast<double>(top) - spectrumStart) / binWidth + 0.5));
}

void CSetup::UpdateTimeAxis() {
  if (dataKind == kContinuous && frequencyDomain != 0) LeaveFrequencyDomain(*this);
  const std::int32_t points = GetPoints();
  AgreeOnRate(*this);
  SetTimeEnd(static_cast<float>(TimeOfPoint(points)));
  FitWindow(displayStart, displayEnd, timeStart * 1000.0, timeEnd * 1000.0);
  FitSpectrum(*this, UpdateBins() - 1.0);
}

void CSetup::SetTimeEnd(float seconds) {
  timeEnd = seconds;
}

std::int32_t CSetup::KChannel() const {
  const auto isK = [](const SetupChannel& channel) {
    return channel.label.View().find_first_of("kK") != std::string_view::npos;
  };
  const std::span<const SetupChannel> inUse = Channels();
  const auto found = std::find_if(inUse.begin(), inUse.end(), isK);
  return found == inUse.end() ? 0 : static_cast<std::int32_t>(found - inUse.begin());
}

bool CSetup::PositionsSpread() const {
  const std::span<const SetupChannel> inUse = Channels();
  if (inUse.size() < 5) return false;
  const auto first = std::find_if(inUse.begin(), inUse.end(), TakesPartInStatistics);
  return std::any_of(first, inUse.end(), [first](const SetupChannel& channel) {
    return TakesPartInStatistics(channel) && SquaredDistance(channel, *first) >= kSpreadSquared;
  });
}

void CSetup::AdjustSlots(float startMs, float endMs, std::int32_t rate) {
  for (WaveformSlot& slot : waveforms.slots) AdjustSlot(slot, startMs, endMs, rate);
}

}  // namespace wavelock
