// orxrestore -i -o as a whole program: output, exit code and what the database holds afterwards.
#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include "records/data_buffer.h"
#include "restore/exit_codes.h"
#include "tests/support/backup_lines.h"
#include "tests/support/kdb_records.h"
#include "tests/support/places.h"
#include "tests/support/run_program.h"
#include "tests/support/temp_dir.h"
#include "tests/support/test_bundle.h"

namespace orx::test {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
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
    auto result = runProgram({.file = test::builtProgram("orxrestore"),
                              .arguments = arguments,
                              .directory = directory_.path(),
                              .environment = std::move(environment),
                              .inChild = std::move(inChild)});
    EXPECT_EQ(result.signal, 0);
    std::string kept;
    for (std::size_t at = 0; at < result.output.size();) {
      const auto end = result.output.find('\n', at) + 1;
      const std::string line = result.output.substr(at, end - at);
      if (!line.starts_with("IDS_HELLOFN") && !line.starts_with("IDS_PROCESSARGS")) kept += line;
      at = end;
    }
    result.output = kept;
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

TEST_F(ReplaceRestore, TakesEveryFormOfLine) {
  const std::string first = Line{.object = handleText(4, 1), .recType = 4, .data = "abc"}.text();
  const std::string second = Line{.object = handleText(4, 2), .recType = 4}.text();
  const std::string last = Line{.object = handleText(4, 3), .recType = 9}.text();
  backupIs(first + "\n" + second + "\n" + last + "\n");
  EXPECT_EQ(restore().exitCode, exitSuccess);
  const auto expected = records();
  EXPECT_THAT(expected, SizeIs(3));
  const struct {
    const char* what;
    std::string text;
    std::size_t count;
    bool same;
  } cases[] = {
      {"carriage returns", first + "\r\n" + second + "\r\n" + last + "\r\n", 3, true},
      {"no last line end", first + "\n" + second + "\n" + last, 3, true},
      {"behind a zero byte at a line's start nothing is read",
       first + "\n" + second + "\n" + last + "\n" + std::string(1, '\0') + first, 3, true},
      {"characters behind the columns", first + "xy\n" + second + "xyz\n" + last + "\r", 3, true},
      {"an empty line is an all-zero record", first + "\n\n" + second + "\n", 3, false},
      {"a long line is read in pieces", first + std::string(4, ' ') + last + "\n", 2, false},
      {"an empty file", "", 0, false},
  };
  for (const auto& row : cases) {
    backupIs(row.text);
    const auto result = restore();
    EXPECT_EQ(result.exitCode, exitSuccess) << row.what;
    EXPECT_THAT(result.output, HasSubstr("IDS_MAIN_EIGHTH(" + std::to_string(row.count) + ")"));
    EXPECT_EQ(records().size(), row.count) << row.what;
    EXPECT_EQ(records() == expected, row.same) << row.what;
  }
}

TEST_F(ReplaceRestore, KeepsPrototypesAloneWithP) {
  const std::string group = handleText(3, 1);
  const std::string prototypeGroup = handleText(11, 1);
  const struct {
    Line line;
    bool kept;
  } cases[] = {
      {{.parent = group, .object = handleText(4, 1), .recType = 9}, true},
      {{.parent = group, .recType = 1}, true},  // no object handle
      {{.object = handleText(1, 1), .recType = 1}, false},
      {{.object = handleText(2, 1), .recType = 2}, true},
      {{.parent = group, .object = handleText(4, 2), .recType = 4}, false},
      {{.parent = prototypeGroup, .object = handleText(4, 3), .recType = 4}, true},
      {{.parent = prototypeGroup, .object = handleText(4, 4), .recType = 1}, true},
  };
  std::size_t kept = 0;
  for (const auto& row : cases) {
    backupIs(row.line.text() + "\n");
    EXPECT_EQ(restore("-p").exitCode, exitSuccess);
    EXPECT_THAT(records(), SizeIs(row.kept ? 1 : 0)) << row.line.text();
    kept += row.kept ? 1 : 0;
  }
  // A record that was left out does not count, not even in the number of one that fails.
  backupIs(cases[2].line.text() + "\n" + cases[3].line.text() + "\n" + cases[4].line.text() + "\n" +
           cases[3].line.text() + "\n");
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

TEST_F(ReplaceRestore, AWrongFileEmptiesTheDatabaseAndUndoBringsItBack) {
  std::string noise;
  for (int i = 0; i < 5000; ++i) noise += static_cast<char>(1 + (i * 7919) % 255);
  for (const std::string& text : {noise, std::string(3000, '\0'), std::string("\n\n\n")}) {
    backupIs(text);
    (void)restore();
    EXPECT_THAT(records(), testing::Not(SizeIs(3)));
    kdb::kdbStatus status;
    EXPECT_EQ(kdb::exchangeWithPrevious(database().c_str(), status), 0);
    EXPECT_THAT(objects(database()), ElementsAre(1, 2, 3));
  }
}

TEST_F(ReplaceRestore, WhatCannotBeOpenedIsNamedAndTheDatabaseUntouched) {
  backupIs(resourceLines(1));
  std::filesystem::create_directory(directory_ / "folder");
  writeFile(directory_ / "notes", "not a database");
  const std::string longName(300, 'n');
  const struct {
    std::string backup, name, output;
    int exitCode;
  } cases[] = {
      {"missing", "db", "IDS_MAIN_SECOND(missing)\n", exitBackupNotOpened},
      {"folder", "db", "IDS_MAIN_SECOND(folder)\n", exitBackupNotOpened},
      {"missing", "none", "IDS_MAIN_SECOND(missing)\n", exitBackupNotOpened},
      {"backup", "none",
       "*Error: Unable to open key1 database none, RC=5(NotThere), RSN=28(NotFound)\n",
       exitDatabaseNotOpened},
      {"backup", "notes",
       "*Error: Unable to open key1 database notes, RC=8(SystemError), RSN=17(Format)\n",
       exitDatabaseNotOpened},
      {"backup", "folder",
       "*Error: Unable to open key1 database folder, RC=8(SystemError), RSN=17(Format)\n",
       exitDatabaseNotOpened},
      {"backup", longName,
       "*Error: Unable to open key1 database " + longName.substr(0, 218) +
           ", RC=1(BadArgument), RSN=22(Length)\n",
       exitDatabaseNotOpened},
  };
  for (const auto& row : cases) {
    const auto result = restore("", row.backup, row.name);
    EXPECT_EQ(result.output, row.output);
    EXPECT_EQ(result.exitCode, row.exitCode) << row.output;
  }
  const Opened holder(database());
  EXPECT_EQ(restore().output,
            "*Error: Unable to open key1 database db, RC=3(BusyObject), RSN=19(InUse)\n");
  EXPECT_THAT(records(), SizeIs(3));
}

// What ends a run in storage leaves the old database, and says so in one line.
TEST_F(ReplaceRestore, StorageFailuresPublishNothing) {
  backupIs(resourceLines(500));
  const auto limitFileSize = [] {
    const struct rlimit limit { 65536, 65536 };
    (void)::setrlimit(RLIMIT_FSIZE, &limit);
  };
  const auto full = restore("", "backup", "db", limitFileSize);
  EXPECT_EQ(full.output,
            "IDS_MAIN_THIRD(db)\nIDS_MAIN_FIFTH(3)\n"
            "*Error: in CloseDatabase, RC=7(Shortage), RSN=40(Space)\n");
  EXPECT_EQ(full.exitCode, exitFailed);

  backupIs(resourceLines(30000));
  const auto fullEarlier = restore("", "backup", "db", limitFileSize);
  EXPECT_THAT(fullEarlier.output, HasSubstr("to data base, RC=7(Shortage), RSN=40(Space)\n"));
  EXPECT_THAT(fullEarlier.output, testing::Not(HasSubstr("CloseDatabase")));
  EXPECT_EQ(fullEarlier.exitCode, exitFailed);

  const auto unreadable = restore("", "/proc/self/mem");  // opens, and fails at the first read
  EXPECT_EQ(unreadable.output,
            "IDS_MAIN_THIRD(db)\nIDS_MAIN_FIFTH(3)\n"
            "*Error: reading the backup file, RC=8(SystemError), RSN=20(IOError)\n");
  EXPECT_EQ(unreadable.exitCode, exitFailed);

  EXPECT_THAT(objects(database()), ElementsAre(1, 2, 3));
  EXPECT_THAT(directory_.names(), ElementsAre("PRESTORE_restore", "backup", "db", "root.txt"));
}

TEST_F(ReplaceRestore, ADamagedDatabaseIsNotReplacedInPassing) {
  createDatabase(database() + "2", 2000);
  std::string bytes = readFile(database() + "2");
  bytes[bytes.size() / 2] = static_cast<char>(~bytes[bytes.size() / 2]);
  for (std::size_t page = 20 * 4096; page < 22 * 4096; ++page) bytes[page] = '\x5A';
  writeFile(database(), bytes);
  backupIs(resourceLines(3));
  const auto result = restore();
  EXPECT_THAT(result.output,
              HasSubstr("*Error: Error on ReadNextForUpdate, RC=8(SystemError), RSN=17(Format)\n"
                        "IDS_MAIN_SIXTH(8)\n"));
  EXPECT_EQ(result.exitCode, exitFailed);
  EXPECT_EQ(readFile(database()), bytes);
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
