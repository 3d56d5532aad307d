// Compressed bytes, made by the compressors' own programs.
#pragma once

#include <gtest/gtest.h>

#include <filesystem>
#include <string>

#include "tests/support/run_program.h"

namespace orx::test {

inline constexpr const char* compressors[] = {"gzip", "zstd", "xz"};

[[nodiscard]] inline bool hasCompressor(const std::string& name) {
  return std::filesystem::exists("/usr/bin/" + name);
}

[[nodiscard]] inline std::string compressed(const std::string& name, const std::string& bytes) {
  const ProgramResult result =
      runProgram({.file = "/usr/bin/" + name, .arguments = {"-c", "-q"}, .input = bytes});
  EXPECT_EQ(result.exitCode, 0) << name << result.errors;
  return result.output;
}

}  // namespace orx::test
