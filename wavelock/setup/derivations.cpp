#include "wavelock/setup/derivations.h"

#include <algorithm>
#include <string>
#include <vector>

#include "wavelock/numerics/conversions.h"
#include "wavelock/numerics/derivation_file.h"
#include "wavelock/prompts/notices.h"

namespace wavelock {
namespace {

constexpr std::int32_t kBlockPoints = 40;
constexpr std::string_view kFileMissing =
    "The Derivation (LDR) file %s\n"
    "does not exist or is in another location that was specified by setup file.\n"
    "To fix the problem, renter LDR file name using the following steps:\n"
    "1. Edit\n"
    "2. Overall settings\n"
    "3. Startup tab\n"
    "4. Enter a valid ldr file name";

std::vector<std::string> LabelsOf(const CSetup& setup) {
  std::vector<std::string> labels;
  for (const SetupChannel& channel : setup.Channels()) labels.emplace_back(channel.label.View());
  return labels;
}

// Forgets the name of a file that is not there. The name is looked for as it stands, without an extension
// that it may lack; the last file is not looked for at all, and fails when it is read.
bool IsThere(CSetup& setup, std::size_t k, Host& host) {
  if (k == kDerivationFileCount - 1) return true;
  const std::string name(setup.ldrFile[k].View());
  if (host.files.Exists(name)) return true;
  ShowNotice(host, WithInsertion(kFileMissing, name));
  setup.ldrFile[k].Assign({});
  return false;
}

void BuildChannels(CSetup& setup, std::size_t k, std::span<const std::string> labels) {
  if (!setup.MakeChannelGroup(static_cast<std::int32_t>(k))) return;
  const std::span<SetupChannel> channels = setup.GroupChannels(k);
  const std::size_t count = std::min(channels.size(), labels.size());
  for (std::size_t i = 0; i < count; ++i)
    channels[i] = DefaultDerivedChannel(static_cast<std::int32_t>(i), labels[i]);
}

// False when the file cannot be used.
bool LoadDerivationFile(CSetup& setup, std::size_t k, std::span<const std::string> labels, Host& host) {
  CDerivationFile file(host);
  const auto count = static_cast<std::int32_t>(labels.size());
  const bool isRead = file.Read(std::string(setup.ldrFile[k].View()), count, kBlockPoints, labels.data());
  if (isRead) {
    setup.derivedCount[k] = file.GetOutputCount();
    setup.ldrLoadedCount = WrapToInt32(std::int64_t{setup.ldrLoadedCount} + 1);
  } else if (k == 0) {
    return false;
  } else {
    file.ShowCodedNotice();
  }
  if (setup.derivedBuild[k] != 0) BuildChannels(setup, k, file.GetOutputLabels());
  return isRead;
}

}  // namespace

bool LoadDerivationFiles(CSetup& setup, Host& host) {
  const std::vector<std::string> labels = LabelsOf(setup);
  for (std::size_t k = 0; k < kDerivationFileCount; ++k) {
    if (setup.ldrEnabled[k] == 0 || setup.ldrFile[k].Empty()) continue;
    if (!IsThere(setup, k, host)) continue;
    if (!LoadDerivationFile(setup, k, labels, host) && k == 0) return false;
  }
  return true;
}

}  // namespace wavelock
