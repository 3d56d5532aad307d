// The whole program: what it prints, where, and its exit codes.
#include <gmock/gmock.h>

#include <map>
#include <nlohmann/json.hpp>

#include "messages/bundle_files.h"
#include "orxkdb/exit_codes.h"
#include "tests/support/child_conditions.h"
#include "tests/support/program_runs.h"
#include "tests/support/small_fleet.h"

namespace orx::orxkdb {
namespace {

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

struct Refusal {
  std::string command;
  ExitCode code;
  std::string words = {};  // that its one line holds
};

std::vector<Refusal> refusals() {
  std::vector<Refusal> all = {
      {"", exitUsage, ": A subcommand is required, command line, see \"orxkdb --help\"\n"},
      {"dumb db", exitUsage, ": there is no subcommand \"dumb\", command line, see \"orxkdb --h"},
      {"dump", exitUsage, ": DB is required, command line, see \"orxkdb dump --help\"\n"},
      {"stat --yaml db", exitUsage, "not expected: --yaml, command line, see \"orxkdb stat --help"},
      {"check --limit \"\" lines", exitUsage, "--limit"},
      {"check --limit 18446744073709551616 lines", exitUsage, "from 0 to 18446744073709551615"},
      {"sample --seed -1", exitUsage, "--seed: \"-1\" is no number"},
      {"sample --objects 0x20", exitUsage, "--objects: \"0x20\" is no number"},
      {"sample --objects 4294967316", exitUsage, "from 20 to 50000000"},
      {"report db --html=-page", exitUsage,
       "--html: its value is missing, \"-page\" counts as an option; a file of that name is "
       "\"./-page\""},
      {"--none diff db db", exitNotAsExpected},
      {"--man orxdb", exitUsage},
      {"--man orxrestore", exitNotOpened, "there are no messages here, PRESTORE_"},
      {"--man orxkdb-formats", exitNotAsExpected, "too long"},
      {"--completion tcsh", exitUsage},
      {"dump db - --json", exitUsage},
      {"backup db - --json", exitUsage},
      {"report db --html - --json", exitUsage},

      {"create db", exitNotOpened, "/db (4 Duplicate, 46 Unique), choose another name"},
      {"create none/db", exitNotOpened},
      {"messages none", exitNotOpened},
      {"messages sub", exitNotOpened, "sub/PRESTORE_restore (Not a directory)"},
      {"messages blocked", exitNotAsExpected,
       "blocked/PRESTORE_restore/de.res.orx-new, look at it with \"ls -l blocked/"},
      {"stat none", exitNotOpened, "/none (5 NotThere"},
      {"stat \"\"", exitNotOpened},
      {"stat lines/db", exitNotOpened, "there is no directory for the database"},
      {"stat none.orx-old", exitNotOpened, "the name belongs to another database, "},
      {"stat " + std::string(250, 'n'), exitNotOpened, "the name is too long"},
      {"undo plain", exitNotOpened, "/plain.orx-previous, nothing can be undone"},
      {"undo db", exitNotOpened,
       "/db.orx-previous, nothing can be undone; the database is as it was"},
      {"undo cut", exitNotOpened, "the database is damaged, "},
      {"undo other", exitNotAsExpected, "the previous generation is damaged, "},

      {"load new missing", exitNotOpened, "missing (No such file or directory)"},
      {"load db dumped", exitNotOpened, "(4 Duplicate, 46 Unique)"},
      {"load --replace dangling dumped", exitNotOpened,
       "a symbolic link that leads to no database"},
      {"load --replace gone dumped", exitNotOpened, "makes it the database"},
      {"load --replace lines dumped", exitNotOpened, "this is no database, "},
      {"load --replace locked dumped", exitNotOpened, "(3 BusyObject, 19 InUse)"},
      {"load --replace db db.orx-previous", exitNotAsExpected, "the dump has a name that belongs"},

      {"check .", exitNotOpened},
      {"check /proc/self/stat", exitNotOpened},
      {"check /proc/self/mem", exitFailed},
      {"diff cut db", exitNotOpened},
      {"diff /dev/null db", exitNotOpened},
      {"diff db other.orx-previous", exitNotOpened},
      {"diff other.orx-previous lines", exitNotOpened},

      {"plan db none", exitNotOpened, "/none (No such file"},
      {"plan db db", exitNotAsExpected, "this is a database, not a backup, db, "},
      {"plan empty lines", exitNotAsExpected, "the database is empty"},
      {"plan plain lines", exitNotAsExpected, "a merge would fail: there are no identifier count"},

      {"report db --html db", exitNotAsExpected},
      {"report db --html page --plan \"\"", exitNotOpened},
      {"report empty --html page --plan lines", exitNotAsExpected},
      {"report db --html lines --plan lines", exitNotAsExpected},

      {"explain db 4:8", exitNotAsExpected,
       "there is no object of this handle, db <1;1;4;0;0;0;8;>, check the handle; the system "
       "record's is 0:0"},
      {"explain --line lines:0", exitUsage},
      {"explain db 4:9 --line lines:1", exitUsage},
      {"explain --line lines:8", exitNotAsExpected, "its last line is 3"},
      {"explain --line db:1", exitNotAsExpected},
  };
  for (const char* handle :
       {"4", ":4", "256:1", "4:4294967296", "4:1x", "<1;1;4;0;0;9;>", "0900000000000G01"}) {
    all.push_back({std::string("explain db ") + handle, exitUsage});
  }
  for (const std::string command : {"dump db ", "backup db "}) {
    for (const char* file :
         {"db", "symbolic", "hard", "other", "text", "x.orx-previous", "x.orx-old"}) {
      all.push_back({command + file, exitNotAsExpected, "give another name for the output"});
    }
    for (const char* file : {"no/such", "sub/", "/dev/null"}) {
      all.push_back({command + file, exitNotOpened});
    }
  }
  return all;
}

// The failure of a run that was asked for JSON is one document with the words of its line.
void expectJsonFailure(const test::ProgramResult& result, ExitCode code) {
  auto json = nlohmann::json::parse(result.output, nullptr, false);
  ASSERT_TRUE(json.is_object()) << result.output;
  EXPECT_EQ(json["format"], "orxkdb-failure");
  EXPECT_EQ(json["code"], code);
  EXPECT_EQ(result.exitCode, code);
  const std::string text = json.value("text", ""), hint = json.value("hint", "");
  EXPECT_NE(hint, "");
  EXPECT_EQ(result.errors, "orxkdb: " + text + ", " + hint + "\n");
}

TEST_F(OrxKdb, RefusalsHaveACodeALineAndADocumentAndChangeNothing) {
  const std::pair<const char*, std::vector<test::Line>> databases[] = {
      {"db", test::smallFleet()},      {"other", test::smallFleet()}, {"locked", {}}, {"empty", {}},
      {"plain", {test::plainLine(1)}}, {"text.orx-new", {}}};
  for (const auto& [name, lines] : databases) test::makeDatabase(scratch_.file(name), lines);
  test::writeDamagedDatabase(scratch_.file("other.orx-previous"));
  test::writeFile(scratch_ / "lines", test::backupText(test::smallFleet()));
  ASSERT_EQ(test::runProgram(test::shellScript(scratch_, R"(set -e
mkdir -p sub blocked/PRESTORE_restore; ln -s db symbolic; ln -s nowhere dangling; ln db hard
cp db gone.orx-previous; cp db cut.orx-previous; head -c 10000 db > cut; orxkdb dump db dumped
for taken in db.orx-previous sub/PRESTORE_restore blocked/PRESTORE_restore/de.res.orx-new; do
  echo "somebody else's" > $taken
done)"))
                .exitCode,
            exitDone);
  const test::Opened holder(scratch_.file("locked"));
  const auto contents = [this] {
    std::map<std::string, std::string> all;
    for (const std::string& name : scratch_.names()) all[name] = test::readFile(scratch_ / name);
    return all;
  };
  const auto before = contents();
  for (const Refusal& row : refusals()) {
    SCOPED_TRACE(row.command);
    const std::string input(2000, 'x');
    std::vector<std::string> words = test::wordsOf(row.command);
    if (!row.command.ends_with("--json")) {
      const auto result = run(words, input);
      expectFailure(result, row.code, row.words);
      EXPECT_EQ(result.errors.find('\n'), result.errors.size() - 1) << result.errors;
      words.emplace_back("--json");
    }
    if (!row.command.empty() && !row.command.starts_with("--")) {
      expectJsonFailure(run(words, input), row.code);
    }
    EXPECT_TRUE(contents() == before);
  }
}

TEST_F(OrxKdb, CreatesADatabaseWithItsMessagesAndWritesDamagedOnesAgain) {
  std::filesystem::create_directory(scratch_.file("sub"));
  EXPECT_EQ(run({"create", "sub/db"}).output, "sub/db: empty database made, messages beside it\n");
  EXPECT_EQ(run({"dump", "sub/db"}).output, emptyDump);
  for (const BundleFile& file : bundleFiles()) {
    const std::string path = scratch_.file("sub/PRESTORE_restore/" + std::string(file.name));
    const std::string whole = test::readFile(path);
    EXPECT_EQ(whole.size(), file.bytes.size());
    for (const std::string& damaged : {whole, std::string(), whole.substr(0, 16)}) {
      test::writeFile(path, damaged);
      EXPECT_EQ(run({"messages", "sub"}).exitCode, exitDone);
      EXPECT_TRUE(test::readFile(path) == whole);
    }
  }
  EXPECT_THAT(run({"--version"}).output,
              testing::ContainsRegex("^orxkdb [0-9.]+\nLMDB .*\nICU [0-9.]+\n$"));
}

TEST_F(OrxKdb, KeepsWhatHasTheNameOfAMessageFile) {
  const std::string failure =
      "orxkdb: something else than messages has the name of a message file, " +
      scratch_.file("PRESTORE_restore/de.res") +
      ", look at it with \"ls -l ./PRESTORE_restore/de.res\" and move it away; nothing was "
      "written\n";
  for (const std::string make :
       {"ln -s ../victim $file", "ln -s nowhere $file", "mkdir $file",
        "echo these are notes of somebody else > $file", "mkfifo $file",
        "rmdir PRESTORE_restore; ln -s elsewhere PRESTORE_restore; echo notes > $file"}) {
    const auto result = test::runProgram(
        test::shellScript(scratch_,
                          "rm -rf elsewhere PRESTORE_restore; mkdir elsewhere PRESTORE_restore\n"
                          "file=PRESTORE_restore/de.res; echo kept > victim; " +
                              make + R"(
before=$(ls -lR); orxkdb messages || echo $?; orxkdb create db || echo $?; after=$(ls -lR)
[[ $before = "$after" ]] && cat victim)"));
    EXPECT_EQ(result.output, "5\n5\nkept\n") << make;
    EXPECT_EQ(result.errors, failure + failure);
  }
}

TEST_F(OrxKdb, StandardStreamsCarryDumpsAndBackups) {
  test::createDatabase(scratch_.file("db"), 3);
  const std::string dumped = run({"dump", "db"}).output;
  EXPECT_EQ(run({"dump", "db", "-"}).output, dumped);
  for (const std::string name : {"copy", "./-"}) {
    EXPECT_EQ(run({"load", name}, dumped).output, name + ": 3 records loaded\n");
  }
  EXPECT_EQ(run({"load", "--replace", "./-"}, dumped).exitCode, exitDone);
  EXPECT_EQ(run({"backup", "copy", "-"}).output.size(), 3U * 441);
  EXPECT_EQ(run({"backup", "copy", "file"}).output, "file: 3 records backed up\n");
  expectFailure(run({"load", "x", "-"}, "VERSION=3\nformat=print\n"), exitNotAsExpected,
                "orxkdb: format=print cannot be loaded, only format=bytevalue, standard input:2, "
                "make the dump again; nothing was loaded\n");
}

TEST_F(OrxKdb, OutputThatNobodyTakesIsAFailure) {
  test::createDatabase(scratch_.file("db"), 3);
  for (const auto& broken : test::brokenOutputs) {
    for (const char* command :
         {"dump db", "backup db -", "stat db", "--help", "dump --json db f"}) {
      expectFailure(run(test::wordsOf(command), "", broken), exitFailed,
                    "orxkdb: the output cannot be written, standard output (");
    }
    EXPECT_EQ(run({"dump", "db", "file"}, "", broken).exitCode, exitDone);
  }
  const std::string before = test::readFile(scratch_.file("db"));
  expectFailure(test::runProgram(test::shellScript(scratch_, "orxkdb backup db - >> db")),
                exitNotAsExpected, "standard output is the database itself");
  EXPECT_EQ(test::readFile(scratch_.file("db")), before);
}

TEST_F(OrxKdb, NamesAreTakenAsTheyAre) {
  for (const char* name : {"stat", "[a,b]", "two words", "a=b", "\xE4"}) {
    EXPECT_EQ(run({"create", name}).exitCode, exitDone) << name;
    EXPECT_EQ(run({"dump", name}).output, emptyDump);
    EXPECT_TRUE(std::filesystem::exists(scratch_.file(name)));
  }
  EXPECT_EQ(run({"create", "--", "-x"}).exitCode, exitDone);
  EXPECT_TRUE(std::filesystem::exists(scratch_.file("-x")));
  EXPECT_THAT(run({"stat", "{dir}"}).errors, HasSubstr("\"orxkdb create '{dir}'\""));
}

// As a file that somebody else has named may be called.
TEST_F(OrxKdb, NamesStayOnTheirLineAndInTheirWord) {
  const std::string name = "d\033[2J\nb\xC2\x9B$(touch made)\xC2\xA0";
  const std::string word = "$'d\\033[2J\\012b\\302\\233$(touch made)\xC2\xA0'";
  const std::string shown = "d?[2J?b??$(touch made)\xC2\xA0";
  const std::string text = name + ".txt";
  ASSERT_EQ(run({"create", name}).exitCode, exitDone);
  ASSERT_EQ(run({"sample", "--objects", "20", text}).exitCode, exitDone);
  test::createDatabase(scratch_.file(name + ".orx-previous"), 1);
  const auto undone = run({"undo", name});
  EXPECT_THAT(undone.output, testing::StartsWith(shown + ": back to its previous generation; "));
  EXPECT_THAT(undone.output, HasSubstr("\"orxkdb undo " + word + "\" takes"));
  EXPECT_THAT(run({"stat", name, "--json"}).output, HasSubstr(R"("d\u001b[2J\nb\u009b$()"));
  for (const std::string command :
       {"undo $n", "create $n", "dump $n $n.dump", "backup $n b$n", "load ${n}2 $n.dump",
        "check $n.txt", "check $n", "diff $n $n.txt", "plan $n $n.txt", "stat ${n}3",
        "explain $n 9:9", "messages $n", "$n", "explain --line $n.txt:1",
        "report $n --html $n.html"}) {
    for (const std::string json : {"", " --json"}) {
      const auto result = test::runProgram(
          test::shellScript(scratch_, "IFS=; n=" + word + "; orxkdb " + command + json));
      const std::string printed = result.output + result.errors;
      EXPECT_THAT(printed, HasSubstr(json.empty() ? "d?[2J?b??$(" : "$(touch made)")) << command;
      for (const char* const control : {"\033", "\xC2\x9B"}) {
        EXPECT_EQ(printed.find(control), std::string::npos) << command;
      }
    }
  }
}

}  // namespace
}  // namespace orx::orxkdb
