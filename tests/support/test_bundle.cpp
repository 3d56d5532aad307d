#include "tests/support/test_bundle.h"

#include "tests/support/places.h"

#include <algorithm>
#include <stdexcept>

#include "messages/bundle_files.h"
#include "messages/message_keys.h"
#include "tests/support/run_program.h"
#include "tests/support/temp_dir.h"

namespace orx::test {

void writeShippedBundle(const std::filesystem::path& directory) {
  std::filesystem::create_directory(directory / bundleName);
  for (const BundleFile& file : bundleFiles()) {
    std::string bytes(file.bytes.size(), '\0');
    std::ranges::copy(file.bytes, bytes.begin());
    writeFile(directory / bundleName / file.name, bytes);
  }
}

void compileBundle(const std::filesystem::path& directory, const std::string& locale,
                   const std::string& source) {
  const auto target = directory / bundleName;
  const auto file = directory / (locale + ".txt");
  std::filesystem::create_directory(target);
  writeFile(file, source);
  const auto result =
      runProgram({.file = test::resourceCompiler(),
                  .arguments = {"-q", "-e", "UTF-8", "-d", target.string(), file.string()}});
  if (result.exitCode != 0) throw std::runtime_error("genrb: " + result.errors);
}

void writeEchoBundle(const std::filesystem::path& directory) {
  std::string source = "root {\n";
  for (const MessageSignature& signature : messageSignatures) {
    std::string text = signature.key;
    const char* separator = "(";
    for (const MessageArgument argument : signature.arguments()) {
      text.append(separator).append(argument == MessageArgument::number ? "%d" : "%s");
      separator = ",";
    }
    if (*separator == ',') text += ")";
    source.append(signature.key).append(" { \"").append(text).append("\\n\" }\n");
  }
  compileBundle(directory, "root", source + "}\n");
}

}  // namespace orx::test
