// One channel of a setup: its name, how its numbers become microvolts, and where it stands on each layout.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <type_traits>

#include "wavelock/setup/fixed_text.h"

namespace wavelock {

inline constexpr std::size_t kLayoutCount = 20;  // display layouts of a setup

template <class T>
using PerLayout = std::array<T, kLayoutCount>;

// A filter description: twelve words of four bytes that are known by their places.
struct FilterSpec {
  std::int32_t value0 = 0;
  float value1 = 0;
  float value2 = 0;
  std::int32_t value3 = 0;
  std::int32_t value4 = 0;
  float value5 = 0;
  float value6 = 0;
  std::int32_t value7 = 0;
  std::int32_t value8 = 0;
  std::int32_t value9 = 0;
  std::int32_t value10 = 0;
  std::int32_t value11 = 0;
};
static_assert(sizeof(FilterSpec) == 12 * 4);

// The same with five more words.
struct LongFilterSpec {
  FilterSpec description{};
  std::array<std::int32_t, 5> values12To16{};
};
static_assert(sizeof(LongFilterSpec) == 17 * 4);

struct ChannelLink {
  std::int32_t linkA = 0;
  std::int32_t linkIndex = 0;  // -1 or 0 to 8
  std::int32_t linkC = 0;
};

// All zero when new; DefaultChannel gives a usable one. Fields without a comment are carried from file to
// file.
struct SetupChannel {
  FixedText<20> label{};
  std::int32_t channelType = 0;  // 0 for ordinary channels
  std::int32_t channelFlagA = 0;
  std::int32_t channelFlagB = 0;
  std::int32_t channelFlagC = 0;  // 0, like channelType, where the channel takes part in statistics
  std::int32_t channelValueA = 0;
  std::int32_t channelValueB = 0;
  std::int32_t disabled = 0;  // 0 or 1
  std::int32_t channelValueC = 0;
  std::int32_t channelValueD = 0;
  FixedText<10> textA{};
  FixedText<10> textB{};

  // Boxes in parts of the display's width and height.
  PerLayout<float> layoutScale{};
  PerLayout<std::int32_t> layoutSelected{};  // not 0: the channel is on that layout
  PerLayout<float> boxLeft{};
  PerLayout<float> boxRight{};
  PerLayout<float> boxTop{};
  PerLayout<float> boxBottom{};
  PerLayout<float> zoomLeft{};
  PerLayout<float> zoomRight{};
  PerLayout<float> zoomTop{};
  PerLayout<float> zoomBottom{};

  float channelScale = 0;  // microvolts = stored number * countScale * channelScale
  std::int32_t physicalChannel = 0;
  float countScale = 0;
  float gain = 0;
  std::int32_t filterField = 0;
  float lowpassHz = 0;
  std::int32_t lowpassField = 0;
  float highpassHz = 0;
  std::int32_t highpassField = 0;
  FilterSpec filterSpec{};
  std::array<float, 3> position{};  // x, y, z of the electrode
  std::array<float, 3> position2{};
  std::int32_t channelValueE = 0;
  std::int32_t channelValueF = 0;
  std::int32_t channelValueG = 0;
  std::array<ChannelLink, 8> links{};
  std::int32_t sweeps = 0;  // sweeps behind this channel
  std::int32_t channelValueH = 0;
  float signalRatio = 0;  // always finite
  std::int32_t colorA = 0;
  std::int32_t colorB = 0;
  std::int32_t colorC = 0;
  std::int32_t colorD = 0;
  std::int32_t channelFlagD = 0;
};
static_assert(std::is_trivially_copyable_v<SetupChannel>);

inline bool TakesPartInStatistics(const SetupChannel& channel) {
  return channel.channelType == 0 && channel.channelFlagC == 0;
}

}  // namespace wavelock
