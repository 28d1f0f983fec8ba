// What a setup starts with when no file says otherwise.
#include <algorithm>
#include <cmath>
#include <iterator>
#include <numeric>
#include <string>

#include "wavelock/numerics/conversions.h"
#include "wavelock/setup/setup.h"

namespace wavelock {
namespace {

struct DefaultBand {
  FixedText<20> name;
  float low;  // Hz
  float high;
  float scale;
};

constexpr DefaultBand kDisplayBands[] = {
    {"Delta", 0.0F, 3.9F, 100.0F},  {"Theta", 4.0F, 7.9F, 70.0F},   {"Alpha", 8.0F, 12.9F, 50.0F},
    {"Beta1", 13.0F, 19.9F, 10.0F}, {"Beta2", 20.0F, 39.9F, 10.0F},
};

constexpr DefaultBand kSpectralBands[] = {
    {"Delta", 0.0F, 3.9F, 20.0F},
    {"Theta", 4.0F, 7.9F, 10.0F},
    {"Alpha", 8.0F, 12.9F, 10.0F},
    {"Beta", 13.0F, 29.9F, 5.0F},
};

constexpr SetupLabel kArtifacts[] = {
    {113, "Movement"}, {114, "Blink"},  {115, "Talking"}, {116, "Cough"},        {117, "Muscle"},
    {118, "Jaw"},      {119, "Sneeze"}, {120, "Swallow"}, {121, "Eye movement"}, {122, "Hiccup"},
};

// A new SetupFields is made once: it is larger than the stack of a thread should have to hold.
const SetupFields& FreshFields() {
  static const SetupFields fresh;
  return fresh;
}

// A box and its zoom box, in parts of the display.
struct Place {
  double left;
  double top;
  double width;
  double height;
  double zoomWidth;
  double zoomHeight;
};

void PutChannel(SetupChannel& channel, std::size_t layout, const Place& place) {
  channel.boxLeft[layout] = static_cast<float>(place.left);
  channel.boxRight[layout] = static_cast<float>(place.left + place.width);
  channel.boxTop[layout] = static_cast<float>(place.top);
  channel.boxBottom[layout] = static_cast<float>(place.top + place.height);
  channel.zoomLeft[layout] = static_cast<float>(place.left);
  channel.zoomRight[layout] = static_cast<float>(place.left + place.zoomWidth);
  channel.zoomTop[layout] = static_cast<float>(place.top);
  channel.zoomBottom[layout] = static_cast<float>(place.top + place.zoomHeight);
}

struct Grid {
  std::size_t columns;
  std::size_t rows;
};

// About four columns to three rows. `count` is not 0.
Grid GridFor(std::size_t count) {
  Grid grid{};
  if (count >= 12) {
    const std::size_t twelves = count / 12;
    grid.columns = Truncate<std::size_t>(4.0 * std::sqrt(static_cast<double>(twelves)));
    grid.rows = count / grid.columns;
  } else {
    grid.rows = count <= 4 ? 1 : 2;
    grid.columns = count / grid.rows;
  }
  if (count % grid.columns != 0) ++grid.columns;
  return grid;
}

// The size of one of `count` cells that share the display with gaps of a quarter of a cell.
double CellSize(std::size_t count) {
  return 1.0 / (static_cast<double>(count * 5 + 1) * 0.25);
}

}  // namespace

SetupBands DefaultBands() {
  SetupBands bands;
  for (std::size_t i = 0; i < bands.size(); ++i) {
    bands[i].bandName = kDisplayBands[i].name;
    bands[i].bandLow = kDisplayBands[i].low;
    bands[i].bandHigh = kDisplayBands[i].high;
    bands[i].bandScale = kDisplayBands[i].scale;
  }
  return bands;
}

SetupLabels DefaultArtifactLabels() {
  SetupLabels labels;
  std::copy(std::begin(kArtifacts), std::end(kArtifacts), labels.begin());
  return labels;
}

BandTable DefaultBandTable() {
  BandTable table;
  std::transform(std::begin(kSpectralBands), std::end(kSpectralBands), table.begin(),
                 [](const DefaultBand& band) {
                   return BandTableRow{band.name, band.low, band.high, 0.0F, band.scale, 0.0F};
                 });
  return table;
}

DisplayTable DefaultDisplayOrder() {
  DisplayTable order;
  for (auto& layout : order) std::iota(layout.begin(), layout.end(), 0);
  return order;
}

SetupChannel DefaultChannel(std::int32_t index) {
  SetupChannel channel;
  channel.label.Assign(std::to_string(index + 1));
  channel.textA = "Default";
  channel.textB = "Default";
  channel.layoutScale.fill(1.0F);
  channel.layoutSelected[0] = 1;
  const std::int32_t row = index / 8;
  const Place place{index % 8 * 0.125 + 0.0125, row * 0.25 + 0.075, 0.1, 0.1, 0.3, 0.6};
  for (std::size_t layout = 0; layout < kLayoutCount; ++layout) PutChannel(channel, layout, place);
  channel.channelScale = 1.0F;
  channel.physicalChannel = index;
  channel.countScale = 0.16784699F;
  channel.lowpassHz = 30.0F;
  channel.lowpassField = 3;
  channel.highpassHz = 0.15F;
  channel.highpassField = 3;
  channel.filterSpec = {1, 30, 1, 0, 1, 30, 70, 1, 1, 2, 0, 0};
  channel.channelValueF = 65535;
  channel.links.fill({0, -1, 0});
  channel.sweeps = 1;
  channel.colorA = 65280;
  return channel;
}

SetupChannel DefaultDerivedChannel(std::int32_t index, std::string_view label) {
  SetupChannel channel = DefaultChannel(index);
  channel.label.Assign(label);
  channel.sweeps = 0;
  channel.links = {};
  channel.colorA = 0;
  return channel;
}

bool CSetup::ResetToDefaults() {
  static_cast<SetupFields&>(*this) = FreshFields();
  wideSamples = 0;
  channelCapacity = std::max(channelCount, channelLimit);
  if (!MakeChannels()) return false;
  for (std::int32_t i = 0; i < channelCapacity; ++i) ResetChannel(i);

  // First a place for every channel, then those of the channels in use. Default channels are selected on
  // layout 0 alone, so that there is nothing to place on the others.
  const std::int32_t inUse = channelCount;
  for (const std::int32_t count : {channelLimit, inUse}) {
    channelCount = count;
    LayoutGrid(0);
  }

  subject->Reset();
  ResetWaveforms();
  ResetAuxInputs();
  ResetSourceName();
  ResetParameterBlocks();
  block1010 = {};
  UpdateTimeAxis();
  return true;
}

void CSetup::ResetChannel(std::int32_t index) {
  const auto place = static_cast<std::size_t>(index);
  if (index < channelCapacity && place < channels.Size()) channels[place] = DefaultChannel(index);
}

void CSetup::ResetArtifactLabels() {
  std::copy(std::begin(kArtifacts), std::end(kArtifacts), artifactLabels.begin());
  artifactLabelCount = static_cast<std::int32_t>(std::size(kArtifacts));
}

void CSetup::ResetBandTable() {
  const BandTable& fresh = FreshFields().bandTable;
  std::copy_n(fresh.begin(), std::size(kSpectralBands), bandTable.begin());
  bandTableCount = static_cast<std::int32_t>(std::size(kSpectralBands));
}

void CSetup::ResetDisplayOrder() {
  displayOrder = FreshFields().displayOrder;
  displayMark = FreshFields().displayMark;
}

void CSetup::ResetParameterBlocks() {
  paramsA = {};
  paramsB = {};
  paramsC = {};
  paramsA.aChannel = paramsA.aChannel2 = KChannel();
}

void CSetup::ResetAuxInputs() {
  auxInputs = {};
}

void CSetup::ResetSourceName() {
  sourceName = "Unknown";
}

void CSetup::ResetWaveforms() {
  waveforms = {};
}

void CSetup::LayoutGrid(std::int32_t layout) {
  const auto place = static_cast<std::size_t>(layout);
  if (place >= kLayoutCount) return;
  const auto isSelected = [place](const SetupChannel& channel) { return channel.layoutSelected[place] != 0; };
  const std::span<SetupChannel> inUse = Channels();
  const auto count = static_cast<std::size_t>(std::count_if(inUse.begin(), inUse.end(), isSelected));
  if (count == 0) return;

  const Grid grid = GridFor(count);
  const double width = CellSize(grid.columns);
  const double height = CellSize(grid.rows);
  Place cell{width / 4, height / 4, width, height, 0.3, 0.3};
  std::size_t column = 0;
  for (SetupChannel& channel : inUse) {
    if (!isSelected(channel)) continue;
    if (column == grid.columns) {
      column = 0;
      cell.left = width / 4;
      cell.top += 1.25 * height;
    }
    PutChannel(channel, place, cell);
    cell.left += 1.25 * width;
    ++column;
  }
}

}  // namespace wavelock
