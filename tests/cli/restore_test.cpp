// orxrestore as a whole program: output, exit code and what the database holds afterwards.
#include <gmock/gmock.h>

#include "restore/exit_codes.h"
#include "tests/support/backup_lines.h"
#include "tests/support/kdb_records.h"
#include "tests/support/program_runs.h"
#include "tests/support/test_bundle.h"

namespace orx::test {
namespace {

using testing::AllOf, testing::ElementsAre, testing::HasSubstr, testing::SizeIs;

class ReplaceRestore : public testing::Test {
 protected:
  ReplaceRestore() {
    writeEchoBundle(directory_.path());
    createDatabase(database(), 3);
  }

  // The output without banner and option echoes.
  ProgramResult restore(std::vector<std::string> words = {"-i", "backup", "-o", "db"},
                        std::vector<std::string> environment = {}) {
    auto result = runIn(directory_, "orxrestore", std::move(words), "", {}, std::move(environment));
    while (result.output.starts_with("IDS_HELLOFN") ||
           result.output.starts_with("IDS_PROCESSARGS")) {
      result.output.erase(0, result.output.find('\n') + 1);
    }
    return result;
  }

  void backupIs(const std::string& text) { writeFile(directory_ / "backup", text); }
  [[nodiscard]] std::string database() const { return directory_.file("db"); }

  TempDir directory_;
};

// Nor does the trace of everything change what it says.
TEST_F(ReplaceRestore, TellsItsProgressEveryThousandRecordsWhenVerbose) {
  createDatabase(directory_.file("big"), 2500);
  backupIs(resourceLines(2500));
  EXPECT_EQ(restore({"-i", "backup", "-o", "big"}).output,
            "IDS_MAIN_THIRD(big)\nIDS_MAIN_FIFTH(2500)\nIDS_MAIN_EIGHTH(2500)\n");
  const auto verbose = restore({"-i", "backup", "-o", "big", "-v"},
                               {"ORX_TRACE=*=0x59", "ORX_TRACE_FILE=" + directory_.file("trace")});
  EXPECT_EQ(verbose.output,
            "IDS_MAIN_THIRD(big)\nIDS_MAIN_FOURTH(1000)\nIDS_MAIN_FOURTH(2000)\n"
            "IDS_MAIN_FIFTH(2500)\nIDS_MAIN_SEVENTH(1000)\nIDS_MAIN_SEVENTH(2000)\n"
            "IDS_MAIN_EIGHTH(2500)\n");
  EXPECT_EQ(verbose.errors, "");
  EXPECT_THAT(objects(directory_.file("big")), SizeIs(2500));
  EXPECT_THAT(readFile(directory_ / "trace"),
              AllOf(HasSubstr(" ORXRESTORE overrideDB:"), HasSubstr(" ORXCCMCI importHndl:")));
}

TEST_F(ReplaceRestore, KeepsPrototypesAloneWithP) {
  const std::string group = handleText(3, 1), prototypeGroup = handleText(11, 1);
  const std::string null = handleText(0, 0);
  const auto line = [](const std::string& parent, const std::string& object, int recType) {
    return Line{.parent = parent, .object = object, .recType = recType}.text() + "\n";
  };
  const std::string kept = line(null, handleText(2, 4), 2);
  const std::string dropped = line(group, handleText(4, 6), 4);
  backupIs(line(group, handleText(4, 1), 9) + line(group, null, 1) +
           line(null, handleText(1, 5), 1) + kept + dropped +
           line(prototypeGroup, handleText(4, 2), 4) + line(prototypeGroup, handleText(4, 3), 1));
  EXPECT_EQ(restore({"-i", "backup", "-o", "db", "-p"}).exitCode, exitSuccess);
  // Identifiers are stored from their low byte on.
  EXPECT_THAT(objects(database()),
              testing::UnorderedElementsAre(0, 1U << 24, 2U << 24, 3U << 24, 4U << 24));
  // A record that was left out does not count, not even in the number of one that fails.
  backupIs(dropped + kept + dropped + kept);
  EXPECT_THAT(restore({"-i", "backup", "-o", "db", "-p"}).output,
              HasSubstr("*Error: Failure adding record 2 to data base"));
}

TEST_F(ReplaceRestore, ADuplicateKeyEndsItAndKeepsWhatWasAdded) {
  const std::string line = Line{.object = handleText(4, 7), .recType = 4}.text() + "\n";
  backupIs(resourceLines(5) + line + line + resourceLines(9));
  const auto result = restore();
  EXPECT_EQ(result.exitCode, exitFailed);
  EXPECT_EQ(result.output,
            "IDS_MAIN_THIRD(db)\nIDS_MAIN_FIFTH(3)\n"
            "*Error: Failure adding record 7 to data base, RC=4(Duplicate), RSN=46(Unique)\n");
  EXPECT_THAT(objects(database()), SizeIs(6));
  EXPECT_THAT(objects(database() + ".orx-previous"), ElementsAre(1, 2, 3));
}

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

TEST(OrxRestore, WithoutBundlePrintsTheBuiltInHelpAlone) {
  const TempDir directory;
  const std::pair<std::vector<std::string>, std::string> cases[] = {
      {{"-o", "db", "word"}, builtInHelp}, {{"-if", "-oa/b"}, ""}};
  for (const auto& [arguments, output] : cases) {
    EXPECT_EQ(runIn(directory, "orxrestore", arguments, "", {}, {"LC_ALL=C"}).output, output);
  }
}

}  // namespace
}  // namespace orx::test
