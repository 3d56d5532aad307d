// The hints of orxrestore: what a failure means and what to type next, on standard error alone.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <regex>

#include "driver/file_words.h"
#include "restore/exit_codes.h"
#include "tests/support/compress.h"
#include "tests/support/places.h"
#include "tests/support/run_program.h"
#include "tests/support/small_fleet.h"
#include "tests/support/temp_dir.h"
#include "tests/support/test_bundle.h"

namespace orx::test {
namespace {

using testing::ElementsAre;
using testing::MatchesRegex;

class Hints : public testing::Test {
 protected:
  Hints() {
    writeEchoBundle(directory_.path());
    std::filesystem::create_directory(directory_ / "folder");
    makeDatabase(directory_.file("db"), smallFleet());
    makeDatabase(directory_.file("other"), smallFleet());
    createDatabase(directory_.file("empty"), 0);
    makeDatabase(directory_.file("counterless"), {plainLine(7)});
    writeFile(directory_ / "notes", "not a database");
    writeFile(directory_ / "nothing", "");
    writeFile(directory_ / "backup", backupText(smallFleet()));
    writeFile(directory_ / "pack.ed.gz", compressed("gzip", backupText(smallFleet())));
    writeFile(directory_ / "packed", compressed("gzip", backupText({plainLine(1)})));
    writeFile(directory_ / "twice", backupText({plainLine(1), plainLine(1)}));
    damage("damaged");
  }

  // Its first pages alone are sound.
  void damage(const std::string& name) {
    createDatabase(directory_.file(name), 2000);
    std::string bytes = readFile(directory_ / name);
    std::fill(bytes.begin() + 20 * 4096, bytes.begin() + 22 * 4096, '\x5A');
    writeFile(directory_ / name, bytes);
  }

  ProgramResult run(std::vector<std::string> arguments, std::function<void()> inChild = {}) {
    return runProgram({.file = builtProgram("orxrestore"),
                       .arguments = std::move(arguments),
                       .directory = directory_.path(),
                       .inChild = std::move(inChild)});
  }

  // As a pattern, "@" stands for the directory.
  [[nodiscard]] std::string pattern(std::string text) const {
    const std::string path = directory_.path().string() + "/";
    return std::regex_replace(text, std::regex("@"), path);
  }

  TempDir directory_;
};

void limitFileSize() {
  const rlimit limit{4096, 4096};
  (void)setrlimit(RLIMIT_FSIZE, &limit);
}

TEST_F(Hints, TellWhatAFailureMeansAndWhatToTypeNext) {
  const struct {
    std::vector<std::string> arguments;
    int exitCode;
    std::string errors;
    std::function<void()> inChild = {};
  } cases[] = {
      {{"-x"},
       exitUsage,
       "orxrestore: the command line .*\n  next: orxrestore -i BACKUP -o DATABASE\n"},
      {{"-i", "backup", "-o", "folder/db"},
       exitNameHasPath,
       "orxrestore: .* not as @folder/db\n  next: cd folder/\n"},
      {{"-i", "missing", "-o", "db"},
       exitBackupNotOpened,
       "orxrestore: there is no backup @missing; @db is unchanged\n  next: ls -l [.]\n"},
      {{"-i", "folder", "-o", "db"},
       exitBackupNotOpened,
       "orxrestore: the backup @folder is a directory; @db is unchanged\n  next: ls -l folder\n"},
      {{"-i", "backup", "-o", "no db"},
       exitDatabaseNotOpened,
       "orxrestore: there is no database @no db\n  next: orxkdb create 'no db'\n"},
      {{"-u", "none"},
       exitDatabaseNotOpened,
       "orxrestore: there is no database @none\n  next: orxkdb create none\n"},
      {{"-i", "backup", "-o", "notes"},
       exitDatabaseNotOpened,
       "orxrestore: @notes is not a database\n  next: ls -ld notes\n"},
      {{"-i", "backup", "-o", std::string(250, 'n')},
       exitDatabaseNotOpened,
       "orxrestore: there is no database @n+\n  next: orxkdb create n+\n"},
      {{"-i", "backup", "-o", "damaged"},
       exitFailed,
       "orxrestore: @damaged is damaged; .*; the database is unchanged\n  next: orxkdb stat "
       "damaged\n"},
      {{"-i", "backup", "-o", "db"},
       exitFailed,
       "orxrestore: no space, .*@db beside the first; the database is unchanged\n  next: df -h "
       "[.]\n",
       limitFileSize},
      {{"-i", "/proc/self/mem", "-o", "db"},
       exitFailed,
       "orxrestore: /proc/self/mem could not be read .*unchanged\n  next: journalctl -k\n"},
      {{"-i", "backup", "-m", "empty"},
       exitFailed,
       "orxrestore: @empty is empty, .*unchanged\n  next: orxrestore -i BACKUP -o empty\n"},
      {{"-i", "backup", "-m", "counterless"},
       exitFailed,
       "orxrestore: the system record of @counterless .*\n  next: orxkdb check counterless\n"},
      {{"-i", "pack.ed.gz", "-m", "counterless"},
       exitFailed,
       "orxrestore: @pack.ed[.]gz is compressed with gzip; decompress it and restore that\n"
       "  next: zcat < pack.ed[.]gz > pack.ed\n"},
      {{"-i", "packed", "-m", "counterless"},
       exitFailed,
       "orxrestore: @packed is compressed .*\n  next: zcat < packed > packed[.]txt\n"},
      {{"-i", "twice", "-m", "other"},
       exitFailed,
       "orxrestore: @other has what .*\n  next: orxkdb undo other\n"
       "orxrestore: records of @twice have keys .*\n  next: orxkdb plan other twice\n"},
      {{"-i", "twice", "-o", "db"},
       exitFailed,
       "orxrestore: @db has what .*\n  next: orxkdb undo db\n"
       "orxrestore: two lines of @twice have .*\n  next: orxkdb check twice\n"},
      {{"-i", "backup", "-o", "db"}, exitSuccess, ""},
      {{"-i", "nothing", "-o", "db"},
       exitSuccess,
       "orxrestore: @db had 3 records and has 0 now; .*\n  next: orxkdb undo db\n"},
      {{"-i", "backup", "-o", "db"}, exitSuccess, ""},
      {{"-i", "other", "-o", "db"},
       exitSuccess,
       "(orxrestore: @db had 3 .*\n  next: orxkdb undo db\n)?"
       "orxrestore: @other is a database, not a .*\n  next: orxkdb backup other other.txt\n"},
  };
  for (const auto& row : cases) {
    const auto result = run(row.arguments, row.inChild);
    EXPECT_EQ(result.exitCode, row.exitCode) << result.output << result.errors;
    EXPECT_TRUE(std::regex_match(result.errors, std::regex(pattern(row.errors))))
        << row.errors << "\nis not\n"
        << result.errors;
    EXPECT_EQ(result.output.find("next:"), std::string::npos);
  }
}

TEST_F(Hints, NameWhoHoldsTheDatabaseAndMissingMessages) {
  {
    const Opened holder(directory_.file("db"));
    EXPECT_THAT(run({"-u", "db"}).errors,
                MatchesRegex("orxrestore: .*/db is being changed by .*\n  next: fuser -v db\n"));
  }
  std::filesystem::remove_all(directory_ / "PRESTORE_restore");
  const auto silent = run({"-u", "db"});
  EXPECT_EQ(silent.exitCode, exitSuccess);
  EXPECT_EQ(silent.output, "start to rebuild the use count for DB db\n");
  EXPECT_THAT(silent.errors, MatchesRegex("orxrestore: the messages are missing .*"
                                          "/PRESTORE_restore\n  next: orxkdb messages\n"));
}

TEST(FileWords, AreReadyForAShell) {
  const struct {
    const char* name;
    const char* word;
  } cases[] = {{"rorxdata", "rorxdata"},
               {"a b", "'a b'"},
               {"it's", "'it'\\''s'"},
               {"", "''"},
               {"-o", "./-o"},
               {"$(reboot)", "'$(reboot)'"},
               {"dat\033[2J", "'dat?[2J'"},
               {"d\xC3\xA9j", "d\xC3\xA9j"}};
  for (const auto& row : cases) EXPECT_EQ(shellWord(row.name), row.word);
}

// What is interrupted leaves the database as it was and nothing beside it.
TEST_F(Hints, ASignalEndsARunWithoutATrace) {
  const std::string bytes = readFile(directory_ / "db");
  const struct {
    std::string signal, command;
    int exitCode;
    std::string errors;
  } cases[] = {
      {"INT", "orxrestore -i pipe -o db", 130,
       "orxrestore: interrupted: the database is unchanged\n"},
      {"TERM", "orxrestore -i pipe -o db", 143,
       "orxrestore: interrupted: the database is unchanged\n"},
      {"HUP", "orxrestore -i pipe -o db", 129,
       "orxrestore: interrupted: the database is unchanged\n"},
      {"TERM", "orxkdb load made dump.pipe", 143,
       "orxkdb: interrupted, no database and no file was changed, run this again\n"},
  };
  for (const auto& row : cases) {
    writeFile(directory_ / "lines", resourceLines(3000));
    const std::string script =
        "rm -f pipe dump.pipe; mkfifo pipe dump.pipe; "
        "{ cat lines; sleep 3; } > pipe 2>/dev/null & "
        "{ orxkdb dump other | sed '$d'; sleep 3; } > dump.pipe 2>/dev/null & "
        "timeout --preserve-status -s " +
        row.signal + " 2 " + row.command +
        " > out & job=$!; "
        "for i in $(seq 35); do ls *.orx-new 2>/dev/null && break; sleep 0.05; done; "
        "wait $job; code=$?; kill $(jobs -p); ls *.orx-new 2>/dev/null; exit $code";
    const auto result =
        runProgram({.file = "/bin/bash",
                    .arguments = {"-c", script},
                    .directory = directory_.path(),
                    .environment = {"PATH=" + programsDirectory().string() + ":/usr/bin:/bin"}});
    EXPECT_EQ(result.exitCode, row.exitCode) << row.command;
    EXPECT_EQ(result.errors, row.errors);
    EXPECT_TRUE(std::regex_match(result.output, std::regex("(db|made)[.]orx-new\n")))
        << result.output;  // there while it ran, gone afterwards
    EXPECT_EQ(readFile(directory_ / "db"), bytes);
  }
}

}  // namespace
}  // namespace orx::test
