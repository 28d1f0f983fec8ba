// Who was recorded, by whom and where: the strings of a setup that identify subject and institution.
#pragma once

#include <cstdint>
#include <string>

#include "wavelock/platform/host.h"

namespace wavelock {

// Texts may have any length here; a section keeps 20 characters of them, 255 where a comment says so.
struct SubjectFields {
  std::int32_t age = 0;  // years
  std::string recordDate{};
  std::string department{};  // from the user's profile
  std::string subjectTextH{};
  std::int32_t subjectValueA = 0;
  std::string subjectTextA{};
  std::string instituteName{};  // from the user's profile
  std::string subjectTextD{};   // 255
  std::string subjectTextC{};
  std::string operatorName{};  // from the user's profile
  std::string subjectTextB{};
  std::string researcherName{};  // from the user's profile
  std::int32_t subjectValueB = 0;
  std::string recordTime{};
  std::string unitName{};      // from the user's profile
  std::string subjectTextF{};  // 255
  std::int32_t subjectValueC = 0;
  std::string subjectTextE{};  // 255
  std::string subjectTextI{};
  std::string subjectTextJ{};
  std::string subjectTextG{};  // 255
  std::int32_t sex = 2;        // 0 M, 1 F, 2 unknown
  std::int32_t hand = 3;       // 0 right, 1 left, 2 mixed, 3 unknown
};

class CSubjectInfo : public SubjectFields {
 public:
  explicit CSubjectInfo(Host& host = Host::Default());

  // Everything empty or unknown, except for what the user's profile says about the institution.
  void Reset();

 private:
  Host* host_;
};

}  // namespace wavelock
