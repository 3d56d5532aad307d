// Where the build put what the tests run and read.
#pragma once

#include <filesystem>

namespace orx::test {

// Of this build, or the directory that the environment variable ORX_PROGRAMS names by its
// absolute path.
[[nodiscard]] std::filesystem::path programsDirectory();
[[nodiscard]] std::filesystem::path builtProgram(const char* name);
[[nodiscard]] std::filesystem::path sourceDirectory();
[[nodiscard]] std::filesystem::path resourceCompiler();  // genrb

}  // namespace orx::test
