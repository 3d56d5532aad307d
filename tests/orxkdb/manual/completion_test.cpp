// The completions, loaded into their shells.
#include <gmock/gmock.h>

#include "tests/orxkdb/manual/manual_runs.h"
#include "tests/support/sample_text.h"

namespace orx::orxkdb {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;

// What bash does for a TAB behind the last word; a word a line.
constexpr const char* pressTab =
    "source completion; COMP_WORDS=(\"$@\"); COMP_CWORD=$(($# - 1)); _$1; "
    "printf '%s\\n' \"${COMPREPLY[@]}\"";

class Completion : public testing::Test {
 protected:
  void load(const std::string& shell, const std::string& option = "--completion") {
    const auto result = test::runIn(scratch_, "orxkdb", {option, shell});
    ASSERT_EQ(result.exitCode, 0) << result.errors;
    test::writeFile(scratch_ / "completion", result.output);
  }

  test::ProgramResult run(const std::string& shell, std::vector<std::string> arguments) {
    return test::runProgram({.file = shell,
                             .arguments = std::move(arguments),
                             .directory = scratch_.path(),
                             .environment = {"HOME=" + scratch_.file("")}});
  }

  std::vector<std::string> bashWords(const std::vector<std::string>& words) {
    std::vector<std::string> arguments{"--norc", "-c", pressTab, "bash"};
    arguments.insert(arguments.end(), words.begin(), words.end());
    const auto result = run("/bin/bash", std::move(arguments));
    EXPECT_EQ(result.errors, "");
    auto found = test::splitLines(result.output);
    std::erase(found, "");
    return found;
  }

  test::TempDir scratch_;
};

TEST_F(Completion, OfBashKnowsEverySubcommandAndOption) {
  load("bash");
  test::CommandLine line;
  std::vector<std::string> names;
  for (CLI::App* command : line.commands()) {
    names.push_back(command->get_name());
    EXPECT_EQ(bashWords({"orxkdb", command->get_name(), "-"}), test::optionNames(*command));
  }
  EXPECT_EQ(bashWords({"orxkdb", ""}), names);
  EXPECT_THAT(bashWords({"orxkdb", "--"}), ElementsAre("--help", "--version", "--color"));
}

TEST_F(Completion, OfBashFollowsTheCommandLine) {
  load("bash");
  test::writeFile(scratch_ / "fleet 1.txt", "");
  std::filesystem::create_directory(scratch_ / "fleets");
  const std::pair<std::vector<std::string>, std::vector<std::string>> cases[] = {
      {{"ch"}, {"check"}},
      {{"x"}, {}},
      {{"check", "--l"}, {"--limit"}},
      {{"check", "--limit", "f"}, {}},
      {{"check", "--limit", "5", "fleet "}, {"fleet 1.txt"}},
      {{"check", "--limit", "=", "5", "fleet "}, {"fleet 1.txt"}},
      {{"check", "done", "f"}, {}},
      {{"backup", "db", "--crlf", "fleets"}, {"fleets"}},
      {{"messages", "f"}, {"fleets"}},
      {{"explain", "fl"}, {"fleet 1.txt", "fleets"}},
      {{"explain", "db", "f"}, {}},
      {{"explain", "--line", "fleet "}, {"fleet 1.txt"}},
      {{"report", "db", "--plan", "fleet "}, {"fleet 1.txt"}},
      {{"sample", "--order", ""}, {"key", "random"}},
      {{"sample", "--order", "="}, {"key", "random"}},
      {{"sample", "--order", "=", "r"}, {"random"}},
      {{"--color", "a"}, {"auto", "always"}},
      {{"check", "--color", "n"}, {"never"}},
      {{"check", "--color", "never", "fleet "}, {"fleet 1.txt"}},
  };
  for (auto [words, expected] : cases) {
    words.insert(words.begin(), "orxkdb");
    EXPECT_THAT(bashWords(words), testing::UnorderedElementsAreArray(expected))
        << testing::PrintToString(words);
  }
}

TEST_F(Completion, OfFishOffersSubcommandsOptionsAndFiles) {
  if (!std::filesystem::exists("/usr/bin/fish")) GTEST_SKIP() << "fish is not there";
  load("fish");
  test::writeFile(scratch_ / "fleet.txt", "");
  const std::pair<const char*, const char*> cases[] = {
      {"ch", "check\tFind what is wrong"},
      {"diff --rec", "--records\tShow the records"},
      {"sample --order r", "random"},
      {"check fl", "fleet.txt"},
      {"", "undo\t"},
      {"--vers", "--version\t"},
  };
  for (const auto& [line, found] : cases) {
    const std::string script = "source completion; complete -C 'orxkdb " + std::string(line) + "'";
    const auto result = run("/usr/bin/fish", {"--no-config", "-c", script});
    EXPECT_THAT("\n" + result.output, HasSubstr("\n" + std::string(found))) << result.errors;
  }
}

TEST_F(Completion, OfTheRestoreOffersItsOptionsAndFiles) {
  ASSERT_EQ(test::runIn(scratch_, "orxkdb", {"messages"}).exitCode, 0);
  load("bash", "--restore-completion");
  test::writeFile(scratch_ / "fleet 1.txt", "");
  const testing::Matcher<std::vector<std::string>> options =
      ElementsAre("-i", "-o", "-m", "-u", "-p", "-v", "-?");
  EXPECT_THAT(bashWords({"orxrestore", ""}), options);
  EXPECT_THAT(bashWords({"orxrestore", "-v", "-"}), options);
  EXPECT_THAT(bashWords({"orxrestore", "-i", "fl"}), ElementsAre("fleet 1.txt"));
  EXPECT_THAT(bashWords({"orxrestore", "-i", "fleet 1.txt", "-o", "f"}),
              ElementsAre("fleet 1.txt"));

  if (!std::filesystem::exists("/usr/bin/fish")) GTEST_SKIP() << "fish is not there";
  load("fish", "--restore-completion");
  for (const auto& [words, found] : {std::pair("-", "-m\tmerge: "), std::pair("-i fl", "fleet")}) {
    const std::string line = "source completion; complete -C 'orxrestore " + std::string(words);
    const auto result = run("/usr/bin/fish", {"--no-config", "-c", line + "'"});
    EXPECT_THAT("\n" + result.output, HasSubstr("\n" + std::string(found))) << result.errors;
  }

  if (!std::filesystem::exists("/bin/zsh")) GTEST_SKIP() << "zsh is not there";
  load("zsh", "--restore-completion");
  const char* script = "_arguments() { print -rl -- \"$@\" }\nsource ./completion";
  const auto result = run("/bin/zsh", {"-f", "-c", script});
  EXPECT_EQ(result.errors, "");
  for (const char* word :
       {"\n-v[verbose\\: show progress and details]\n", ":<backup-file-name>:_files\n"}) {
    EXPECT_THAT(result.output, HasSubstr(word));
  }
}

// zsh completes on a terminal alone: its own reader of option lists is asked what it is given.
TEST_F(Completion, OfZshIsReadByItsShell) {
  if (!std::filesystem::exists("/bin/zsh")) GTEST_SKIP() << "zsh is not there";
  load("zsh");
  const char* script =
      "_describe() { print -rl -- $commands }\n"
      "_arguments() { print -rl -- \"$@\"; state=arguments; line=(explain) }\n"
      "source ./completion";
  const auto result = run("/bin/zsh", {"-f", "-c", script});
  EXPECT_EQ(result.errors, "");
  for (const char* word :
       {"(-h --help)--help[Print this help message and exit]\n", "1:subcommand:->subcommand\n",
        "--json[Print JSON, for scripts; its \"version\" is 1]\n", "::DB:_files\n", "::HANDLE: \n",
        "--line=[Line of a backup instead]:FILE\\:NUMBER:_files\n"}) {
    EXPECT_THAT(result.output, HasSubstr(word));
  }
}

}  // namespace
}  // namespace orx::orxkdb
