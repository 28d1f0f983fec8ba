// What identifies the subject and the session, for those who ask for it.
#pragma once

#include <string>
#include <utility>
#include <vector>

#include "wavelock/setup/subject_info.h"

namespace wavelock::command {

// Names and values of the fields that say anything.
using SubjectTexts = std::vector<std::pair<std::string, std::string>>;

SubjectTexts SubjectTextsOf(const CSubjectInfo& subject);

}  // namespace wavelock::command
