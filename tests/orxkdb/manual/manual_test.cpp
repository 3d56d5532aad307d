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

TEST_F(Completion, OfBashForTheRestoreOffersItsOptionsAndFiles) {
  load("bash", "--restore-completion");
  test::writeFile(scratch_ / "fleet 1.txt", "");
  const testing::Matcher<std::vector<std::string>> options =
      ElementsAre("-i", "-o", "-m", "-u", "-p", "-v", "-?");
  EXPECT_THAT(bashWords({"orxrestore", ""}), options);
  EXPECT_THAT(bashWords({"orxrestore", "-v", "-"}), options);
  EXPECT_THAT(bashWords({"orxrestore", "-i", "fl"}), ElementsAre("fleet 1.txt"));
  EXPECT_THAT(bashWords({"orxrestore", "-i", "fleet 1.txt", "-o", "f"}),
              ElementsAre("fleet 1.txt"));
}

TEST_F(Completion, OfFishOffersSubcommandsOptionsAndFiles) {
  if (!std::filesystem::exists("/usr/bin/fish")) GTEST_SKIP() << "fish is not there";
  test::writeFile(scratch_ / "fleet.txt", "");
  const struct {
    const char *option, *line, *found;
  } cases[] = {
      {"--completion", "orxkdb ch", "check\tFind what is wrong"},
      {"--completion", "orxkdb diff --rec", "--records\tShow the records"},
      {"--completion", "orxkdb sample --order r", "random"},
      {"--completion", "orxkdb check fl", "fleet.txt"},
      {"--completion", "orxkdb ", "undo\t"},
      {"--completion", "orxkdb --vers", "--version\t"},
      {"--restore-completion", "orxrestore -", "-m\tmerge: "},
      {"--restore-completion", "orxrestore -i fl", "fleet"},
  };
  for (const auto& row : cases) {
    load("fish", row.option);
    const std::string script = "source completion; complete -C '" + std::string(row.line) + "'";
    const auto result = run("/usr/bin/fish", {"--no-config", "-c", script});
    EXPECT_THAT("\n" + result.output, HasSubstr("\n" + std::string(row.found))) << result.errors;
  }
}

// zsh completes on a terminal alone: its own reader of option lists is asked what it is given.
TEST_F(Completion, OfZshIsReadByItsShell) {
  if (!std::filesystem::exists("/bin/zsh")) GTEST_SKIP() << "zsh is not there";
  const char* script =
      "_describe() { print -rl -- $commands }\n"
      "_arguments() { print -rl -- \"$@\"; state=arguments; line=(explain) }\n"
      "source ./completion";
  const std::pair<const char*, std::vector<const char*>> cases[] = {
      {"--completion",
       {"(-h --help)--help[Print this help message and exit]\n", "1:subcommand:->subcommand\n",
        "--json[Print JSON, for scripts; its \"version\" is 1]\n", "::DB:_files\n", "::HANDLE: \n",
        "--line=[Line of a backup instead]:FILE\\:NUMBER:_files\n"}},
      {"--restore-completion",
       {"\n-v[verbose\\: show progress and details]\n", ":<backup-file-name>:_files\n"}},
  };
  for (const auto& [option, found] : cases) {
    load("zsh", option);
    const auto result = run("/bin/zsh", {"-f", "-c", script});
    EXPECT_EQ(result.errors, "");
    for (const char* word : found) EXPECT_THAT(result.output, HasSubstr(word));
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

// The words of the page about `command`: its heading and synopsis begin alike.
std::string sectionOf(const std::string& page, const std::string& command) {
  const auto begin = page.find("orxkdb " + command + " orxkdb " + command + " [OPTIONS]");
  EXPECT_NE(begin, std::string::npos) << command;
  const auto example = page.find("Examples:", begin);
  return begin < example ? page.substr(begin, page.find(" [OPTIONS]", example) - begin) : "";
}

TEST_F(ManualPages, NameAllThatTheCommandLineTakes) {
  const std::string whole = shown("orxkdb");
  test::CommandLine line;
  for (CLI::App* command : line.commands()) {
    SCOPED_TRACE(command->get_name());
    const std::string section = sectionOf(whole, command->get_name());
    for (const std::string& name : test::optionNames(*command)) {
      EXPECT_THAT(section, HasSubstr(" " + name));
    }
    for (const CLI::Option* option : command->get_options()) {
      EXPECT_THAT(section, HasSubstr(squeezed(option->get_description())));
    }
    EXPECT_THAT(section, HasSubstr(squeezed(command->get_description())));
    EXPECT_THAT(section, HasSubstr(squeezed(command->get_footer())));
  }
  for (const char* text : {"-h, --help", "--version", "EXIT STATUS 0 done", "--objects N How many",
                           "20 to 50000000; default 10000", "--order key|random"}) {
    EXPECT_THAT(whole, HasSubstr(text));
  }
  EXPECT_THAT(whole, testing::Not(HasSubstr("--completion")));
}

TEST_F(ManualPages, OfTheRestoreHoldTheWordsOfItsHelp) {
  const auto help = test::runIn(scratch_, "orxrestore", {"-?"}, "", {}, {"LC_ALL=C"});
  const std::string whole = shown("orxrestore");
  std::istringstream lines(help.output.substr(help.output.find("\n\n")));
  int count = 0;
  for (std::string line; std::getline(lines, line);) {
    // The titles before a line are sections in the page.
    for (const char* title : {"  Replace:", "  Merge:", "  Rebuild:", "Examples:", "Exit codes:"}) {
      if (line.starts_with(title)) line.erase(0, std::string(title).size());
    }
    EXPECT_THAT(whole, HasSubstr(squeezed(line)));
    ++count;
  }
  EXPECT_GT(count, 20);
  EXPECT_THAT(whole, HasSubstr("EXIT STATUS 0 success 1 the command line"));
}

TEST_F(ManualPages, OfTheFormatsHoldHeadingsAndExamples) {
  const std::string whole = shown("orxkdb-formats");
  for (const auto& block : test::fencedBlocks("docs/formats.md")) {
    for (const std::string& line : block.lines) EXPECT_THAT(whole, HasSubstr(squeezed(line)));
  }
  for (const char* text : {"BACKUP LINE", "MESSAGES", "VERSION=3 format=bytevalue",
                           "|0 | 48 | parent handle | exported form, left-aligned"}) {
    EXPECT_THAT(whole, HasSubstr(text));
  }
  for (const char* mark : {"`", "**", "](", "|---"}) {
    EXPECT_THAT(whole, testing::Not(HasSubstr(mark)));
  }
}

}  // namespace
}  // namespace orx::orxkdb
