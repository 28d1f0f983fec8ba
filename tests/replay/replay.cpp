// Carries out a script of operations on the library and writes what they returned:
//
//   wavelock_replay SCRIPT.json ANSWER.json
#include <cstdio>
#include <exception>
#include <fstream>
#include <nlohmann/json.hpp>
#include <string>

#include "tests/replay/scripts.h"

namespace {

using nlohmann::json;

json Run(const json& script) {
  const std::string kind = script.at("kind");
  if (kind == "open") return wavelock::replay::RunOpenScript(script);
  if (kind == "save") return wavelock::replay::RunSaveScript(script);
  if (kind == "setup") return wavelock::replay::RunSetupScript(script);
  throw std::runtime_error("no script of kind " + kind + " can be replayed");
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 3) {
    std::fprintf(stderr, "usage: wavelock_replay SCRIPT.json ANSWER.json\n");
    return 2;
  }
  try {
    std::ifstream in(argv[1]);
    const json answer = Run(json::parse(in));
    std::ofstream(argv[2]) << answer.dump(-1, ' ', false, json::error_handler_t::replace);
    return 0;
  } catch (const std::exception& error) {
    std::fprintf(stderr, "wavelock_replay: %s\n", error.what());
    return 1;
  }
}
