#include <algorithm>

#include "restore/exit_codes.h"
#include "tests/support/child_conditions.h"
#include "tests/support/program_runs.h"
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
  ProgramResult run(std::vector<std::string> arguments, std::function<void()> inChild = {}) {
    return runIn(directory_, "orxrestore", std::move(arguments), "", std::move(inChild),
                 {"LC_ALL=C"});
  }

  TempDir directory_;
};

TEST_F(OrxRestore, WithoutBundlePrintsTheBuiltInHelpAlone) {
  for (const auto& arguments :
       std::vector<std::vector<std::string>>{{}, {"-x"}, {"-o", "db", "word"}}) {
    const auto result = run(arguments);
    EXPECT_EQ(result.exitCode, exitUsage);
    EXPECT_EQ(result.output, builtInHelp);
  }
  const auto refused = run({"-if", "-oa/b"});
  EXPECT_EQ(refused.exitCode, exitNameHasPath);
  EXPECT_EQ(refused.output, "");
}

TEST_F(OrxRestore, AClosedOrFullStandardOutputDoesNotEndTheRun) {
  for (const auto& broken : brokenOutputs) {
    const auto result = run({"-v"}, broken);
    EXPECT_EQ(result.exitCode, exitUsage);
    EXPECT_EQ(result.output, "");
  }
}

// A trace file stands for any file that the run opens: without care it would get number 1 here,
// and everything printed would go into it.
TEST_F(OrxRestore, NothingIsPrintedIntoAFileWhenStandardOutputIsClosed) {
  writeShippedBundle(directory_.path());
  const auto result =
      runIn(directory_, "orxrestore", std::vector<std::string>(1000, "-v"), "", closedOutput,
            {"ORX_TRACE=main=0x40", "ORX_TRACE_FILE=" + directory_.file("trace")});
  EXPECT_EQ(result.exitCode, exitUsage);
  const std::string trace = readFile(directory_ / "trace");
  EXPECT_NE(trace.find("ORXRESTORE main"), std::string::npos) << trace;
  EXPECT_EQ(std::ranges::count(trace, '\n'), 2) << trace;
}

}  // namespace
}  // namespace orx::test
