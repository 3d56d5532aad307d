#include "driver/run.h"

#include <gtest/gtest.h>

#include <ctime>
#include <new>
#include <string>
#include <vector>

#include "driver/option_scanner.h"
#include "driver/process_args.h"
#include "restore/exit_codes.h"
#include "restore/restore_settings.h"
#include "tests/support/temp_dir.h"
#include "tests/support/test_bundle.h"

namespace orx {
namespace {

using Words = std::vector<std::string>;

const std::string help =
    "IDS_HELP_1\nIDS_HELP_2\nIDS_HELP_3\nIDS_HELP_4\nIDS_HELP_5\nIDS_HELP_6\nIDS_HELP_7\n"
    "IDS_HELP_8\n \nIDS_HELP_11\nIDS_HELP_13\nIDS_HELP_14\n";
constexpr int replaced = 100;
constexpr int merged = 101;
constexpr int counted = 102;
constexpr Operations fakes{.replace = [] { return replaced; },
                           .merge = [] { return merged; },
                           .useCount = [] { return counted; }};

class Run : public testing::Test {
 protected:
  Run() { test::writeEchoBundle(directory_.path()); }

  // What is new in a new process.
  static void startOver() {
    options::optind = 1;
    options::optarg = options::scanPosition = nullptr;
    restoreSettings() = {};
  }

  // Runs with these words behind the program's name and leaves in `output_` what follows the
  // banner.
  int run(Words words, const Operations& operations = fakes) {
    startOver();
    words.insert(words.begin(), "orxrestore");
    std::vector<char*> argv;
    for (auto& word : words) argv.push_back(word.data());
    argv.push_back(nullptr);
    testing::internal::CaptureStdout();
    const int result = orx::run(static_cast<int>(words.size()), argv.data(), operations);
    output_ = testing::internal::GetCapturedStdout();
    std::tm built{};
    const char* rest = strptime(output_.c_str(), "IDS_HELLOFN_FIRST(%b %e %Y,%H:%M:%S)\n", &built);
    EXPECT_NE(rest, nullptr) << output_;
    output_ = std::string(rest == nullptr ? output_.c_str() : rest);
    return result;
  }

  test::TempDir directory_;
  test::WorkingDirectory inDirectory_{directory_.path()};
  std::string output_;
};

const std::string file = "IDS_PROCESSARGS_FIRST(f)\n";
const std::string database = "IDS_PROCESSARGS_SECOND(db)\n";
const std::string verbose = "IDS_PROCESSARGS_THIRD\n";
const std::string noFile = "IDS_PROCESSARGS_FIFTH\n";
const std::string noDatabase = "IDS_PROCESSARGS_SIXTH\n";
std::string noOption(int c) {
  return "IDS_GETOPT_FIRST(" + std::to_string(c) + ")\n";
}
std::string unknown(int c) {
  return "IDS_GETOPT_SECOND(" + std::to_string(c) + ")\n";
}
std::string noArgument(const std::string& letter) {
  return "IDS_GETOPT_THIRD(" + letter + ")\n";
}

TEST_F(Run, UsableCommandLinesReachTheirOperation) {
  const struct {
    Words words;
    std::string output;
    int result;
    RestoreSettings settings;
  } cases[] = {
      {{"-i", "f", "-o", "db"}, file + database, replaced, {0, 0, 0, "db", "f"}},
      {{"-if", "-odb"}, file + database, replaced, {0, 0, 0, "db", "f"}},
      {{"-I", "f", "-M", "db", "-V"}, file + database + verbose, merged, {1, 1, 0, "db", "f"}},
      {{"-vp", "-i", "f", "-O", "db"}, verbose + file + database, replaced, {0, 1, 1, "db", "f"}},
      {{"-Pvif", "-odb"}, verbose + file + database, replaced, {0, 1, 1, "db", "f"}},
      {{"-pi", "f", "-odb"}, file + database, replaced, {0, 0, 1, "db", "f"}},
      {{"-i-x", "-o db"},
       "IDS_PROCESSARGS_FIRST(-x)\nIDS_PROCESSARGS_SECOND( db)\n",
       replaced,
       {0, 0, 0, " db", "-x"}},
      {{"-if", "-odb", "extra", "-v"},
       file + database + noOption('e'),
       replaced,
       {0, 0, 0, "db", "f"}},
      {{"-if", "-odb", "", "-v"}, file + database + noOption(0), replaced, {0, 0, 0, "db", "f"}},
      {{"-if", "-odb", "\xC3\xA9"},
       file + database + noOption(0xC3),
       replaced,
       {0, 0, 0, "db", "f"}},
      {{"-if", "-odb", "--", "-v"}, file + database, replaced, {0, 0, 0, "db", "f"}},
      {{"-if", "-odb", "-", "-v"}, file + database, replaced, {0, 0, 0, "db", "f"}},
      {{"-u", "db"}, "", counted, {2, 0, 0, "db", ""}},
      {{"-U", "db", "-i", "f"}, file, counted, {2, 0, 0, "db", "f"}},
      {{"-i", "f", "-u", "db"}, file, counted, {2, 0, 0, "db", "f"}},
      {{"-ox", "-m", "db", "-i", "f"},
       "IDS_PROCESSARGS_SECOND(x)\n" + database + file,
       merged,
       {1, 0, 0, "db", "f"}},
      {{"-ux", "-odb", "-if"}, database + file, replaced, {0, 0, 0, "db", "f"}},
      {{"-ig", "-if", "-odb"},
       "IDS_PROCESSARGS_FIRST(g)\n" + file + database,
       replaced,
       {0, 0, 0, "db", "f"}},
      {{"-i%n", "-odb"}, "IDS_PROCESSARGS_FIRST(%n)\n" + database, replaced, {0, 0, 0, "db", "%n"}},
      {{"-ia/b\\c", "-odb"},
       "IDS_PROCESSARGS_FIRST(a/b\\c)\n" + database,
       replaced,
       {0, 0, 0, "db", "a/b\\c"}},
  };
  for (const auto& expected : cases) {
    SCOPED_TRACE(testing::PrintToString(expected.words));
    EXPECT_EQ(run(expected.words), expected.result);
    EXPECT_EQ(output_, expected.output);
    const RestoreSettings& settings = restoreSettings();
    EXPECT_EQ(settings.mode, expected.settings.mode);
    EXPECT_EQ(settings.verbose, expected.settings.verbose);
    EXPECT_EQ(settings.prototypesOnly, expected.settings.prototypesOnly);
    EXPECT_EQ(settings.databaseName, expected.settings.databaseName);
    EXPECT_EQ(settings.backupFileName, expected.settings.backupFileName);
  }
}

TEST_F(Run, UnusableCommandLinesEndWithTheHelp) {
  const struct {
    Words words;
    std::string messages;
  } cases[] = {
      {{}, ""},
      {{"-?"}, ""},
      {{"-?", "-i", "f", "-o", "db"}, file + database},
      {{"-v"}, verbose},
      {{"f", "-o", "db"}, noOption('f')},
      {{"--"}, ""},
      {{"-i"}, noArgument("i")},
      {{"-vI"}, verbose + noArgument("I")},
      {{"-i", "-o", "db"}, noArgument("i") + database + noFile},
      {{"-o", "-", "-i", "f"}, noArgument("o")},
      {{"-i", "--", "-odb"}, noArgument("i")},
      {{"-x"}, unknown('x')},
      {{"--verbose"}, unknown('-')},
      {{"-\xE9"}, unknown(0xE9)},
      {{"-vxp", "-if", "-odb"}, verbose + unknown('x') + file + database},
      {{"-v:v", "-if", "-odb"}, verbose + verbose + file + database},
      {{"-:v", "-if", "-odb"}, file + database},
      {{"-i", "f"}, file + noDatabase},
      {{"-o", "db"}, database + noFile},
      {{"-i", "", "-o", ""},
       "IDS_PROCESSARGS_FIRST()\nIDS_PROCESSARGS_SECOND()\n" + noFile + noDatabase},
      {{"-u", ""}, ""},
      {{"-u"}, noArgument("u")},
      {{"-u", "db", "-x"}, unknown('x')},
  };
  for (const auto& expected : cases) {
    SCOPED_TRACE(testing::PrintToString(expected.words));
    EXPECT_EQ(run(expected.words), exitUsage);
    EXPECT_EQ(output_, expected.messages + help);
  }
}

TEST_F(Run, RefusesADatabaseNameWithAPath) {
  for (const char* name : {"a/b", "a\\b", "/", "./db", "db\\"}) {
    EXPECT_EQ(run({"-u", name}), exitNameHasPath) << name;
    EXPECT_EQ(output_, "IDS_MAIN_FIRST\n") << name;
  }
}

TEST_F(Run, OutOfMemoryIsOneLineAndACode) {
  constexpr Operations greedy{.useCount = []() -> int { throw std::bad_alloc(); }};
  testing::internal::CaptureStderr();
  EXPECT_EQ(run({"-u", "db"}, greedy), exitFailed);
  const std::string errors = testing::internal::GetCapturedStderr();
  EXPECT_TRUE(errors.starts_with("orxrestore: out of memory")) << errors;
  EXPECT_EQ(errors.find('\n'), errors.size() - 1) << errors;
}

TEST_F(Run, AnEmptyArgumentVectorIsAnUnusableCommandLine) {
  startOver();
  char* argv[] = {nullptr};
  testing::internal::CaptureStdout();
  EXPECT_EQ(processArgs(0, argv), 0);
  EXPECT_EQ(testing::internal::GetCapturedStdout(), help);
}

TEST_F(Run, HelpLeavesOutMissingTexts) {
  const test::TempDir other;
  const test::WorkingDirectory inOther(other.path());
  test::compileBundle(other.path(), "root",
                      R"(root { IDS_HELLOFN_FIRST { "IDS_HELLOFN_FIRST(%s,%s)\n" }
      IDS_HELP_2 { "two\n" } IDS_HELP_3 { "%s" } IDS_HELP_9 { "nine\n" } IDS_HELP_13 { "13\n" } })");
  EXPECT_EQ(run({}), exitUsage);
  EXPECT_EQ(output_, "two\n \n13\n");
}

}  // namespace
}  // namespace orx
