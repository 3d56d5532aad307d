// orxrestore -i -o as a whole program: output, exit code and what the database holds afterwards.
#include <gmock/gmock.h>

#include "records/data_buffer.h"
#include "restore/exit_codes.h"
#include "tests/support/backup_lines.h"
#include "tests/support/child_conditions.h"
#include "tests/support/kdb_records.h"
#include "tests/support/program_runs.h"
#include "tests/support/test_bundle.h"

namespace orx::test {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;
using testing::SizeIs;

class ReplaceRestore : public testing::Test {
 protected:
  ReplaceRestore() {
    writeEchoBundle(directory_.path());
    createDatabase(database(), 3);
  }

  // The output without banner and option echoes.
  ProgramResult restore(const std::string& options = "", const std::string& backup = "backup",
                        const std::string& name = "db", std::function<void()> inChild = {},
                        std::vector<std::string> environment = {}) {
    std::vector<std::string> arguments = {"-i", backup, "-o", name};
    if (!options.empty()) arguments.push_back(options);
    auto result = runIn(directory_, "orxrestore", std::move(arguments), "", std::move(inChild),
                        std::move(environment));
    while (result.output.starts_with("IDS_HELLOFN") ||
           result.output.starts_with("IDS_PROCESSARGS")) {
      result.output.erase(0, result.output.find('\n') + 1);
    }
    return result;
  }

  void backupIs(const std::string& text) { writeFile(directory_ / "backup", text); }
  [[nodiscard]] std::string database() const { return directory_.file("db"); }
  [[nodiscard]] std::vector<Record> records() const {
    return Opened(database(), kdb::openForReading).all();
  }

  TempDir directory_;
};

TEST_F(ReplaceRestore, TellsItsProgressEveryThousandRecordsWhenVerbose) {
  createDatabase(directory_.file("big"), 2500);
  backupIs(resourceLines(2500));
  const auto quiet = restore("", "backup", "big");
  EXPECT_EQ(quiet.output, "IDS_MAIN_THIRD(big)\nIDS_MAIN_FIFTH(2500)\nIDS_MAIN_EIGHTH(2500)\n");
  EXPECT_EQ(quiet.exitCode, exitSuccess);
  const auto verbose = restore("-v", "backup", "big");
  EXPECT_EQ(verbose.output,
            "IDS_MAIN_THIRD(big)\nIDS_MAIN_FOURTH(1000)\nIDS_MAIN_FOURTH(2000)\n"
            "IDS_MAIN_FIFTH(2500)\nIDS_MAIN_SEVENTH(1000)\nIDS_MAIN_SEVENTH(2000)\n"
            "IDS_MAIN_EIGHTH(2500)\n");
  EXPECT_EQ(verbose.errors, "");
  EXPECT_THAT(objects(directory_.file("big")), SizeIs(2500));
}

TEST_F(ReplaceRestore, AddsARecordForEveryLine) {
  const std::string line = Line{.object = handleText(4, 1), .recType = 4}.text();
  const std::pair<std::string, std::size_t> cases[] = {
      {resourceLines(2, "\r\n"), 2},
      {line, 1},           // without an end
      {line + "\n\n", 2},  // an empty line is an all-zero record
      {"", 0},
  };
  for (const auto& [text, count] : cases) {
    backupIs(text);
    const auto result = restore();
    EXPECT_EQ(result.exitCode, exitSuccess) << text;
    EXPECT_THAT(result.output, HasSubstr("IDS_MAIN_EIGHTH(" + std::to_string(count) + ")"));
    EXPECT_THAT(records(), SizeIs(count)) << text;
  }
}

TEST_F(ReplaceRestore, KeepsPrototypesAloneWithP) {
  const std::string group = handleText(3, 1);
  const std::string prototypeGroup = handleText(11, 1);
  const std::string null = handleText(0, 0);
  const struct {
    std::string parent, object;
    int recType;
    bool kept;
  } cases[] = {
      {group, handleText(4, 1), 9, true},          {group, null, 1, true},
      {null, handleText(1, 1), 1, false},          {null, handleText(2, 1), 2, true},
      {group, handleText(4, 2), 4, false},         {prototypeGroup, handleText(4, 3), 4, true},
      {prototypeGroup, handleText(4, 4), 1, true},
  };
  std::vector<std::string> lines;
  for (const auto& row : cases) {
    const Line line{.parent = row.parent, .object = row.object, .recType = row.recType};
    lines.push_back(line.text() + "\n");
    backupIs(lines.back());
    EXPECT_EQ(restore("-p").exitCode, exitSuccess);
    EXPECT_THAT(records(), SizeIs(row.kept ? 1 : 0)) << line.text();
  }
  // A record that was left out does not count, not even in the number of one that fails.
  backupIs(lines[2] + lines[3] + lines[4] + lines[3]);
  EXPECT_THAT(restore("-p").output, HasSubstr("*Error: Failure adding record 2 to data base"));
}

TEST_F(ReplaceRestore, ADuplicateKeyEndsItAndKeepsWhatWasAdded) {
  const std::string line = Line{.object = handleText(4, 7), .recType = 4}.text() + "\n";
  backupIs(resourceLines(5) + line + line + resourceLines(9));
  const auto result = restore();
  EXPECT_EQ(result.exitCode, exitFailed);
  EXPECT_EQ(result.output,
            "IDS_MAIN_THIRD(db)\nIDS_MAIN_FIFTH(3)\n"
            "*Error: Failure adding record 7 to data base, RC=4(Duplicate), RSN=46(Unique)\n");
  EXPECT_THAT(records(), SizeIs(6));
  EXPECT_THAT(objects(database() + ".orx-previous"), ElementsAre(1, 2, 3));
}

TEST_F(ReplaceRestore, WhatCannotBeOpenedIsNamedAndTheDatabaseUntouched) {
  backupIs(resourceLines(1));
  std::filesystem::create_directory(directory_ / "folder");
  writeFile(directory_ / "notes", "not a database");
  const std::string longName(300, 'n');
  for (const char* backup : {"missing", "folder"}) {
    for (const char* name : {"db", "none"}) {
      const auto result = restore("", backup, name);
      EXPECT_EQ(result.output, "IDS_MAIN_SECOND(" + std::string(backup) + ")\n");
      EXPECT_EQ(result.exitCode, exitBackupNotOpened);
    }
  }
  const struct {
    std::string name, output;
  } cases[] = {
      {"none", "none, RC=5(NotThere), RSN=28(NotFound)\n"},
      {"notes", "notes, RC=8(SystemError), RSN=17(Format)\n"},
      {"folder", "folder, RC=8(SystemError), RSN=17(Format)\n"},
      {longName, longName.substr(0, 218) + ", RC=1(BadArgument), RSN=22(Length)\n"},
      {"db", "db, RC=3(BusyObject), RSN=19(InUse)\n"},
  };
  const Opened holder(database());
  for (const auto& row : cases) {
    const auto result = restore("", "backup", row.name);
    EXPECT_EQ(result.output, "*Error: Unable to open key1 database " + row.output);
    EXPECT_EQ(result.exitCode, exitDatabaseNotOpened) << row.output;
  }
  EXPECT_THAT(records(), SizeIs(3));
}

// What ends a run in storage leaves the old database, and says so in one line.
TEST_F(ReplaceRestore, StorageFailuresPublishNothing) {
  const std::string deleted = "IDS_MAIN_THIRD(db)\nIDS_MAIN_FIFTH(3)\n";
  backupIs(resourceLines(500));
  const auto full = restore("", "backup", "db", fileLimit(65536));
  EXPECT_EQ(full.output, deleted + "*Error: in CloseDatabase, RC=7(Shortage), RSN=40(Space)\n");
  EXPECT_EQ(full.exitCode, exitFailed);

  backupIs(resourceLines(30000));
  const auto fullEarlier = restore("", "backup", "db", fileLimit(65536));
  EXPECT_THAT(fullEarlier.output, HasSubstr("to data base, RC=7(Shortage), RSN=40(Space)\n"));
  EXPECT_THAT(fullEarlier.output, Not(HasSubstr("CloseDatabase")));
  EXPECT_EQ(fullEarlier.exitCode, exitFailed);

  const auto unreadable = restore("", "/proc/self/mem");  // opens, and fails at the first read
  EXPECT_EQ(unreadable.output,
            deleted + "*Error: reading the backup file, RC=8(SystemError), RSN=20(IOError)\n");
  EXPECT_EQ(unreadable.exitCode, exitFailed);

  EXPECT_THAT(objects(database()), ElementsAre(1, 2, 3));
  EXPECT_THAT(directory_.names(), ElementsAre("PRESTORE_restore", "backup", "db", "root.txt"));
}

TEST_F(ReplaceRestore, ADamagedDatabaseIsNotReplacedInPassing) {
  const std::string bytes = writeDamagedDatabase(directory_.file("damaged"));
  backupIs(resourceLines(3));
  const auto result = restore("", "backup", "damaged");
  EXPECT_THAT(result.output,
              HasSubstr("*Error: Error on ReadNextForUpdate, RC=8(SystemError), RSN=17(Format)\n"
                        "IDS_MAIN_SIXTH(8)\n"));
  EXPECT_EQ(result.exitCode, exitFailed);
  EXPECT_EQ(readFile(directory_ / "damaged"), bytes);
}

TEST_F(ReplaceRestore, TheTraceOfEverythingChangesNoResult) {
  backupIs(resourceLines(50) + Line{.object = handleText(4, 1)}.text() + "\n");
  const auto plain = restore("-v");
  const auto trace = directory_.file("trace");
  const auto traced =
      restore("-v", "backup", "db", {}, {"ORX_TRACE=*=0x59", "ORX_TRACE_FILE=" + trace});
  EXPECT_EQ(traced.exitCode, plain.exitCode);
  EXPECT_EQ(traced.errors, plain.errors);
  EXPECT_THAT(records(), SizeIs(50));
  const std::string text = readFile(trace);
  EXPECT_THAT(text, HasSubstr(" ORXRESTORE overrideDB:"));
  EXPECT_THAT(text, HasSubstr(" ORXCCMCI importHndl:"));
}

}  // namespace
}  // namespace orx::test
