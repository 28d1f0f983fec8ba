// Per-user values by section and key: the only state that is kept beside the files.
#pragma once

#include <string>
#include <string_view>

namespace wavelock {

class ProfileStore {
 public:
  virtual ~ProfileStore() = default;

  // The stored value, or `fallback` when there is none or, for a number, when it is not one.
  virtual int GetInt(std::string_view section, std::string_view key, int fallback) = 0;
  virtual std::string GetString(std::string_view section, std::string_view key,
                                std::string_view fallback) = 0;

  // False when the value could not be kept; the store then answers as before.
  virtual bool SetInt(std::string_view section, std::string_view key, int value) = 0;
  virtual bool SetString(std::string_view section, std::string_view key, std::string_view value) = 0;
};

// The sections and keys that the library uses.
namespace profile {
inline constexpr std::string_view kState = "State";
inline constexpr std::string_view kAutoReadOnly = "AutoReadOnly";
inline constexpr std::string_view kConvertSegments = "ConvertSS2DC";
inline constexpr std::string_view kHideNewerVersionWarning = "Dont Show Newer Version Warning";
inline constexpr std::string_view kHideModifiedWarning = "Dont Show 4.0 Modified Warning";
inline constexpr std::string_view kSetupFile = "SetupFile";

inline constexpr std::string_view kInstitution = "INSTITUTION";
inline constexpr std::string_view kInstitute = "Institute";
inline constexpr std::string_view kDepartment = "Department";
inline constexpr std::string_view kOperator = "Operator";
inline constexpr std::string_view kResearcher = "Researcher";
inline constexpr std::string_view kUnit = "Unit";
}  // namespace profile

}  // namespace wavelock
