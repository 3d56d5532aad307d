// The completions, loaded into their shells, and the manual pages, as man shows them.
#include <gmock/gmock.h>

#include "tests/docs/fenced_blocks.h"
#include "tests/orxkdb/manual/command_line.h"
#include "tests/support/sample_text.h"
#include "tests/support/test_bundle.h"

namespace orx::orxkdb {
namespace {

using testing::HasSubstr;

std::string squeezed(const std::string& text) {
  std::istringstream stream(text);
  std::string words;
  for (std::string word; stream >> word;) words.append(words.empty() ? "" : " ").append(word);
  return words;
}

class Manual : public testing::Test {
 protected:
  // What belongs to the restore needs the texts of its help.
  Manual() { test::writeShippedBundle(scratch_.path()); }

  // What a script prints that has nothing to complain of.
  std::string printed(const std::string& script) {
    const auto result = test::runProgram(test::shellScript(scratch_, script));
    EXPECT_EQ(result.errors, "") << script;
    return result.output;
  }
  // What bash makes of a TAB behind the line.
  std::string offered(const std::string& line) {
    const bool isRestore = line.starts_with("orxrestore");
    return printed("source <(orxkdb --" + std::string(isRestore ? "restore-" : "") +
                   "completion bash); COMP_WORDS=(" + line +
                   "); COMP_CWORD=$((${#COMP_WORDS[@]} - 1)); _$COMP_WORDS; "
                   "printf '%s|' \"${COMPREPLY[@]}\"");
  }
  // In words.
  std::string page(const std::string& name) {
    return squeezed(printed("orxkdb --man " + name + " < " + test::sourceDirectory().string() +
                            "/docs/formats.md > page; LC_ALL=C MANWIDTH=100 man --warnings=w "
                            "--no-hyphenation --no-justification -l ./page"));
  }

  test::TempDir scratch_;
};

TEST_F(Manual, CompletionOfBashFollowsTheCommandLine) {
  test::CommandLine line;
  std::string names;
  for (CLI::App* command : line.commands()) {
    names += command->get_name() + "|";
    std::string options;
    for (const std::string& name : test::optionNames(*command)) options += name + "|";
    EXPECT_EQ(offered("orxkdb " + command->get_name() + " -"), options);
  }
  test::writeFile(scratch_ / "fleet 1.txt", "");
  std::filesystem::create_directory(scratch_ / "fleets");
  const std::pair<const char*, std::string> cases[] = {
      {"orxkdb ''", names},
      {"orxkdb --", "--help|--version|--color|"},
      {"orxkdb ch", "check|"},
      {"orxkdb check --limit f", "|"},
      {"orxkdb check --limit = 5 'fleet '", "fleet 1.txt|"},
      {"orxkdb check --color never 'fleet '", "fleet 1.txt|"},
      {"orxkdb check done f", "|"},
      {"orxkdb messages f", "fleets|"},
      {"orxkdb explain db f", "|"},
      {"orxkdb report db --plan 'fleet '", "fleet 1.txt|"},
      {"orxkdb sample --order =", "key|random|"},
      {"orxkdb sample --order = r", "random|"},
      {"orxkdb --color a", "always|auto|"},
      {"orxrestore -v -", "-i|-o|-m|-u|-p|-v|-?|"},
      {"orxrestore -i 'fleet 1.txt' -o 'fleet '", "fleet 1.txt|"},
  };
  for (const auto& [typed, expected] : cases) EXPECT_EQ(offered(typed), expected) << typed;
}

// By what the shells' own readers take of them. zsh completes on a terminal alone.
TEST_F(Manual, CompletionsOfTheOtherShellsAreRead) {
  const std::string zsh = R"( zsh > completion; zsh -f -c '_describe() { print -rl -- $commands }
_arguments() { print -rl -- "$@"; state=arguments; line=(explain) }
source ./completion')";
  const std::string fish = " fish | fish --no-config -c 'source -; complete -C \"";
  const std::pair<std::string, const char*> cases[] = {
      {"--completion" + zsh, "\n--json[Print JSON, for scripts; its \"version\" is 1]\n"},
      {"--completion" + zsh, "\n--line=[Line of a backup instead]:FILE\\:NUMBER:_files\n"},
      {"--restore-completion" + zsh, "\n-v[verbose\\: show progress and details]\n"},
      {"--completion" + fish + "orxkdb ch\"'", "\ncheck\tFind what is wrong"},
      {"--completion" + fish + "orxkdb diff --rec\"'", "\n--records\tShow the records"},
      {"--completion" + fish + "orxkdb check PR\"'", "\nPRESTORE_restore/"},
      {"--restore-completion" + fish + "orxrestore -\"'", "\n-m\tmerge: "},
  };
  for (const auto& [script, found] : cases) {
    EXPECT_THAT("\n" + printed("export HOME=$PWD; orxkdb " + script), HasSubstr(found)) << script;
  }
}

TEST_F(Manual, PageNamesAllThatTheCommandLineTakes) {
  const std::string whole = page("orxkdb");
  test::CommandLine line;
  for (CLI::App* command : line.commands()) {
    // Heading and synopsis begin alike.
    const std::string name = "orxkdb " + command->get_name();
    const auto begin = whole.find(name + " " + name + " [OPTIONS]");
    ASSERT_NE(begin, std::string::npos) << name;
    const std::string section = whole.substr(begin, whole.find("EXIT STATUS") - begin);
    std::vector<std::string> texts = test::optionNames(*command);
    for (const auto* option : command->get_options()) texts.push_back(option->get_description());
    texts.insert(texts.end(), {command->get_description(), command->get_footer()});
    for (const std::string& text : texts) EXPECT_THAT(section, HasSubstr(squeezed(text)));
  }
  EXPECT_THAT(whole, HasSubstr("20 to 50000000; default 10000"));
}

TEST_F(Manual, PageOfTheRestoreHoldsTheWordsOfItsHelp) {
  const std::string help = printed("LC_ALL=C orxrestore '-?' 2> /dev/null");
  const std::string whole = page("orxrestore");
  const auto lines = test::splitLines(help.substr(help.find("\n\n")));
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

TEST_F(Manual, PageOfTheFormatsHoldsHeadingsAndExamples) {
  const std::string whole = page("orxkdb-formats");
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
