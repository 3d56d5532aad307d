#include "tests/support/places.h"

#include <cstdlib>

namespace orx::test {

std::filesystem::path programsDirectory() {
  const char* const chosen = std::getenv("ORX_PROGRAMS");
  return chosen == nullptr ? ORX_BIN_DIR : chosen;
}

std::filesystem::path builtProgram(const char* name) {
  return programsDirectory() / name;
}

std::filesystem::path sourceDirectory() {
  return ORX_SOURCE_DIR;
}

std::filesystem::path resourceCompiler() {
  return ORX_GENRB;
}

}  // namespace orx::test
