// The hints of orxrestore: what a failure means and what to type next, on standard error alone.
#include <gmock/gmock.h>

#include <regex>

#include "restore/exit_codes.h"
#include "terminal/file_words.h"
#include "tests/support/compress.h"
#include "tests/support/program_runs.h"
#include "tests/support/small_fleet.h"
#include "tests/support/test_bundle.h"

namespace orx::test {
namespace {

using testing::AllOf, testing::HasSubstr, testing::Not;

class Hints : public testing::Test {
 protected:
  Hints() {
    writeEchoBundle(directory_.path());
    std::filesystem::create_directory(directory_ / "folder");
    for (const char* name : {"db", "other"}) makeDatabase(directory_.file(name), smallFleet());
    for (const char* name : {"db.orx-previous", "gone.orx-previous", "doubt", "doubt.orx-new"}) {
      makeDatabase(directory_.file(name), {plainLine(1)});
    }
    std::filesystem::create_symlink("nowhere", directory_ / "dangling");
    createDatabase(directory_.file("empty"));
    makeDatabase(directory_.file("counterless"), {plainLine(7)});
    const std::pair<const char*, std::string> files[] = {
        {"notes", "not a database"},
        {"backup", backupText(smallFleet())},
        {"third.orx-new", backupText(smallFleet())},
        {"{db}.gz", compressed("gzip", backupText(smallFleet()))},
        {"packed", compressed("gzip", backupText({plainLine(1)}))},
        {"packed.txt", "not to be written over"},
        {"twice", backupText({plainLine(1), plainLine(1)})},
    };
    for (const auto& [name, bytes] : files) writeFile(directory_ / name, bytes);
    writeDamagedDatabase(directory_.file("damaged"));
  }

  ProgramResult run(const std::string& script) {
    return runProgram(shellScript(directory_, script));
  }

  TempDir directory_;
};

// Where "@" stands for the directory.
void expectMatch(const std::string& text, const std::string& pattern, const TempDir& directory) {
  const std::string whole = std::regex_replace(pattern, std::regex("@"), directory.file(""));
  EXPECT_TRUE(std::regex_match(text, std::regex(whole))) << whole << "\nis not\n" << text;
}

TEST_F(Hints, TellWhatAFailureMeansAndWhatToTypeNext) {
  const std::string longName(300, 'n');
  const std::string notOpened = "\n*Error: Unable to open key1 database ";
  const std::string deleted = "\nIDS_MAIN_THIRD(db)\nIDS_MAIN_FIFTH(3)\n";
  const std::string db = readFile(directory_ / "db"), damaged = readFile(directory_ / "damaged");
  const struct {
    std::string command;
    int exitCode;
    std::string means, next;
    std::string told = {};  // in standard output
  } cases[] = {
      {"-x", exitUsage, "the command line .*", "orxrestore -i BACKUP -o DATABASE"},
      {"-i backup -m folder/db", exitNameHasPath, ".*", ".* && orxrestore -i @backup -m db"},
      {"-vpi backup -o 'folder/a db'", exitNameHasPath, ".* not as @folder/a db",
       "cd folder && orxrestore -i @backup -o 'a db' -p -v"},
      {"-u nofolder/db", exitNameHasPath, ".* no directory for @nofolder/db", "ls -l [.]"},
      {"-i missing -o db", exitBackupNotOpened, "there is no backup @missing; @db is unchanged",
       "ls -l [.]", "\nIDS_MAIN_SECOND(missing)\n"},
      {"-i folder -o no", exitBackupNotOpened, "the backup @folder is a directory", "ls -ld folder",
       "\nIDS_MAIN_SECOND(folder)\n"},
      {"-i backup/x -o db", exitBackupNotOpened,
       "the backup @backup/x cannot be reached [(]Not a directory[)]; @db is unchanged",
       "ls -l [.]"},
      {"-i db.orx-previous -o db", exitBackupNotOpened,
       "@db.orx-previous is the previous generation of @db, .*; nothing was done",
       "orxkdb undo db"},
      {"-i db.orx-previous -m db", exitBackupNotOpened, ".* is the previous generation of .*",
       "orxkdb backup db.orx-previous db.orx-previous.txt"},
      {"-i gone.orx-previous -o gone", exitBackupNotOpened, ".* is the previous generation of .*",
       "mv gone.orx-previous gone"},
      {"-i ./db -o db", exitBackupNotOpened, "@db is the database itself, .*",
       "orxkdb backup db [.]/db.txt"},
      {"-i third.orx-new -o third", exitBackupNotOpened, "@third.orx-new has the name .*",
       "mv third.orx-new third.orx-new.txt"},
      {"-i backup -o gone", exitDatabaseNotOpened,
       "there is no database @gone, but its previous generation @gone.orx-previous",
       "mv gone.orx-previous gone"},
      {"-i backup -o doubt", exitDatabaseNotOpened,
       "@doubt.orx-new may be the database that a killed run replaced, .*",
       "orxkdb stat @doubt.orx-new"},
      {"-i backup -o doubt.orx-new", exitDatabaseNotOpened,
       "@doubt.orx-new has the name of a file that belongs to another .*", "ls -l doubt.orx-new"},
      {"-i backup -o dangling", exitDatabaseNotOpened, "@dangling is a symbolic link .*",
       "ls -l dangling"},
      {"-i backup -o 'no db'", exitDatabaseNotOpened, "there is no database @no db",
       "orxkdb create 'no db'", notOpened + "no db, RC=5(NotThere), RSN=28(NotFound)\n"},
      {"-i backup -o notes", exitDatabaseNotOpened, "@notes is not a database", "ls -ld notes",
       notOpened + "notes, RC=8(SystemError), RSN=17(Format)\n"},
      {"-i backup -o " + longName, exitDatabaseNotOpened, "the name is too long .*: @n+",
       "ls -l [.]", notOpened + longName.substr(0, 218) + ", RC=1(BadArgument), RSN=22(Length)\n"},
      {"-i backup -o damaged", exitFailed, "@damaged is damaged; .*; the database is unchanged",
       "orxkdb stat damaged",
       "*Error: Error on ReadNextForUpdate, RC=8(SystemError), "
       "RSN=17(Format)\nIDS_MAIN_SIXTH(8)\n"},
      {"-i /proc/self/mem -o db", exitFailed, "/proc/self/mem could not be read .*unchanged",
       "journalctl -k",
       deleted + "*Error: reading the backup file, RC=8(SystemError), RSN=20(IOError)\n"},
      {"-i backup -m empty", exitFailed, "@empty is empty, .*unchanged",
       "orxrestore -i BACKUP -o empty"},
      {"-i backup -m counterless", exitFailed, "the system record of @counterless .*",
       "orxkdb check counterless"},
      {"-i '{db}.gz' -m counterless", exitFailed,
       "@[{]db[}][.]gz is compressed with gzip; decompress it and restore that",
       "zcat < '[{]db[}][.]gz' > '[{]db[}]'"},
      {"-i '{dir}/{why}' -o db", exitBackupNotOpened,
       "there is no backup @[{]dir[}]/[{]why[}], and no directory for it; @db is unchanged",
       "ls -l [.]"},
      {"-i packed -m counterless", exitFailed, "@packed is compressed .*",
       "zcat < packed > packed[.]2[.]txt"},
      {"-i twice -m other", exitFailed,
       "@other has what .*\n  next: orxkdb undo other\norxrestore: records of @twice have keys .*",
       "orxkdb plan other twice"},
      {"mkdir empty.orx-previous; orxrestore -i backup -o empty", exitDatabaseNotOpened,
       "@empty.orx-previous is no file of this program, .*", "ls -ld @empty.orx-previous"},
      {"flock db orxrestore -u db", exitDatabaseNotOpened, "@db is being changed by .*",
       "fuser -v db", notOpened + "db, RC=3(BusyObject), RSN=19(InUse)\n"},
      {"mkdir bare; cp db bare; cd bare; orxrestore -u db", exitSuccess,
       "the messages are missing .*@bare/PRESTORE_restore",
       "orxkdb messages\norxrestore: @bare/db had nothing to change: .*",
       "start to rebuild the use count for DB db\n"},
      {"-i other -o db", exitSuccess,
       "(@db had 3 .*\n  next: orxkdb undo db\norxrestore: )?@other is a database, not a .*",
       "orxkdb backup other other.txt"},
      {"orxkdb sample b; cp db late; mkfifo pipe; orxrestore -i pipe -o late & exec 5> pipe; "
       "cat b >&5; until test -e late.orx-new; do sleep .01; done; mkdir late.orx-previous; "
       "exec 5>&-; wait $!",
       exitSuccess, "@late.orx-new is the database before this change, .*",
       "ls -ld late.orx-previous"},
  };
  for (const auto& row : cases) {
    const auto result = run((row.command.starts_with("-") ? "orxrestore " : "") + row.command);
    EXPECT_EQ(result.exitCode, row.exitCode) << row.command;
    expectMatch(result.errors, "orxrestore: " + row.means + "\n  next: " + row.next + "\n",
                directory_);
    EXPECT_THAT(result.output, AllOf(HasSubstr(row.told), Not(HasSubstr("next:"))));
    EXPECT_TRUE(row.exitCode == exitSuccess || readFile(directory_ / "db") == db);
  }
  EXPECT_TRUE(readFile(directory_ / "damaged") == damaged);
}

TEST_F(Hints, NameAFullDisk) {
  writeFile(directory_ / "backup", resourceLines(45000));
  const std::string db = readFile(directory_ / "db");
  const auto names = directory_.names();
  for (const char* lines : {"500", "45000"}) {  // the last of them, or one on the way
    const auto full = run("head -n " + std::string(lines) +
                          " backup > part; (ulimit -f 64; orxrestore -i part -o db); rm part");
    expectMatch(full.errors,
                "orxrestore: no space, .*@db beside the first; the database is unchanged\n"
                "  next: df -h [.]\n",
                directory_);
    EXPECT_THAT(full.output, testing::EndsWith(", RC=7(Shortage), RSN=40(Space)\n"));
    EXPECT_EQ(full.output.find("CloseDatabase") != std::string::npos, *lines == '5');
    EXPECT_TRUE(readFile(directory_ / "db") == db);
    EXPECT_EQ(directory_.names(), names);
  }
}

TEST_F(Hints, NameAFileSystemThatHoldsNoMoreFiles) {
  const auto result = run(R"(unshare -m bash -c '
mount -t tmpfs -o nr_inodes=60 none folder && cp -r db PRESTORE_restore folder || exit 77
cd folder; for i in {1..60}; do : > $i; done 2> /dev/null
orxrestore -i ../backup -o db; orxkdb dump db text; true' || exit 77)");
  if (result.exitCode == 77) GTEST_SKIP() << "no right to mount";
  expectMatch(result.errors,
              "orxrestore: the file system of @folder/db can hold no more files, .* unchanged\n"
              "  next: df -i [.]\n"
              "orxkdb: the output file cannot be made, @folder/text [(]No space .*[)], "
              "remove files, see \"df -i [.]\", and run this again\n",
              directory_);
}

// A file that is written all the time stands for a copy that is under way.
TEST_F(Hints, TellThatABackupChangedWhileItWasRead) {
  const std::string lines = resourceLines(3000);
  writeFile(directory_ / "lines", lines);
  writeFile(directory_ / "lines.gz", compressed("gzip", lines));
  const std::string why = "orxkdb: the file changed while it was read, @lines, wait until .*\n";
  const struct {
    const char* command;
    int exitCode;
    std::string errors;
  } cases[] = {
      {"orxrestore -i lines -o db", exitSuccess,
       "orxrestore: @lines changed while it was read, .*\n  next: orxkdb undo db\n"},
      {"orxrestore -i lines -m counterless", exitFailed,
       "orxrestore: the system .*\n  next: orxkdb check counterless\n"
       "orxrestore: @lines changed during the run; .*\n  next: ls -l lines\n"},
      {"orxkdb check lines", exitFailed, why},
      {"orxkdb plan other lines", exitFailed, why},
      {"orxkdb diff other lines.gz", exitFailed,
       "orxkdb: the file changed while it was read, @lines.gz, .*\n"},
  };
  for (const auto& row : cases) {
    const auto result = run("command='" + std::string(row.command) +
                            R"('; while touch lines lines.gz; do :; done & writer=$!
for i in {1..200}; do
  $command > out 2> errors; code=$?
  grep -q ' changed ' errors && break
done
kill $writer; cat errors >&2; exit $code)");
    EXPECT_EQ(result.exitCode, row.exitCode) << row.command;
    expectMatch(result.errors, row.errors, directory_);
  }
}

TEST(FileWords, AreReadyForAShell) {
  const std::pair<const char*, const char*> cases[] = {{"rorxdata", "rorxdata"},
                                                       {"it's", "'it'\\''s'"},
                                                       {"", "''"},
                                                       {"-o", "./-o"},
                                                       {"$(reboot)", "'$(reboot)'"},
                                                       {"d\xC3\xA9j", "d\xC3\xA9j"},
                                                       {"d\xC2\x9B\xC2", "$'d\\302\\233\xC2'"},
                                                       {"dat\033[2J'\\", "$'dat\\033[2J\\'\\\\'"}};
  for (const auto& [name, word] : cases) EXPECT_EQ(shellWord(name), word);
}

// A terminal that was stopped takes no more words: the run ends all the same.
TEST_F(Hints, ASignalEndsARunThatNobodyListensTo) {
  const auto result = run(R"(mkfifo pipe full; exec 3<>full; head -c 65536 /dev/zero >&3
sleep 2 > pipe & timeout --preserve-status -k 9 -s TERM 0.5 orxrestore -i pipe -o db > out 2>&3)");
  EXPECT_EQ(result.exitCode, 143);
}

}  // namespace
}  // namespace orx::test
