// Message bundles for tests, written into the directory that the code under test runs in.
#pragma once

#include <filesystem>
#include <string>

namespace orx::test {

// The bundle that the programs bring along.
void writeShippedBundle(const std::filesystem::path& directory);

// Compiles an ICU resource source, "de { KEY { \"text\" } }", into the directory's bundle.
void compileBundle(const std::filesystem::path& directory, const std::string& locale,
                   const std::string& source);

// A bundle whose texts are their keys and arguments, "IDS_GETOPT_FIRST(120)\n", so that a test can
// tell what was printed without knowing the wording.
void writeEchoBundle(const std::filesystem::path& directory);

}  // namespace orx::test
