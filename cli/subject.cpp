#include "cli/subject.h"

#include <cstddef>

namespace wavelock::command {
namespace {

struct TextField {
  const char* name;
  std::string SubjectFields::*value;
};

constexpr TextField kTexts[] = {
    {"date", &SubjectFields::recordDate},         {"time", &SubjectFields::recordTime},
    {"text A", &SubjectFields::subjectTextA},     {"text B", &SubjectFields::subjectTextB},
    {"text C", &SubjectFields::subjectTextC},     {"text D", &SubjectFields::subjectTextD},
    {"text E", &SubjectFields::subjectTextE},     {"text F", &SubjectFields::subjectTextF},
    {"text G", &SubjectFields::subjectTextG},     {"text H", &SubjectFields::subjectTextH},
    {"text I", &SubjectFields::subjectTextI},     {"text J", &SubjectFields::subjectTextJ},
    {"operator", &SubjectFields::operatorName},   {"researcher", &SubjectFields::researcherName},
    {"institute", &SubjectFields::instituteName}, {"department", &SubjectFields::department},
    {"unit", &SubjectFields::unitName},
};

constexpr const char* kSexes[] = {"male", "female"};
constexpr const char* kHands[] = {"right", "left", "mixed"};

// Empty for an unknown value.
template <std::size_t N>
std::string NameAt(const char* const (&names)[N], int index) {
  return index >= 0 && index < static_cast<int>(N) ? names[index] : "";
}

}  // namespace

SubjectTexts SubjectTextsOf(const CSubjectInfo& subject) {
  SubjectTexts texts;
  const auto add = [&](const char* name, const std::string& value) {
    if (!value.empty()) texts.emplace_back(name, value);
  };
  if (subject.age != 0) add("age", std::to_string(subject.age));
  add("sex", NameAt(kSexes, subject.sex));
  add("hand", NameAt(kHands, subject.hand));
  for (const TextField& field : kTexts) add(field.name, subject.*field.value);
  return texts;
}

}  // namespace wavelock::command
