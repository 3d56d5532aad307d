// The whole program: what it prints, where, and its exit codes.
#include <gmock/gmock.h>
#include <sys/stat.h>

#include "messages/bundle_files.h"
#include "orxkdb/exit_codes.h"
#include "tests/support/child_conditions.h"
#include "tests/support/kdb_records.h"
#include "tests/support/program_runs.h"

namespace orx::orxkdb {
namespace {

using testing::ContainsRegex;
using testing::HasSubstr;

const std::string emptyDump = "VERSION=3\nformat=bytevalue\ntype=btree\nHEADER=END\nDATA=END\n";

class OrxKdb : public testing::Test {
 protected:
  test::ProgramResult run(std::vector<std::string> arguments, const std::string& input = "",
                          std::function<void()> inChild = {}) {
    return test::runIn(scratch_, "orxkdb", std::move(arguments), input, std::move(inChild));
  }

  test::TempDir scratch_;
};

void expectFailure(const test::ProgramResult& result, ExitCode code, const std::string& errors) {
  EXPECT_EQ(result.exitCode, code) << result.errors;
  EXPECT_THAT(result.errors, HasSubstr(errors));
  EXPECT_EQ(result.output, "");
}

TEST_F(OrxKdb, HelpNamesEverySubcommandAndExitCode) {
  const auto help = run({"--help"});
  EXPECT_EQ(help.exitCode, exitDone);
  for (const char* text : {"  0  done", "  1  ", "  2  ", "  5  ", "  6  "}) {
    EXPECT_THAT(help.output, HasSubstr(text));
  }
  EXPECT_THAT(run({"--version"}).output, ContainsRegex("^orxkdb [0-9.]+\nLMDB .*\nICU [0-9.]+\n$"));
}

TEST_F(OrxKdb, UnusableCommandLinesEndWithOneLine) {
  const std::string unexpected = "The following argument was not expected: ";
  const struct {
    std::vector<std::string> arguments;
    std::string what, help;
  } cases[] = {
      {{}, "A subcommand is required", "orxkdb --help"},
      {{"dumb", "db"}, "there is no subcommand \"dumb\"", "orxkdb --help"},
      {{"dump"}, "DB is required", "orxkdb dump --help"},
      {{"backup", "db"}, "FILE is required", "orxkdb backup --help"},
      {{"stat", "--yaml", "db"}, unexpected + "--yaml", "orxkdb stat --help"},
      {{"undo", "db", "more"}, unexpected + "more", "orxkdb undo --help"},
  };
  for (const auto& row : cases) {
    const auto result = run(row.arguments);
    EXPECT_EQ(result.exitCode, exitUsage);
    EXPECT_EQ(result.errors, "orxkdb: " + row.what + ", command line, see \"" + row.help + "\"\n");
    EXPECT_EQ(result.output, "");
  }
}

TEST_F(OrxKdb, CreatesADatabaseWithItsMessages) {
  std::filesystem::create_directory(scratch_.file("sub"));
  EXPECT_EQ(run({"create", "sub/db"}).output, "sub/db: empty database made, messages beside it\n");
  for (const BundleFile& file : bundleFiles()) {
    const std::string path = scratch_.file("sub/PRESTORE_restore/" + std::string(file.name));
    EXPECT_EQ(std::filesystem::file_size(path), file.bytes.size());
  }
  EXPECT_EQ(run({"dump", "sub/db"}).output, emptyDump);
  expectFailure(run({"create", "sub/db"}), exitNotOpened,
                "/sub/db (4 Duplicate, 46 Unique), "
                "choose another name");
  EXPECT_EQ(run({"create", "none/db"}).exitCode, exitNotOpened);
}

TEST_F(OrxKdb, WritesMessagesWhereItIsTold) {
  EXPECT_EQ(run({"messages"}).exitCode, exitDone);
  EXPECT_EQ(run({"messages", "."}).exitCode, exitDone);
  EXPECT_TRUE(std::filesystem::exists(scratch_.file("PRESTORE_restore/root.res")));
  EXPECT_EQ(run({"messages", "none"}).exitCode, exitNotOpened);
  std::filesystem::create_directory(scratch_.file("sub"));
  test::writeFile(scratch_.file("sub/PRESTORE_restore"), "in the way");
  expectFailure(run({"messages", "sub"}), exitNotOpened, "sub/PRESTORE_restore (Not a directory)");
  EXPECT_EQ(test::readFile(scratch_.file("sub/PRESTORE_restore")), "in the way");
}

TEST_F(OrxKdb, KeepsWhatHasTheNameOfAMessageFile) {
  namespace fs = std::filesystem;
  test::writeFile(scratch_ / "victim", "kept");
  fs::create_directory(scratch_ / "elsewhere");
  const fs::path bundle = scratch_ / "PRESTORE_restore";
  const fs::path file = bundle / "de.res";
  const std::pair<const char*, std::function<void()>> cases[] = {
      {"link", [&] { fs::create_symlink("../victim", file); }},
      {"dangling link", [&] { fs::create_symlink("nowhere", file); }},
      {"text", [&] { test::writeFile(file, "these are notes of somebody else's"); }},
      {"short text", [&] { test::writeFile(file, "notes"); }},
      {"directory", [&] { fs::create_directory(file); }},
      {"pipe", [&] { (void)::mkfifo(file.c_str(), 0600); }},
      {"text behind a linked directory",
       [&] {
         fs::remove(bundle);
         fs::create_directory_symlink("elsewhere", bundle);
         test::writeFile(file, "notes");
       }},
  };
  for (const auto& [name, make] : cases) {
    SCOPED_TRACE(name);
    fs::create_directory(bundle);
    make();
    const fs::file_type type = fs::symlink_status(file).type();
    for (const auto& command : {std::vector<std::string>{"messages"}, {"create", "db"}}) {
      expectFailure(run(command), exitNotOpened,
                    "something else than messages has the name of a message file, " +
                        file.string() + ", look at it with \"ls -l ./PRESTORE_restore/de.res\"");
      EXPECT_EQ(fs::symlink_status(file).type(), type);
      EXPECT_EQ(std::distance(fs::directory_iterator(bundle), {}), 1);
      EXPECT_EQ(test::readFile(scratch_ / "victim"), "kept");
    }
    EXPECT_THAT(scratch_.names(), testing::ElementsAre("PRESTORE_restore", "elsewhere", "victim"));
    fs::remove_all(bundle);
  }
}

TEST_F(OrxKdb, WritesDamagedMessagesAgain) {
  ASSERT_EQ(run({"messages"}).exitCode, exitDone);
  const std::string file = scratch_.file("PRESTORE_restore/root.res");
  const std::string whole = test::readFile(file);
  for (const std::string& damaged : {std::string(), whole.substr(0, 16)}) {
    test::writeFile(file, damaged);
    EXPECT_EQ(run({"messages"}).exitCode, exitDone);
    EXPECT_TRUE(test::readFile(file) == whole);
  }
}

TEST_F(OrxKdb, StandardStreamsCarryDumpsAndBackups) {
  test::createDatabase(scratch_.file("db"), 3);
  const std::string dumped = run({"dump", "db"}).output;
  EXPECT_EQ(run({"dump", "db", "-"}).output, dumped);
  EXPECT_EQ(run({"load", "copy"}, dumped).output, "copy: 3 records loaded\n");
  EXPECT_EQ(run({"backup", "copy", "-"}).output.size(), 3U * 441);
  EXPECT_EQ(run({"backup", "copy", "file"}).output, "file: 3 records backed up\n");
  expectFailure(run({"load", "x", "-"}, "VERSION=3\nformat=print\n"), exitNotAsExpected,
                "orxkdb: format=print cannot be loaded, only format=bytevalue, standard input:2, "
                "make the dump again; nothing was loaded\n");
}

TEST_F(OrxKdb, UndoTakesSoundGenerationsAlone) {
  expectFailure(run({"undo", "db"}), exitNotOpened, "/db (5 NotThere");
  test::createDatabase(scratch_.file("db"), 3);
  expectFailure(run({"undo", "db"}), exitNotOpened, "/db.orx-previous, nothing can be undone");
  test::writeFile(scratch_.file("db.orx-previous"), "text");
  expectFailure(run({"undo", "db"}), exitNotOpened, "/db.orx-previous (8 SystemError, 17 Format)");
  std::filesystem::remove(scratch_.file("db.orx-previous"));
  test::createDatabase(scratch_.file("db.orx-previous"), 3000);
  std::string bytes = test::readFile(scratch_.file("db.orx-previous"));
  bytes.replace(bytes.size() / 2, 4096, 4096, '\xFF');  // pages that an opening does not look at
  test::writeFile(scratch_.file("db.orx-previous"), bytes);
  expectFailure(run({"undo", "db"}), exitNotAsExpected, "the previous generation is damaged, ");
  EXPECT_EQ(test::objects(scratch_.file("db")).size(), 3U);
}

TEST_F(OrxKdb, OutputThatNobodyTakesIsAFailure) {
  test::createDatabase(scratch_.file("db"), 3);
  const std::vector<std::string> commands[] = {{"dump", "db"},
                                               {"backup", "db", "-"},
                                               {"stat", "db"},
                                               {"--help"},
                                               {"dump", "--json", "db", "file"}};
  for (const auto& broken : test::brokenOutputs) {
    for (const auto& arguments : commands) {
      expectFailure(run(arguments, "", broken), exitFailed,
                    "orxkdb: the output cannot be written, standard output (");
    }
    EXPECT_EQ(run({"dump", "db", "file"}, "", broken).exitCode, exitDone);
  }
}

TEST_F(OrxKdb, FullDiskLeavesEverythingAsItWas) {
  test::createDatabase(scratch_.file("db"), 3000);
  const std::string before = test::readFile(scratch_.file("db"));
  ASSERT_EQ(run({"dump", "db", "dump"}).exitCode, exitDone);
  const auto fullDisk = test::fileLimit(128 << 10);
  const auto loaded = run({"load", "--replace", "db", "dump"}, "", fullDisk);
  expectFailure(loaded, exitFailed, "/db (7 Shortage, 40 Space), free space, see \"df -h .\"");
  EXPECT_THAT(loaded.errors, HasSubstr("(7 Shortage, 40 Space)"));
  for (const char* command : {"dump", "backup"}) {
    expectFailure(run({command, "db", "out"}, "", fullDisk), exitFailed,
                  "/out (File too large), free space");
  }
  EXPECT_EQ(test::readFile(scratch_.file("db")), before);
  EXPECT_THAT(scratch_.names(), testing::ElementsAre("db", "dump"));
}

TEST_F(OrxKdb, StandardOutputIsNotTheDatabase) {
  test::createDatabase(scratch_.file("db"), 3);
  const std::string before = test::readFile(scratch_.file("db"));
  const auto intoTheDatabase = [] {
    (void)::dup2(::open("db", O_WRONLY | O_APPEND), STDOUT_FILENO);
  };
  expectFailure(run({"backup", "db", "-"}, "", intoTheDatabase), exitNotAsExpected,
                "standard output is the database itself");
  EXPECT_EQ(test::readFile(scratch_.file("db")), before);
}

TEST_F(OrxKdb, NamesAreTakenAsTheyAre) {
  for (const char* name : {"stat", "[a,b]", "two words", "a=b", "\xE4"}) {
    EXPECT_EQ(run({"create", name}).exitCode, exitDone) << name;
    EXPECT_TRUE(std::filesystem::exists(scratch_.file(name)));
    EXPECT_EQ(run({"dump", name}).output, emptyDump);
  }
  EXPECT_EQ(run({"create", "--", "-x"}).exitCode, exitDone);
  EXPECT_TRUE(std::filesystem::exists(scratch_.file("-x")));
  EXPECT_EQ(run({"stat", ""}).exitCode, exitNotOpened);
  EXPECT_THAT(run({"stat", "{dir}"}).errors, HasSubstr("\"orxkdb create '{dir}'\""));
}

// As a file that somebody else has named may be called.
TEST_F(OrxKdb, NamesStayOnTheirLineAndInTheirWord) {
  const std::string name = "d\033[2J\nb $(touch made)";
  const std::string word = "$'d\\033[2J\\012b $(touch made)'";
  const std::string shown = "d?[2J?b $(touch made)";
  const std::string text = name + ".txt";
  ASSERT_EQ(run({"create", name}).exitCode, exitDone);
  ASSERT_EQ(run({"sample", "--objects", "20", text}).exitCode, exitDone);
  test::createDatabase(scratch_.file(name + ".orx-previous"), 1);
  const auto undone = run({"undo", name});
  EXPECT_THAT(undone.output, testing::StartsWith(shown + ": back to its previous generation; "));
  EXPECT_THAT(undone.output, HasSubstr("\"orxkdb undo " + word + "\" takes"));
  const std::vector<std::string> commands[] = {
      {"undo", name},
      {"create", name},
      {"dump", name, name + ".dump"},
      {"backup", name, "b" + name},
      {"load", name + "2", name + ".dump"},
      {"check", text},
      {"check", name},
      {"diff", name, text},
      {"plan", name, text},
      {"stat", name + "3"},
      {"explain", "--line", text + ":1"},
      {"explain", name, "9:9"},
      {"report", name, "--html", name + ".html"},
      {"messages", name},
      {name},
  };
  for (const auto& arguments : commands) {
    const auto result = run(arguments);
    EXPECT_THAT(result.output + result.errors, HasSubstr("d?[2J?b")) << arguments[0];
    EXPECT_EQ((result.output + result.errors).find('\033'), std::string::npos) << arguments[0];
  }
}

}  // namespace
}  // namespace orx::orxkdb
