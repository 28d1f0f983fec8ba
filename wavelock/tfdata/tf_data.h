// What all data sets in memory share: whether they came into being, and a setup of their own.
#pragma once

#include <cstdint>
#include <memory>
#include <string_view>

#include "wavelock/annotations/event_group.h"
#include "wavelock/setup/setup.h"

namespace wavelock {

class CTFData {
 public:
  CTFData() = default;
  CTFData(const CTFData& source) : errorText(), wordA(source.wordA), wordB(source.wordB) {}
  CTFData& operator=(const CTFData&) = delete;
  virtual ~CTFData() = default;

  // The name of the object's own class.
  virtual const char* GetRuntimeClassName() const { return "CTFData"; }

  std::string_view errorText = "Unspecified error";  // of the last failure; empty in a copy
  int valid = 1;  // 0 once the object could not be made; nothing works then
  // Carried into copies.
  std::uint32_t wordA = 0;
  std::uint32_t wordB = 0;
};

// A data set with a private copy of the setup that describes it: dimensions and flags come from there.
// Changing it leaves the setup that it was made from alone.
class CTFDataConfig : public CTFData {
 public:
  // Not valid without a setup, and when there is no memory for the copy.
  explicit CTFDataConfig(const CSetup* setup);
  CTFDataConfig(const CTFDataConfig& source);

  const char* GetRuntimeClassName() const override { return "CTFDataConfig"; }

  CSetup* GetConfig() { return config.get(); }
  const CSetup* GetConfig() const { return config.get(); }

  // 0 without a setup.
  std::int32_t GetChannelCount() const { return config ? config->channelCount : 0; }
  std::int32_t GetPointCount() const { return config ? config->pointCount : 0; }
  bool HasImaginary() const { return config && config->hasImaginary != 0; }
  bool HasVariance() const { return config && config->hasVariance != 0; }
  bool HasFsp() const;  // the two arrays of an average with statistics

  GroupWordArray channelWords;     // one for each channel, carried into copies
  std::unique_ptr<CSetup> config;  // null only in an object that is not valid

 private:
  bool TakeSetup(const CSetup* setup);
};

}  // namespace wavelock
