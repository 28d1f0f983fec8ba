#include "wavelock/platform/posix_process.h"

#include <sys/utsname.h>

#include <charconv>
#include <ctime>
#include <filesystem>
#include <system_error>

namespace wavelock {
namespace {

constexpr std::size_t kLongestTime = 1u << 12;

// Reads the number at the start of `text` and drops it together with the character behind it.
std::uint8_t TakeNumber(std::string_view& text) {
  std::uint8_t number = 0;
  const char* const end = text.data() + text.size();
  const char* const stop = std::from_chars(text.data(), end, number).ptr;
  text = stop == end ? std::string_view() : text.substr(static_cast<std::size_t>(stop - text.data()) + 1);
  return number;
}

}  // namespace

std::string PosixProcess::ExecutablePath() {
  std::error_code unknown;
  return std::filesystem::read_symlink("/proc/self/exe", unknown).string();
}

std::string PosixProcess::LocalTime(std::int64_t seconds, const char* pattern) {
  const auto time = static_cast<std::time_t>(seconds);
  std::tm local{};
  if (time != seconds || localtime_r(&time, &local) == nullptr) return {};
  std::string text(kLongestTime, '\0');
  text.resize(std::strftime(text.data(), text.size(), pattern, &local));
  return text;
}

std::uint32_t PosixProcess::OsVersionWord() {
  utsname system;
  if (uname(&system) != 0) return 0;
  std::string_view release = system.release;
  const std::uint32_t major = TakeNumber(release);
  const std::uint32_t minor = TakeNumber(release);
  return major | minor << 8;
}

}  // namespace wavelock
