// Runs the commands that the documents and the help show.
//
// A block "```sh run" is run by bash, which stops at the first command that fails; its exit code is
// 0, or the number behind "run". The blocks of a document run in order in one scratch directory.
#include <gmock/gmock.h>

#include <map>
#include <nlohmann/json.hpp>
#include <regex>
#include <set>

#include "orxkdb/check/findings.h"
#include "tests/docs/fenced_blocks.h"
#include "tests/orxkdb/manual/command_line.h"

namespace orx {
namespace {

using Json = nlohmann::ordered_json;
using Paths = std::map<std::string, std::set<std::string>>;

// With the scratch directory as the documents show it, and without the build date.
std::string comparable(std::string text, const test::TempDir& scratch) {
  text = std::regex_replace(text, std::regex(scratch.path().string()), "/srv/tdv");
  return std::regex_replace(text, std::regex("\\(built [^)]*\\)"), "(built ...)");
}

class Commands : public testing::TestWithParam<const char*> {};

// A block "```output" directly behind the commands holds what they print, but for the build date.
TEST_P(Commands, WorkAsShown) {
  const test::TempDir scratch;
  int runs = 0;
  std::string script, output;
  for (const test::FencedBlock& block : test::fencedBlocks(GetParam())) {
    const std::string text = test::joined(block.lines);
    if (block.isRun()) {
      script = text;
      output = test::runBlock(block, scratch, "exec 2>&1").output;
      ++runs;
    } else if (block.info == "output") {
      EXPECT_EQ(comparable(output, scratch), comparable(text, scratch)) << script;
    }
  }
  EXPECT_GT(runs, 0);
}

INSTANTIATE_TEST_SUITE_P(Documents, Commands,
                         testing::Values("README.md", "docs/operations.md", "docs/formats.md"),
                         [](const auto& document) {
                           return std::filesystem::path(document.param).stem().string();
                         });

// Every member by its path, "objects[].handle", with the types of its values. A type alone is no
// difference where the value is missing: null.
void collectPaths(const Json& json, const std::string& path, Paths& paths) {
  if (!path.empty() && !json.is_null()) paths[path].insert(json.type_name());
  if (!json.is_structured()) return;
  for (const auto& [name, value] : json.items()) {
    const std::string step = json.is_array() ? "[]" : "." + name;
    collectPaths(value, path + step, paths);
  }
}

Paths pathsOf(const std::string& text, const std::string& what) {
  const Json json = Json::parse(text, nullptr, false);
  EXPECT_TRUE(json.is_object()) << what << text;
  Paths paths;
  collectPaths(json, "", paths);
  return paths;
}

// docs/json.md shows for every document how it is made, and an example. The members of what the
// program prints have to be those of the example, all of them and no others.
TEST(JsonDocument, ShowsTheMembersThatEverySubcommandGives) {
  const test::TempDir scratch;
  std::set<std::string> formats;
  std::string script, output;
  for (const test::FencedBlock& block : test::fencedBlocks("docs/json.md")) {
    const std::string text = test::joined(block.lines);
    if (block.isRun()) {
      script = text;
      output = test::runBlock(block, scratch).output;
    } else if (block.info == "json") {
      EXPECT_EQ(pathsOf(text, "example "), pathsOf(output, script)) << script;
      formats.insert(Json::parse(output, nullptr, false).value("format", ""));
    }
  }
  test::CommandLine line;
  std::set<std::string> expected{"orxkdb-failure"};
  for (const CLI::App* command : line.commands()) expected.insert("orxkdb-" + command->get_name());
  EXPECT_EQ(formats, expected);
}

// The kinds of findings, whose names scripts look for, and what to do about each.
TEST(FindingKinds, AreListedWithTheirMeaningsAndWhatToDo) {
  const auto document = [](const char* name) {
    return test::readFile(test::sourceDirectory() / "docs" / name);
  };
  std::istringstream lines(document("json.md"));
  std::string listed, rows;
  for (std::string line; std::getline(lines, line);) {
    if (line.starts_with("| `")) listed += line + "\n";
  }
  const std::string operations = document("operations.md");
  const std::size_t table = operations.find("| kind | what to do |");
  ASSERT_NE(table, std::string::npos);
  const std::string cures = operations.substr(table, operations.find("\n\n", table) - table);
  for (const orxkdb::FindingKindText& kind : orxkdb::findingKinds) {
    rows += "| `" + std::string(kind.name) + "` | " + kind.meaning() + " |\n";
    EXPECT_NE(cures.find("`" + std::string(kind.name) + "`"), std::string::npos) << kind.name;
  }
  EXPECT_EQ(listed, rows);
}

// What the examples of the help name; each has a directory of its own with it.
const char* const files = R"(mkdir given given/srv; cd given
orxkdb create rorxdata
orxkdb sample RORXbackup.txt
orxrestore -i RORXbackup.txt -o rorxdata > log
orxkdb sample --objects 50 --seed 2 other.txt
cp RORXbackup.txt old.txt; cp other.txt new.txt
orxkdb dump rorxdata rorxdata.dump
gzip -k rorxdata.dump)";

// What the parentheses in `pattern` stand for, wherever it fits.
std::vector<std::string> allOf(const char* pattern, const std::string& text) {
  const std::regex regex(pattern);
  return {std::sregex_token_iterator(text.begin(), text.end(), regex, 1), {}};
}

// As it would be typed there: absolute paths lead into the directory, and nobody turns pages.
std::string scriptFor(const std::string& example) {
  const bool makesDatabase =
      std::regex_search(example, std::regex("^orxkdb (create|load (?!--replace))"));
  std::string command = std::regex_replace(example, std::regex("/srv(/tdv)?"), "srv");
  command = std::regex_replace(command, std::regex("\\| less"), "| cat");
  return std::string("set -e -o pipefail; rm -rf here; cp -a given here; cd here\n") +
         (makesDatabase ? "rm rorxdata rorxdata.orx-previous\n" : "") + command;
}

TEST(HelpExamples, WorkAsShown) {
  const test::TempDir scratch;
  ASSERT_EQ(test::runProgram(test::shellScript(scratch, files)).exitCode, 0);
  const auto commands = test::runIn(scratch, "orxkdb", {"--help"}).output;
  std::size_t count = 0;
  for (const std::string& command : allOf("\n  ([a-z]+)  +[A-Z]", commands)) {
    const std::string help = test::runIn(scratch, "orxkdb", {command, "--help"}).output;
    for (const std::string& example :
         allOf("\n  (orxkdb .*)", help.substr(help.find("Examples:")))) {
      const auto result = test::runProgram(test::shellScript(scratch, scriptFor(example)));
      EXPECT_TRUE(result.exitCode == 0 || (command == "diff" && result.exitCode == 1))
          << example << "\n"
          << result.errors;
      ++count;
    }
  }
  EXPECT_GT(count, 30U);
}

}  // namespace
}  // namespace orx
