// The text of a derivation file.
#include <string>

#include "fuzz/fuzz_host.h"
#include "wavelock/numerics/derivation_file.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace wavelock;
  FuzzHost fuzz;
  fuzz.memory.Put("input.LDR", InputBytes(data, size));
  const std::string labels[] = {"Cz", "Pz", "1"};
  CDerivationFile file(fuzz.host);
  file.Read("input", static_cast<std::int32_t>(std::size(labels)), 100, labels);
  file.Read("input", 1, 100, labels);
  return 0;
}
