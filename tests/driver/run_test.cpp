#include "driver/run.h"

#include <ctime>
#include <new>
#include <sstream>

#include "driver/option_scanner.h"
#include "restore/exit_codes.h"
#include "restore/restore_settings.h"
#include "tests/support/program_runs.h"
#include "tests/support/test_bundle.h"

namespace orx {
namespace {

const std::string help =
    "IDS_HELP_1\nIDS_HELP_2\nIDS_HELP_3\nIDS_HELP_4\nIDS_HELP_5\nIDS_HELP_6\nIDS_HELP_7\n"
    "IDS_HELP_8\n \nIDS_HELP_11\nIDS_HELP_13\nIDS_HELP_14\n";
constexpr int replaced = 100, merged = 101, counted = 102;
constexpr Operations fakes{.replace = [] { return replaced; },
                           .merge = [] { return merged; },
                           .useCount = [] { return counted; }};

class Run : public testing::Test {
 protected:
  Run() { test::writeEchoBundle(directory_.path()); }

  // Runs with the words that "|" separates in `line` behind the program's name and leaves in
  // `output_` what follows the banner.
  int run(const std::string& line, const Operations& operations = fakes) {
    options::optind = 1;  // as in a new process
    options::optarg = options::scanPosition = nullptr;
    restoreSettings() = {};
    std::vector<std::string> words{"orxrestore"};
    std::istringstream stream(line);
    for (std::string word; std::getline(stream, word, '|');) words.push_back(word);
    std::vector<char*> argv;
    for (auto& word : words) argv.push_back(word.data());
    argv.push_back(nullptr);
    int result = 0;
    output_ = test::printed(
        [&] { result = orx::run(static_cast<int>(words.size()), argv.data(), operations); });
    std::tm built{};
    const char* rest = strptime(output_.c_str(), "IDS_HELLOFN_FIRST(%b %e %Y,%H:%M:%S)\n", &built);
    EXPECT_NE(rest, nullptr) << output_;
    output_ = std::string(rest == nullptr ? "" : rest);
    return result;
  }

  test::TempDir directory_;
  test::WorkingDirectory inDirectory_{directory_.path()};
  std::string output_;
};

std::string message(const char* key, const std::string& argument) {
  return std::string("IDS_") + key + "(" + argument + ")\n";
}
const auto file = [](const char* name = "f") { return message("PROCESSARGS_FIRST", name); };
const auto database = [](const char* name = "db") { return message("PROCESSARGS_SECOND", name); };
const auto noOption = [](int c) { return message("GETOPT_FIRST", std::to_string(c)); };
const auto unknown = [](int c) { return message("GETOPT_SECOND", std::to_string(c)); };
const auto noArgument = [](const char* letter) { return message("GETOPT_THIRD", letter); };
const std::string both = file() + database();
const std::string verbose = "IDS_PROCESSARGS_THIRD\n";
const std::string noFile = "IDS_PROCESSARGS_FIFTH\n";
const std::string noDatabase = "IDS_PROCESSARGS_SIXTH\n";

TEST_F(Run, UsableCommandLinesReachTheirOperation) {
  const struct {
    std::string line, output;
    int result;
    const char* settings;  // mode, verbose, prototypesOnly, names
  } cases[] = {
      {"-i|f|-o|db", both, replaced, "000 db|f"},
      {"-I|f|-M|db|-V", both + verbose, merged, "110 db|f"},
      {"-p|-i|f|-O|db", both, replaced, "001 db|f"},
      {"-Pvif|-odb", verbose + both, replaced, "011 db|f"},
      {"-i-x|-o db", file("-x") + database(" db"), replaced, "000  db|-x"},
      {"-if|-odb|extra|-v", both + noOption('e'), replaced, "000 db|f"},
      {"-if|-odb||-v", both + noOption(0), replaced, "000 db|f"},
      {"-if|-odb|--|-v", both, replaced, "000 db|f"},
      {"-if|-odb|-|-v", both, replaced, "000 db|f"},
      {"-u|db", "", counted, "200 db|"},
      {"-U|db|-i|f", file(), counted, "200 db|f"},
      {"-ox|-m|db|-i|f", database("x") + database() + file(), merged, "100 db|f"},
      {"-ux|-odb|-if", database() + file(), replaced, "000 db|f"},
      {"-ig|-if|-odb", file("g") + both, replaced, "000 db|f"},
      {"-i%n|-odb", file("%n") + database(), replaced, "000 db|%n"},
      {"-ia/b\\c|-odb", file("a/b\\c") + database(), replaced, "000 db|a/b\\c"},
  };
  for (const auto& expected : cases) {
    SCOPED_TRACE(expected.line);
    EXPECT_EQ(run(expected.line), expected.result);
    EXPECT_EQ(output_, expected.output);
    const RestoreSettings& s = restoreSettings();
    EXPECT_EQ(std::to_string(100 * s.mode + 10 * s.verbose + s.prototypesOnly + 1000).substr(1) +
                  " " + s.databaseName + "|" + s.backupFileName,
              expected.settings);
  }
}

TEST_F(Run, UnusableCommandLinesEndWithTheHelp) {
  const std::pair<const char*, std::string> cases[] = {
      {"", ""},
      {"-?|-i|f|-o|db", both},
      {"-vI", verbose + noArgument("I")},
      {"-i|-o|db", noArgument("i") + database() + noFile},
      {"-o|-|-i|f", noArgument("o")},
      {"-i|--|-odb", noArgument("i")},
      {"--verbose", unknown('-')},
      {"-\xE9", unknown(0xE9)},
      {"-vxp|-if|-odb", verbose + unknown('x') + both},
      {"-v:v|-if|-odb", verbose + verbose + both},
      {"-i|f", file() + noDatabase},
      {"-o|db", database() + noFile},
      {"-i||-o||", file("") + database("") + noFile + noDatabase},
      {"-u||", ""},
      {"-u", noArgument("u")},
  };
  for (const auto& [line, messages] : cases) {
    SCOPED_TRACE(line);
    EXPECT_EQ(run(line), exitUsage);
    EXPECT_EQ(output_, messages + help);
  }
}

TEST_F(Run, RefusesADatabaseNameWithAPath) {
  for (const char* line : {"-u|a/b", "-u|/", "-u|db\\"}) {
    EXPECT_EQ(run(line), exitNameHasPath) << line;
    EXPECT_EQ(output_, "IDS_MAIN_FIRST\n") << line;
  }
}

TEST_F(Run, OutOfMemoryIsOneLineAndACode) {
  constexpr Operations greedy{.useCount = []() -> int { throw std::bad_alloc(); }};
  testing::internal::CaptureStderr();
  EXPECT_EQ(run("-u|db", greedy), exitFailed);
  const std::string errors = testing::internal::GetCapturedStderr();
  EXPECT_TRUE(errors.starts_with("orxrestore: out of memory")) << errors;
  EXPECT_EQ(errors.find('\n'), errors.size() - 1) << errors;
}

}  // namespace
}  // namespace orx
