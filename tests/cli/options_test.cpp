#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <string>

#include "restore/exit_codes.h"
#include "tests/support/places.h"
#include "tests/support/run_program.h"
#include "tests/support/temp_dir.h"
#include "tests/support/test_bundle.h"

namespace orx::test {
namespace {

const std::string builtInHelp = R"(
This is a stand-alone program which restores a configuration data base from a backup file.
This program is invoked from a command-line prompt using the following syntax;
orxrestore -i <backup-file-name> -o <database-name> -v
     where '<backup-file-name>' is the name of the backup file which is to be read
           '<database-name>' is the name of the configuration database into which
                             the data in '<backup-file-name>' is restored.
           -v verbose mode, periodically prints number of records deleted and copied.
           -p prototypes only are restored.
e.g. orxrestore -i c:\DBBackup\RORXbackup.txt -o rorxdata
)"
                                " \n"
                                R"(Note - all previously existing records in this file are
       deleted prior to the restore.
orxrestore must be issued from the same directory as the database being restored.
Ensure that the TDV is stopped before running this program
)";

class OrxRestore : public testing::Test {
 protected:
  ProgramResult run(std::vector<std::string> arguments, const std::string& locale = "C",
                    std::function<void()> inChild = {}) {
    auto result = runProgram({.file = test::builtProgram("orxrestore"),
                              .arguments = std::move(arguments),
                              .directory = directory_.path(),
                              .environment = {"LC_ALL=" + locale},
                              .inChild = std::move(inChild)});
    maskBuildTime(result.output);
    EXPECT_EQ(result.signal, 0);
    return result;
  }

  // "Feb 17 2016 10:17:37" at the end of the banner.
  static void maskBuildTime(std::string& output) {
    const auto end = output.find(")\n");
    if (output.starts_with("orxrestore") && end >= 20 && end < output.find('\n')) {
      output.replace(end - 20, 20, "DATE TIME");
    }
  }

  TempDir directory_;
};

TEST_F(OrxRestore, WithoutBundlePrintsTheBuiltInHelpAlone) {
  for (const auto& arguments : std::vector<std::vector<std::string>>{
           {}, {"-?"}, {"-x"}, {"-vi"}, {"-i", "f"}, {"-o", "db", "word"}}) {
    const auto result = run(arguments);
    EXPECT_EQ(result.exitCode, exitUsage);
    EXPECT_EQ(result.output, builtInHelp);
  }
  const auto refused = run({"-if", "-oa/b"});
  EXPECT_EQ(refused.exitCode, exitNameHasPath);
  EXPECT_EQ(refused.output, "");
}

TEST_F(OrxRestore, SpeaksTheOperatorsLanguage) {
  writeShippedBundle(directory_.path());
  const struct {
    const char* locale;
    std::string banner, echo;
  } cases[] = {
      {"C", "orxrestore - restores a TDV configuration database (built DATE TIME)\n",
       "Backup file: f\nConfiguration database: a/b\n"},
      {"pt_BR.UTF-8", "orxrestore - restores a TDV configuration database (built DATE TIME)\n",
       "Backup file: f\nConfiguration database: a/b\n"},
      {"de_DE.UTF-8",
       "orxrestore - stellt eine TDV-Konfigurationsdatenbank wieder her (erstellt DATE TIME)\n",
       "Sicherungsdatei: f\nKonfigurationsdatenbank: a/b\n"},
  };
  for (const auto& expected : cases) {
    const auto result = run({"-i", "f", "-o", "a/b"}, expected.locale);
    EXPECT_EQ(result.exitCode, exitNameHasPath);
    EXPECT_EQ(result.output.find(expected.banner + expected.echo), 0u) << result.output;
  }
}

TEST_F(OrxRestore, AClosedOrFullStandardOutputDoesNotEndTheRun) {
  const std::vector<std::function<void()>> breakers{
      [] { (void)close(STDOUT_FILENO); },
      [] { (void)dup2(open("/dev/full", O_WRONLY | O_CLOEXEC), STDOUT_FILENO); },
      [] {
        int ends[2];
        if (pipe(ends) == 0) (void)dup2(ends[1], STDOUT_FILENO), (void)close(ends[0]);
      },
  };
  for (const auto& breaker : breakers) {
    const auto result = run({"-v"}, "C", breaker);
    EXPECT_EQ(result.exitCode, exitUsage);
    EXPECT_EQ(result.output, "");
  }
}

// A trace file stands for any file that the run opens: without care it would get number 1 here,
// and everything printed would go into it.
TEST_F(OrxRestore, NothingIsPrintedIntoAFileWhenStandardOutputIsClosed) {
  writeShippedBundle(directory_.path());
  const auto file = (directory_ / "trace").string();
  const auto result = runProgram({.file = test::builtProgram("orxrestore"),
                                  .arguments = std::vector<std::string>(1000, "-v"),
                                  .directory = directory_.path(),
                                  .environment = {"ORX_TRACE=main=0x40", "ORX_TRACE_FILE=" + file},
                                  .inChild = [] { (void)close(STDOUT_FILENO); }});
  EXPECT_EQ(result.exitCode, exitUsage);
  const std::string trace = readFile(file);
  EXPECT_NE(trace.find("ORXRESTORE main"), std::string::npos) << trace;
  EXPECT_EQ(std::ranges::count(trace, '\n'), 2) << trace;
}

}  // namespace
}  // namespace orx::test
