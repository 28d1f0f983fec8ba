// Stands in for the fuzzer: hands every file that is named, and every file in a folder that is named, to the
// target. What does not exist holds nothing. A fault ends the program behind the name of its file.
#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace {

namespace fs = std::filesystem;

void Replay(const fs::path& path) {
  std::printf("%s\n", path.string().c_str());
  std::fflush(stdout);
  std::ifstream file(path, std::ios::binary);
  const std::vector<char> read{std::istreambuf_iterator<char>(file), {}};
  const std::vector<std::uint8_t> bytes(read.begin(), read.end());  // a copy without room behind its end
  LLVMFuzzerTestOneInput(bytes.data(), bytes.size());
}

std::vector<fs::path> FilesAt(const fs::path& path) {
  if (fs::is_regular_file(path)) return {path};
  if (!fs::is_directory(path)) return {};
  std::vector<fs::path> files(fs::directory_iterator(path), fs::directory_iterator{});
  std::sort(files.begin(), files.end());
  return files;
}

}  // namespace

int main(int count, char** arguments) {
  for (int i = 1; i < count; ++i) {
    for (const fs::path& file : FilesAt(arguments[i])) Replay(file);
  }
}
