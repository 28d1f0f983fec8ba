// Filling the identity of subject and institution from the user's profile.
#include "wavelock/setup/subject_info.h"

namespace wavelock {
namespace {

struct ProfileText {
  std::string SubjectFields::*field;
  std::string_view key;
};

constexpr ProfileText kProfileTexts[] = {
    {&SubjectFields::instituteName, profile::kInstitute},
    {&SubjectFields::department, profile::kDepartment},
    {&SubjectFields::operatorName, profile::kOperator},
    {&SubjectFields::researcherName, profile::kResearcher},
    {&SubjectFields::unitName, profile::kUnit},
};

}  // namespace

CSubjectInfo::CSubjectInfo(Host& host) : host_(&host) {
  Reset();
}

void CSubjectInfo::Reset() {
  static_cast<SubjectFields&>(*this) = {};
  for (const auto& [field, key] : kProfileTexts)
    this->*field = host_->profile.GetString(profile::kInstitution, key, "");
}

}  // namespace wavelock
