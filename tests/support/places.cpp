#include "tests/support/places.h"

namespace orx::test {

std::filesystem::path programsDirectory() {
  return ORX_BIN_DIR;
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
