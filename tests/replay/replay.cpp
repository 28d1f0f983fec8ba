// Carries out a script of operations on the library and writes what they returned, or compares that with what
// a frozen case says:
//
//   wavelock_replay SCRIPT.json ANSWER.json
//   wavelock_replay --check CASE.json...
//   wavelock_replay --freeze CASE.json...
#include <cstdio>
#include <exception>
#include <filesystem>
#include <fstream>
#include <nlohmann/json.hpp>
#include <span>
#include <stdexcept>
#include <string>
#include <string_view>

#include "tests/replay/cases.h"
#include "tests/replay/scripts.h"

namespace wavelock::replay {

nlohmann::json RunScript(const nlohmann::json& script) {
  const std::string kind = script.at("kind");
  if (kind == "open") return RunOpenScript(script);
  if (kind == "save") return RunSaveScript(script);
  if (kind == "setup") return RunSetupScript(script);
  throw std::runtime_error("no script of kind " + kind + " can be replayed");
}

namespace {

using nlohmann::json;

bool CheckAll(std::span<char*> paths) {
  bool isRight = true;
  for (const char* const path : paths) isRight &= CheckCase(std::filesystem::absolute(path));
  return isRight;
}

bool FreezeAll(std::span<char*> paths) {
  for (const char* const path : paths) FreezeCase(std::filesystem::absolute(path));
  return true;
}

bool Replay(const char* script, const char* answer) {
  std::ifstream in(script);
  const json answered = RunScript(json::parse(in));
  std::ofstream(answer) << answered.dump(-1, ' ', false, json::error_handler_t::replace);
  return true;
}

}  // namespace
}  // namespace wavelock::replay

int main(int argc, char** argv) {
  using namespace wavelock::replay;
  if (argc < 3) {
    std::fprintf(stderr,
                 "usage: wavelock_replay SCRIPT.json ANSWER.json | --check CASE... | --freeze CASE...\n");
    return 2;
  }
  try {
    const std::string_view way = argv[1];
    const std::span<char*> paths(argv + 2, static_cast<std::size_t>(argc - 2));
    const bool isDone = way == "--check"    ? CheckAll(paths)
                        : way == "--freeze" ? FreezeAll(paths)
                                            : Replay(argv[1], argv[2]);
    return isDone ? 0 : 1;
  } catch (const std::exception& error) {
    std::fprintf(stderr, "wavelock_replay: %s\n", error.what());
    return 1;
  }
}
