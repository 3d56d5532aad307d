// The whole program: what it prints, where, and its exit codes.
#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <unistd.h>

#include <string>
#include <vector>

#include "messages/bundle_files.h"
#include "orxkdb/exit_codes.h"
#include "tests/support/kdb_records.h"
#include "tests/support/places.h"
#include "tests/support/run_program.h"

namespace orx::orxkdb {
namespace {

using testing::AllOf;
using testing::ContainsRegex;
using testing::HasSubstr;
using testing::StartsWith;

const std::string emptyDump = "VERSION=3\nformat=bytevalue\ntype=btree\nHEADER=END\nDATA=END\n";

class OrxKdb : public testing::Test {
 protected:
  test::ProgramResult run(std::vector<std::string> arguments, const std::string& input = "",
                          std::function<void()> inChild = {}) {
    auto result = test::runProgram({.file = test::builtProgram("orxkdb"),
                                    .arguments = std::move(arguments),
                                    .directory = scratch_.file(""),
                                    .input = input,
                                    .inChild = std::move(inChild)});
    EXPECT_EQ(result.signal, 0);
    return result;
  }

  test::TempDir scratch_;
};

TEST_F(OrxKdb, HelpNamesEverySubcommandAndExitCode) {
  const auto help = run({"--help"});
  EXPECT_EQ(help.exitCode, exitDone);
  for (const char* text : {"  0  done", "  1  ", "  2  ", "  5  ", "  6  "}) {
    EXPECT_THAT(help.output, HasSubstr(text));
  }
  for (const char* name :
       {"create", "dump", "load", "backup", "stat", "report", "messages", "undo", "sample"}) {
    EXPECT_THAT(help.output, HasSubstr(std::string("\n  ") + name + " "));
    const auto own = run({name, "--help"});
    EXPECT_EQ(own.exitCode, exitDone);
    EXPECT_THAT(own.output, ContainsRegex(std::string("Examples:\n  orxkdb ") + name));
    EXPECT_EQ(own.errors, "");
  }
  EXPECT_THAT(run({"--version"}).output, ContainsRegex("^orxkdb [0-9.]+\nLMDB .*\nICU [0-9.]+\n$"));
}

TEST_F(OrxKdb, UnusableCommandLinesEndWithOneLine) {
  const struct {
    std::vector<std::string> arguments;
    const char* errors;
  } cases[] = {
      {{}, "orxkdb: A subcommand is required, command line, see \"orxkdb --help\"\n"},
      {{"dumb", "db"},
       "orxkdb: there is no subcommand \"dumb\", command line, see \"orxkdb --help\"\n"},
      {{"dump"}, "orxkdb: DB is required, command line, see \"orxkdb dump --help\"\n"},
      {{"backup", "db"}, "orxkdb: FILE is required, command line, see \"orxkdb backup --help\"\n"},
      {{"stat", "--yaml", "db"},
       "orxkdb: The following argument was not expected: --yaml, command line, see \"orxkdb stat "
       "--help\"\n"},
      {{"undo", "db", "more"},
       "orxkdb: The following argument was not expected: more, command line, see \"orxkdb undo "
       "--help\"\n"},
  };
  for (const auto& row : cases) {
    const auto result = run(row.arguments);
    EXPECT_EQ(result.exitCode, exitUsage);
    EXPECT_EQ(result.errors, row.errors);
    EXPECT_EQ(result.output, "");
  }
}

TEST_F(OrxKdb, CreatesADatabaseWithItsMessages) {
  std::filesystem::create_directory(scratch_.file("sub"));
  const auto created = run({"create", "sub/db"});
  EXPECT_EQ(created.exitCode, exitDone) << created.errors;
  EXPECT_EQ(created.output, "sub/db: empty database made, messages beside it\n");
  for (const BundleFile& file : bundleFiles()) {
    const std::string path = scratch_.file("sub/PRESTORE_restore/" + std::string(file.name));
    EXPECT_EQ(std::filesystem::file_size(path), file.bytes.size());
  }
  EXPECT_EQ(run({"dump", "sub/db"}).output, emptyDump);
  const auto again = run({"create", "sub/db"});
  EXPECT_EQ(again.exitCode, exitNotOpened);
  EXPECT_THAT(again.errors, StartsWith("orxkdb: there is already a file of that name, sub/db (4 "
                                       "Duplicate, 46 Unique), choose another name"));
  EXPECT_EQ(run({"create", "none/db"}).exitCode, exitNotOpened);
}

TEST_F(OrxKdb, WritesMessagesWhereItIsTold) {
  EXPECT_EQ(run({"messages"}).exitCode, exitDone);
  EXPECT_EQ(run({"messages", "."}).exitCode, exitDone);
  EXPECT_TRUE(std::filesystem::exists(scratch_.file("PRESTORE_restore/root.res")));
  EXPECT_EQ(run({"messages", "none"}).exitCode, exitNotOpened);
  std::filesystem::create_directory(scratch_.file("sub"));
  test::writeFile(scratch_.file("sub/PRESTORE_restore"), "in the way");
  const auto blocked = run({"messages", "sub"});
  EXPECT_EQ(blocked.exitCode, exitNotOpened);
  EXPECT_THAT(blocked.errors, HasSubstr("sub/PRESTORE_restore (Not a directory)"));
  EXPECT_EQ(test::readFile(scratch_.file("sub/PRESTORE_restore")), "in the way");
}

TEST_F(OrxKdb, StandardStreamsCarryDumpsAndBackups) {
  test::createDatabase(scratch_.file("db"), 3);
  const auto dumped = run({"dump", "db"});
  EXPECT_EQ(run({"dump", "db", "-"}).output, dumped.output);
  const auto loaded = run({"load", "copy"}, dumped.output);
  EXPECT_EQ(loaded.output, "copy: 3 records loaded\n") << loaded.errors;
  EXPECT_EQ(run({"backup", "copy", "-"}).output.size(), 3U * 441);
  EXPECT_EQ(run({"backup", "copy", "file"}).output, "file: 3 records backed up\n");
  const auto refused = run({"load", "x", "-"}, "VERSION=3\nformat=print\n");
  EXPECT_EQ(refused.exitCode, exitNotAsExpected);
  EXPECT_EQ(refused.errors,
            "orxkdb: format=print cannot be loaded, only format=bytevalue, standard input:2, make "
            "the dump again; nothing was loaded\n");
}

TEST_F(OrxKdb, UndoExchangesTheGenerations) {
  const auto missing = run({"undo", "db"});
  EXPECT_EQ(missing.exitCode, exitNotOpened);
  EXPECT_THAT(missing.errors, StartsWith("orxkdb: there is no such database, db ("));
  test::createDatabase(scratch_.file("db"), 3);
  const auto first = run({"undo", "db"});
  EXPECT_EQ(first.exitCode, exitNotOpened);
  EXPECT_THAT(first.errors, StartsWith("orxkdb: the database has no previous generation, db.orx-"));
  ASSERT_EQ(run({"load", "--replace", "db"}, emptyDump).exitCode, exitDone);
  const auto undone = run({"undo", "db"});
  EXPECT_EQ(undone.exitCode, exitDone);
  EXPECT_THAT(undone.output, StartsWith("db: back to its previous generation; "));
  EXPECT_EQ(test::objects(scratch_.file("db")).size(), 3U);
  EXPECT_EQ(run({"undo", "db"}).exitCode, exitDone);
  EXPECT_EQ(test::objects(scratch_.file("db")).size(), 0U);
  test::writeFile(scratch_.file("db.orx-previous"), "text");
  const auto damaged = run({"undo", "db"});
  EXPECT_EQ(damaged.exitCode, exitNotOpened);
  EXPECT_THAT(damaged.errors, HasSubstr("damaged, db.orx-previous (8 SystemError, 17 Format)"));
}

void closeOutput() {
  (void)::close(STDOUT_FILENO);
}
void fillOutput() {
  (void)::dup2(::open("/dev/full", O_WRONLY), STDOUT_FILENO);
}
void breakPipe() {
  int ends[2];
  if (::pipe(ends) == 0) (void)::dup2(ends[1], STDOUT_FILENO);
  (void)::close(ends[0]);
}

TEST_F(OrxKdb, OutputThatNobodyTakesIsAFailure) {
  test::createDatabase(scratch_.file("db"), 3);
  for (void (*const output)() : {closeOutput, fillOutput, breakPipe}) {
    for (const std::vector<std::string>& arguments : {std::vector<std::string>{"dump", "db"},
                                                      {"backup", "db", "-"},
                                                      {"stat", "db"},
                                                      {"--help"}}) {
      SCOPED_TRACE(arguments.front());
      const auto result = run(arguments, "", output);
      EXPECT_EQ(result.exitCode, exitFailed);
      EXPECT_THAT(result.errors,
                  StartsWith("orxkdb: the output cannot be written, standard output ("));
    }
    EXPECT_EQ(run({"dump", "db", "file"}, "", output).exitCode, exitDone);
  }
}

void limitFiles() {
  const rlimit limit{128 << 10, 128 << 10};
  (void)::setrlimit(RLIMIT_FSIZE, &limit);
}

TEST_F(OrxKdb, FullDiskLeavesEverythingAsItWas) {
  test::createDatabase(scratch_.file("db"), 3000);
  const std::string before = test::readFile(scratch_.file("db"));
  ASSERT_EQ(run({"dump", "db", "dump"}).exitCode, exitDone);
  const auto loaded = run({"load", "--replace", "db", "dump"}, "", limitFiles);
  EXPECT_EQ(loaded.exitCode, exitFailed);
  EXPECT_THAT(loaded.errors, StartsWith("orxkdb: there is no space left, db"));
  EXPECT_THAT(loaded.errors, HasSubstr("(7 Shortage, 40 Space)"));
  for (const char* command : {"dump", "backup"}) {
    const auto result = run({command, "db", "out"}, "", limitFiles);
    EXPECT_EQ(result.exitCode, exitFailed);
    EXPECT_THAT(result.errors, HasSubstr("written, out (File too large), free space"));
  }
  EXPECT_EQ(test::readFile(scratch_.file("db")), before);
  EXPECT_THAT(scratch_.names(), testing::ElementsAre("db", "dump"));
}

TEST_F(OrxKdb, StandardOutputIsNotTheDatabase) {
  test::createDatabase(scratch_.file("db"), 3);
  const std::string before = test::readFile(scratch_.file("db"));
  const auto result = run({"backup", "db", "-"}, "",
                          [] { (void)::dup2(::open("db", O_WRONLY | O_APPEND), STDOUT_FILENO); });
  EXPECT_EQ(result.exitCode, exitNotAsExpected);
  EXPECT_THAT(result.errors, HasSubstr("standard output is the database itself"));
  EXPECT_EQ(test::readFile(scratch_.file("db")), before);
}

TEST_F(OrxKdb, NamesAreTakenAsTheyAre) {
  for (const char* name : {"stat", "[a,b]", "two words", "a=b", "\xE4"}) {
    SCOPED_TRACE(name);
    EXPECT_EQ(run({"create", name}).exitCode, exitDone);
    EXPECT_TRUE(std::filesystem::exists(scratch_.file(name)));
    EXPECT_EQ(run({"dump", name}).output, emptyDump);
  }
  EXPECT_EQ(run({"create", "--", "-x"}).exitCode, exitDone);
  EXPECT_TRUE(std::filesystem::exists(scratch_.file("-x")));
  EXPECT_EQ(run({"stat", ""}).exitCode, exitNotOpened);
}

}  // namespace
}  // namespace orx::orxkdb
