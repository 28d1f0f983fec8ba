// The markers of a recording or of a data set.
#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "wavelock/annotations/marker.h"
#include "wavelock/platform/host.h"
#include "wavelock/setup/setup.h"
#include "wavelock/setup/tff_file.h"

namespace wavelock {

// In the order in which they were added, with an address each that stays as long as the marker does.
class CMarkerList {
 public:
  explicit CMarkerList(Host& host = Host::Default()) : host_(host) {}
  virtual ~CMarkerList() = default;
  CMarkerList(const CMarkerList&) = delete;
  CMarkerList& operator=(const CMarkerList&) = delete;

  std::int32_t GetCount() const { return static_cast<std::int32_t>(markers_.size()); }

  // Null for an index that has no marker.
  CMarker* GetAt(std::int32_t index) const;

  // False, and the marker is gone, when there is none or no memory for it.
  bool Add(std::unique_ptr<CMarker> marker);

  void RemoveAll() { markers_.clear(); }

  // Takes a copy of each marker of another list. False, and the list is empty, when memory ran out.
  bool Assign(const CMarkerList& source);

  // Reads the markers in place of those that are there. Locked markers that lie on one channel, as many as
  // the recording has channels, are spread over the channels if the person agrees. A container without
  // markers gives an empty list. False, and the list is empty, for a record of an unknown length and when
  // memory ran out.
  bool Load(CTffFile& container, std::int32_t channelCount);

  // Appends the markers, without those that are transient. A record that cannot be written makes the result
  // false; the rest is still written.
  bool Save(CTffFile& container) const;

  // Gives every marker that only has a time the point on the setup's axis that is nearest to it.
  void TimesToSamples(CSetup& setup);

 private:
  bool LoadRecords(CTffFile& container);
  void Redistribute(std::int32_t channelCount);

  Host& host_;
  std::vector<std::unique_ptr<CMarker>> markers_;  // none of them null
};

}  // namespace wavelock
