// The manual pages, as they are written and as man shows them.
#include <gmock/gmock.h>

#include <sstream>

#include "orxkdb/exit_codes.h"
#include "tests/docs/fenced_blocks.h"
#include "tests/orxkdb/manual/manual_runs.h"

namespace orx::orxkdb {
namespace {

using testing::HasSubstr;

std::string squeezed(const std::string& text) {
  std::istringstream stream(text);
  std::string words;
  for (std::string word; stream >> word;) words.append(words.empty() ? "" : " ").append(word);
  return words;
}

class ManualPages : public testing::Test {
 protected:
  void SetUp() override {
    if (!std::filesystem::exists("/usr/bin/groff")) GTEST_SKIP() << "groff is not there";
    ASSERT_EQ(test::runIn(scratch_, "orxkdb", {"messages"}).exitCode, exitDone);
  }

  std::string page(const std::string& name) {
    const auto result = test::runIn(scratch_, "orxkdb", {"--man", name},
                                    test::readFile(test::sourceDirectory() / "docs/formats.md"));
    EXPECT_EQ(result.exitCode, exitDone) << result.errors;
    return result.output;
  }

  // As a terminal shows it, in words; anything that the formatter complains of fails.
  std::string shown(const std::string& name) {
    const auto result =
        test::runProgram({.file = "/usr/bin/groff",
                          .arguments = {"-ww", "-t", "-man", "-Tascii", "-P-cbu", "-rLL=100n"},
                          .input = page(name)});
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

TEST_F(ManualPages, AreReadByManWithoutWarnings) {
  if (!std::filesystem::exists("/usr/bin/man")) GTEST_SKIP() << "man is not there";
  for (const char* name : {"orxkdb", "orxrestore", "orxkdb-formats"}) {
    test::writeFile(scratch_ / name, page(name));
    const auto result = test::runProgram({.file = "/usr/bin/man",
                                          .arguments = {"--warnings", "-l", scratch_.file(name)},
                                          .environment = {"LC_ALL=C.UTF-8", "MANWIDTH=80"}});
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_EQ(result.errors, "");
    EXPECT_THAT(result.output, HasSubstr("DESCRIPTION"));
  }
}

TEST(ManualOptions, RefuseWhatTheyCannotWrite) {
  const test::TempDir scratch;
  const struct {
    std::vector<std::string> arguments;
    std::string input;
    ExitCode code;
    const char* errors;
  } cases[] = {
      {{"--man", "orxdb"}, "", exitUsage, "command line"},
      {{"--completion", "tcsh"}, "", exitUsage, "command line"},
      {{"--man", "orxrestore"}, "", exitNotOpened, "orxkdb: there are no messages here, PRESTORE_"},
      {{"--man", "orxkdb-formats"}, std::string(2000, 'x'), exitNotAsExpected, "too long"},
  };
  for (const auto& row : cases) {
    const auto result = test::runIn(scratch, "orxkdb", row.arguments, row.input);
    EXPECT_EQ(result.exitCode, row.code);
    EXPECT_THAT(result.errors, HasSubstr(row.errors));
    EXPECT_EQ(result.output, "");
  }
}

}  // namespace
}  // namespace orx::orxkdb
