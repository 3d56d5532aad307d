// Runs the examples that the help of each subcommand of orxkdb shows, each in a directory of its
// own with the files that they name.
#include <regex>

#include "tests/docs/fenced_blocks.h"
#include "tests/support/program_runs.h"

namespace orx {
namespace {

const char* const files = R"(mkdir given given/srv; cd given
orxkdb create rorxdata
orxkdb sample RORXbackup.txt
orxrestore -i RORXbackup.txt -o rorxdata > log
orxkdb sample --objects 50 --seed 2 other.txt
cp RORXbackup.txt old.txt; cp other.txt new.txt
orxkdb dump rorxdata rorxdata.dump
gzip -k rorxdata.dump)";

test::Lines examplesOf(const std::string& help) {
  test::Lines examples;
  const std::regex line("\n  (orxkdb .*)");
  const auto begin = help.begin() + static_cast<std::ptrdiff_t>(help.find("Examples:"));
  for (std::sregex_iterator found(begin, help.end(), line), end; found != end; ++found) {
    examples.push_back((*found)[1]);
  }
  return examples;
}

// As it would be typed there: absolute paths lead into the directory, and nobody turns pages.
std::string scriptFor(const std::string& example) {
  const bool makesDatabase =
      std::regex_search(example, std::regex("^orxkdb (create|load (?!--replace))"));
  std::string command = std::regex_replace(example, std::regex("/srv"), "srv");
  command = std::regex_replace(command, std::regex("\\| less"), "| cat");
  command = std::regex_replace(command, std::regex("srv/tdv"), "srv");
  return std::string("set -e -o pipefail; rm -rf here; cp -a given here; cd here\n") +
         (makesDatabase ? "rm rorxdata rorxdata.orx-previous\n" : "") + command;
}

TEST(HelpExamples, WorkAsShown) {
  const test::TempDir scratch;
  ASSERT_EQ(test::runProgram(test::shellScript(scratch, files)).exitCode, 0);
  const auto commands = test::runIn(scratch, "orxkdb", {"--help"}).output;
  const std::regex row("\n  ([a-z]+)  +[A-Z]");
  std::size_t count = 0;
  for (std::sregex_iterator found(commands.begin(), commands.end(), row), end; found != end;
       ++found) {
    const std::string help = test::runIn(scratch, "orxkdb", {(*found)[1], "--help"}).output;
    for (const std::string& example : examplesOf(help)) {
      const auto result = test::runProgram(test::shellScript(scratch, scriptFor(example)));
      const bool compares = std::regex_search(example, std::regex("^orxkdb diff"));
      EXPECT_TRUE(result.exitCode == 0 || (compares && result.exitCode == 1)) << example << "\n"
                                                                              << result.errors;
      ++count;
    }
  }
  EXPECT_GT(count, 30U);
}

}  // namespace
}  // namespace orx
