// The completions, loaded into their shells, and the manual pages, as man shows them.
#include <gmock/gmock.h>

#include <sstream>

#include "orxkdb/exit_codes.h"
#include "tests/docs/fenced_blocks.h"
#include "tests/orxkdb/manual/command_line.h"
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
  // The restore's needs the texts of its help.
  Completion() { EXPECT_EQ(test::runIn(scratch_, "orxkdb", {"messages"}).exitCode, 0); }

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

TEST_F(Completion, OfBashFollowsTheCommandLine) {
  load("bash");
  test::CommandLine line;
  std::vector<std::string> names;
  for (CLI::App* command : line.commands()) {
    names.push_back(command->get_name());
    EXPECT_EQ(bashWords({"orxkdb", command->get_name(), "-"}), test::optionNames(*command));
  }
  EXPECT_EQ(bashWords({"orxkdb", ""}), names);
  test::writeFile(scratch_ / "fleet 1.txt", "");
  std::filesystem::create_directory(scratch_ / "fleets");
  const std::pair<std::vector<std::string>, std::vector<std::string>> cases[] = {
      {{"--"}, {"--help", "--version", "--color"}},
      {{"ch"}, {"check"}},
      {{"check", "--limit", "f"}, {}},
      {{"check", "--limit", "=", "5", "fleet "}, {"fleet 1.txt"}},
      {{"check", "--color", "never", "fleet "}, {"fleet 1.txt"}},
      {{"check", "done", "f"}, {}},
      {{"messages", "f"}, {"fleets"}},
      {{"explain", "db", "f"}, {}},
      {{"report", "db", "--plan", "fleet "}, {"fleet 1.txt"}},
      {{"sample", "--order", "="}, {"key", "random"}},
      {{"sample", "--order", "=", "r"}, {"random"}},
      {{"--color", "a"}, {"auto", "always"}},
  };
  for (auto [words, expected] : cases) {
    words.insert(words.begin(), "orxkdb");
    EXPECT_THAT(bashWords(words), testing::UnorderedElementsAreArray(expected))
        << testing::PrintToString(words);
  }
  load("bash", "--restore-completion");
  EXPECT_THAT(bashWords({"orxrestore", "-v", "-"}),
              ElementsAre("-i", "-o", "-m", "-u", "-p", "-v", "-?"));
  EXPECT_THAT(bashWords({"orxrestore", "-i", "fleet 1.txt", "-o", "fleet "}),
              ElementsAre("fleet 1.txt"));
}

// The other two shells, by what their own readers take of it. zsh completes on a terminal alone.
TEST_F(Completion, OfTheOtherShellsIsReadByThem) {
  test::writeFile(scratch_ / "fleet", "");
  const std::string zsh =
      "_describe() { print -rl -- $commands }\n"
      "_arguments() { print -rl -- \"$@\"; state=arguments; line=(explain) }\n"
      "source ./completion";
  const std::string fish = "source completion; complete -C ";
  const std::string command = "--completion", restore = "--restore-completion";
  const std::tuple<const char*, std::string, std::string, const char*> cases[] = {
      {"/bin/zsh", command, zsh, "\n(-h --help)--help[Print this help message and exit]\n"},
      {"/bin/zsh", command, zsh, "\n--json[Print JSON, for scripts; its \"version\" is 1]\n"},
      {"/bin/zsh", command, zsh, "\n--line=[Line of a backup instead]:FILE\\:NUMBER:_files\n"},
      {"/bin/zsh", restore, zsh, "\n-v[verbose\\: show progress and details]\n"},
      {"/usr/bin/fish", command, fish + "'orxkdb ch'", "\ncheck\tFind what is wrong"},
      {"/usr/bin/fish", command, fish + "'orxkdb diff --rec'", "\n--records\tShow the records"},
      {"/usr/bin/fish", command, fish + "'orxkdb check fl'", "\nfleet"},
      {"/usr/bin/fish", restore, fish + "'orxrestore -'", "\n-m\tmerge: "},
  };
  for (const auto& [shell, option, script, found] : cases) {
    if (!std::filesystem::exists(shell)) continue;
    load(std::filesystem::path(shell).filename(), option);
    const auto result = run(shell, {shell[1] == 'b' ? "-f" : "--no-config", "-c", script});
    EXPECT_EQ(result.errors, "");
    EXPECT_THAT("\n" + result.output, HasSubstr(found));
  }
}

std::string squeezed(const std::string& text) {
  std::istringstream stream(text);
  std::string words;
  for (std::string word; stream >> word;) words.append(words.empty() ? "" : " ").append(word);
  return words;
}

class ManualPages : public testing::Test {
 protected:
  void SetUp() override {
    if (!std::filesystem::exists("/usr/bin/man")) GTEST_SKIP() << "man is not there";
    ASSERT_EQ(test::runIn(scratch_, "orxkdb", {"messages"}).exitCode, exitDone);
  }

  // As man shows it, in words; anything that it complains of fails.
  std::string shown(const std::string& name) {
    const auto page = test::runIn(scratch_, "orxkdb", {"--man", name},
                                  test::readFile(test::sourceDirectory() / "docs/formats.md"));
    EXPECT_EQ(page.exitCode, exitDone) << page.errors;
    test::writeFile(scratch_ / name, page.output);
    const auto result =
        test::runProgram({.file = "/usr/bin/man",
                          .arguments = {"--warnings=w", "--no-hyphenation", "--no-justification",
                                        "-l", scratch_.file(name)},
                          .environment = {"LC_ALL=C", "MANWIDTH=100"}});
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_EQ(result.errors, "") << name;
    return squeezed(result.output);
  }

  test::TempDir scratch_;
};

TEST_F(ManualPages, NameAllThatTheCommandLineTakes) {
  const std::string whole = shown("orxkdb");
  test::CommandLine line;
  for (CLI::App* command : line.commands()) {
    // Heading and synopsis begin alike.
    const std::string name = "orxkdb " + command->get_name();
    const auto begin = whole.find(name + " " + name + " [OPTIONS]");
    ASSERT_NE(begin, std::string::npos) << name;
    const std::string section = whole.substr(begin, whole.find("EXIT STATUS") - begin);
    std::vector<std::string> texts = test::optionNames(*command);
    for (const CLI::Option* option : command->get_options()) {
      texts.push_back(option->get_description());
    }
    for (const std::string& text : texts) EXPECT_THAT(section, HasSubstr(squeezed(text)));
    EXPECT_THAT(section, HasSubstr(squeezed(command->get_description())));
    EXPECT_THAT(section, HasSubstr(squeezed(command->get_footer())));
  }
  EXPECT_THAT(whole, HasSubstr("20 to 50000000; default 10000"));
}

TEST_F(ManualPages, OfTheRestoreHoldTheWordsOfItsHelp) {
  const auto help = test::runIn(scratch_, "orxrestore", {"-?"}, "", {}, {"LC_ALL=C"});
  const std::string whole = shown("orxrestore");
  const auto lines = test::splitLines(help.output.substr(help.output.find("\n\n")));
  EXPECT_GT(lines.size(), 20U);
  for (std::string line : lines) {
    // The titles before a line are sections in the page.
    for (const std::string title :
         {"  Replace:", "  Merge:", "  Rebuild:", "Examples:", "Exit codes:"}) {
      if (line.starts_with(title)) line.erase(0, title.size());
    }
    EXPECT_THAT(whole, HasSubstr(squeezed(line)));
  }
  EXPECT_THAT(whole, HasSubstr("EXIT STATUS 0 success 1 the command line"));
}

TEST_F(ManualPages, OfTheFormatsHoldHeadingsAndExamples) {
  const std::string whole = shown("orxkdb-formats");
  for (const auto& block : test::fencedBlocks("docs/formats.md")) {
    for (const std::string& line : block.lines) EXPECT_THAT(whole, HasSubstr(squeezed(line)));
  }
  EXPECT_THAT(whole, HasSubstr("BACKUP LINE"));
  EXPECT_THAT(whole, HasSubstr("|0 | 48 | parent handle | exported form, left-aligned"));
  for (const char* mark : {"`", "**", "](", "|---"}) {
    EXPECT_THAT(whole, testing::Not(HasSubstr(mark)));
  }
}

}  // namespace
}  // namespace orx::orxkdb
