// How a setup comes into being and is copied, and how it gets its channels.
#include "wavelock/setup/setup.h"

#include <algorithm>
#include <new>

namespace wavelock {
namespace {

void CopyChannels(const ChannelArray& from, std::int32_t count, ChannelArray& to) {
  if (!from || count < 1 || count >= CSetup::channelLimit) return;
  if (!to.Make(count)) throw std::bad_alloc();
  const std::span<const SetupChannel> source = from.First(count);
  std::copy(source.begin(), source.end(), to.All().begin());
}

}  // namespace

CSetup::CSetup(int loadDefault, Host& host)
    : subject(std::make_unique<CSubjectInfo>(host)),
      setupFileName(host.profile.GetString(profile::kState, profile::kSetupFile, kDefaultSetupFile)),
      host_(&host) {
  if (loadDefault == 0) return;
  FindAndLoadFile();
  ForgetRecording();
}

// What a setup file says about the recording that it was saved from.
void CSetup::ForgetRecording() {
  modified = 0;
  acceptedSweeps = rejectedSweeps = averagedSweeps = 0;
  hasVariance = 0;
  mainField8012 = 1;
  mainField8016 = 255;
  fromRecording = 0;
  hasImaginary = 0;
  mainField8036 = 1;
  mainField8040 = 1;
}

CSetup::CSetup(const CSetup& source)
    : SetupFields(source),
      paramsC(source.paramsC),
      paramsA(source.paramsA),
      paramsB(source.paramsB),
      channelCapacity(source.channelCapacity),
      waveforms(source.waveforms),
      wideSamples(source.wideSamples),
      block1010(source.block1010),
      auxInputs(source.auxInputs),
      sourceName(source.sourceName),
      setupTitle(source.setupTitle),
      subject(std::make_unique<CSubjectInfo>(*source.subject)),
      setupFileName(source.setupFileName),
      host_(source.host_) {
  derivedBuild = {};
  waveforms.ClearHandles();
  CopyChannels(source.channels, channelCount, channels);
  CopyChannels(channels, channelCount, channelsSnapshot);
  for (std::size_t group = 0; group < channelGroups.size(); ++group)
    CopyChannels(source.channelGroups[group], derivedCount[group], channelGroups[group]);
}

bool CSetup::MakeChannels() {
  return channels.Make(channelCapacity);
}

bool CSetup::MakeChannelGroup(std::int32_t group) {
  const auto index = static_cast<std::size_t>(group);
  return index < channelGroups.size() && channelGroups[index].Make(channelCapacity);
}

std::span<SetupChannel> CSetup::GroupChannels(std::size_t group) {
  return channelGroups[group].First(derivedCount[group]);
}

std::span<const SetupChannel> CSetup::GroupChannels(std::size_t group) const {
  return channelGroups[group].First(derivedCount[group]);
}

}  // namespace wavelock
