// docs/json.md shows for every document how it is made and an example. The members of what the
// program prints have to be those of the example, all of them and no others.
//
// A block "```sh run" is run in one scratch directory, with the exit code behind "run", 0 without
// one; the block "```json" behind it is the example.
#include <gmock/gmock.h>

#include <map>
#include <nlohmann/json.hpp>
#include <set>

#include "tests/docs/fenced_blocks.h"
#include "tests/orxkdb/manual/manual_runs.h"

namespace orx {
namespace {

using Json = nlohmann::ordered_json;
using Paths = std::map<std::string, std::set<std::string>>;

std::string joined(const test::Lines& lines) {
  std::string text;
  for (const std::string& line : lines) text += line + "\n";
  return text;
}

// Every member by its path, "objects[].handle", with the types of its values. A type alone is no
// difference where the value is missing: null.
void collectPaths(const Json& json, const std::string& path, Paths& paths) {
  if (!path.empty() && !json.is_null()) paths[path].insert(json.type_name());
  if (!json.is_structured()) return;
  for (const auto& [name, value] : json.items()) {
    collectPaths(value, json.is_array() ? path + "[]" : path + "." + name, paths);
  }
}

Paths pathsOf(const std::string& text, const std::string& what) {
  const Json json = Json::parse(text, nullptr, false);
  EXPECT_TRUE(json.is_object()) << what << text;
  Paths paths;
  if (json.is_object()) collectPaths(json, "", paths);
  return paths;
}

test::ProgramResult runScript(const std::string& script, const test::TempDir& directory) {
  const std::string path = "PATH=" + test::programsDirectory().string() + ":/usr/bin:/bin";
  return test::runProgram({.file = "/bin/bash",
                           .arguments = {"-e", "-o", "pipefail", "-c", script},
                           .directory = directory.path(),
                           .environment = {path, "LC_ALL=C.UTF-8"}});
}

int exitCodeOf(const std::string& info) {
  const std::string start = "sh run";
  return info.size() > start.size() ? std::stoi(info.substr(start.size())) : 0;
}

TEST(JsonDocument, ShowsTheMembersThatEverySubcommandGives) {
  const test::TempDir scratch;
  std::set<std::string> formats;
  test::ProgramResult result;
  std::string script;
  for (const test::FencedBlock& block : test::fencedBlocks("docs/json.md")) {
    if (block.info.starts_with("sh run")) {
      script = joined(block.lines);
      result = runScript(script, scratch);
      EXPECT_EQ(result.exitCode, exitCodeOf(block.info)) << script << result.errors;
    } else if (block.info == "json") {
      EXPECT_EQ(pathsOf(joined(block.lines), "example "), pathsOf(result.output, script)) << script;
      formats.insert(Json::parse(result.output, nullptr, false).value("format", ""));
    }
  }
  test::CommandLine line;
  std::set<std::string> expected{"orxkdb-failure"};
  for (const CLI::App* command : line.commands()) expected.insert("orxkdb-" + command->get_name());
  EXPECT_EQ(formats, expected);
}

}  // namespace
}  // namespace orx
