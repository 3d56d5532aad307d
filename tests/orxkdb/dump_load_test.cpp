// Dumps and backups of databases, and loading dumps: round trips, and everything that is refused.
#include <gmock/gmock.h>

#include "orxkdb/cmd_backup.h"
#include "orxkdb/cmd_dump.h"
#include "orxkdb/cmd_load.h"
#include "orxkdb/dump/dump_format.h"
#include "tests/support/program_runs.h"
#include "tests/support/sample_text.h"
#include "tests/support/small_fleet.h"

namespace orx::orxkdb {
namespace {

using test::createDatabase, test::makeRecord, test::Opened, test::readFile;
using testing::ElementsAre, testing::HasSubstr;
using Lines = std::vector<std::string>;

std::string join(const Lines& lines, const std::string& lineEnd = "\n") {
  std::string text;
  for (const std::string& line : lines) text += line + lineEnd;
  return text;
}

// The lines of a record, filled with `fill`: object `object`, `recn` in both byte orders.
Lines entry(const std::string& object, const std::string& bigEndian,
            const std::string& littleEndian, const std::string& fill) {
  const std::string handles = std::string(16, '0') + object + std::string(8, '0');
  std::string record = " " + handles + littleEndian;
  for (int i = 0; i < 276; ++i) record += fill;
  return {" " + handles + bigEndian, record};
}

// Objects 1 (recn 0) and 2 (recn 0x0102), as makeRecord makes them.
Lines validDump() {
  const Lines first = entry("00000001", "00000000", "00000000", "01");
  const Lines second = entry("00000002", "00000102", "02010000", "ab");
  return {"VERSION=3", "format=bytevalue", "type=btree", "HEADER=END", first[0],
          first[1],    second[0],          second[1],    "DATA=END"};
}

class DumpLoad : public testing::Test {
 protected:
  // The subcommands tell what they did.
  void SetUp() override { testing::internal::CaptureStdout(); }
  void TearDown() override { (void)testing::internal::GetCapturedStdout(); }

  Result loadText(const std::string& text, bool replace = false) {
    test::writeFile(file_, text);
    return load({.database = database_, .file = file_, .replace = replace});
  }
  std::string dumped() {
    EXPECT_EQ(dumpTo(scratch_.file("again")).text, "");
    return readFile(scratch_ / "again");
  }
  Result dumpTo(const std::string& file) { return dump({.database = database_, .file = file}); }
  Result backupTo(const std::string& file, bool crlf = false) {
    return backup({.database = database_, .file = file, .crlf = crlf});
  }

  test::TempDir scratch_;
  std::string database_ = scratch_.file("db");
  std::string file_ = scratch_.file("file");
};

TEST_F(DumpLoad, WritesKeysBigEndianInDatabaseOrder) {
  {
    const Opened database(database_, kdb::openAsNew);
    ASSERT_EQ(database.add(makeRecord(2, 0x102, 0xAB)), "0/0");
    ASSERT_EQ(database.add(makeRecord(1)), "0/0");
    ASSERT_EQ(database.close(), "0/0");
  }
  EXPECT_EQ(dumped(), join(validDump()));
}

TEST_F(DumpLoad, TakesWhatTheToolsOfTheEnginesWrite) {
  const std::string expected = join(validDump());
  Lines upperCase = validDump();
  for (char& c : upperCase[7]) c = static_cast<char>(std::toupper(c));
  Lines longHeader = validDump();
  longHeader.insert(longHeader.begin() + 3, {"duplicates=0", "dupsort=0", "mapsize=9", "keys=1"});
  const std::string noLineEnd = expected.substr(0, expected.size() - 1);
  createDatabase(database_);
  for (const std::string& text :
       {join(upperCase), join(longHeader), join(validDump(), "\r\n"), noLineEnd}) {
    EXPECT_EQ(loadText(text, true).text, "");
    EXPECT_EQ(dumped(), expected);
  }
}

const Lines first = entry("00000001", "00000000", "00000000", "01");
const Lines lower = entry("00000000", "ffffffff", "ffffffff", "01");

// Of a valid dump, `count` lines from the number `line` on are replaced by `text`.
const struct {
  const char* what;
  std::ptrdiff_t line, count;
  std::string text;
  const char *place, *told;
} rejects[] = {
    {"nothing", 1, 9, "", ":1", "the dump is empty"},
    {"another version", 1, 1, "VERSION=2", ":1", "only dumps of VERSION=3 can be loaded"},
    {"no dump in long lines", 1, 1, std::string(5000, 'x'), ":1", "this is no dump"},
    {"unknown format", 2, 1, "format=x", ":2", "the format is not bytevalue"},
    {"hash", 3, 1, "type=hash", ":3", "the type is not btree"},
    {"repeated keys", 4, 0, "duplicates=1", ":4", "repeated keys"},
    {"no keys", 4, 0, "keys=0", ":4", "the dump holds no keys"},
    {"header line", 4, 0, "db_pagesize", ":4", "not of the form NAME=VALUE"},
    {"no format", 2, 1, "x=y", ":4", "no line format=bytevalue"},
    {"no type", 3, 1, "x=y", ":4", "no line type=btree"},
    {"cut in the header", 4, 6, "", ":4", "the dump ends in its header"},
    {"cut behind the header", 5, 5, "", ":5", "the dump ends without DATA=END"},
    {"cut behind a key", 8, 2, "", ":8", "the dump ends behind a key"},
    {"cut behind a record", 9, 1, "", ":9", "the dump ends without DATA=END"},
    {"key alone", 8, 1, "", ":8", "no record for"},
    {"no blank", 5, 1, first[0].substr(1), ":5", "does not begin with a blank"},
    {"short key", 5, 1, first[0].substr(0, 39), ":5", "a key has 40 hexadecimal digits"},
    {"short record", 8, 1, first[1].substr(0, 591), ":8", "a record has 592"},
    {"long record", 6, 1, first[1] + "00", ":6", "this one has 594"},
    {"endless line", 6, 1, first[1] + std::string(3 << 20, '0'), ":6", "longer than the 593"},
    {"no digit", 6, 1, first[1].substr(0, 592) + "g", ":6", "column 593 of a record line"},
    {"zero byte", 5, 1, first[0].substr(0, 40) + '\0', ":5", "column 41 of a key line"},
    {"recn little-endian in the key", 7, 1, entry("00000002", "02010000", "", "")[0], ":8",
     "does not begin with the key"},
    {"repeated", 7, 2, first[0] + "\n" + first[1], ":8", "the key is there a second time"},
    {"descending", 7, 2, lower[0] + "\n" + lower[1], ":8", "the keys do not ascend"},
    {"something behind", 10, 0, "VERSION=3", ":10", "something behind DATA=END"},
};

// Nor into a database that is there to be replaced.
TEST_F(DumpLoad, FaultsAreNamedByLineAndLoadNothing) {
  const std::string there = scratch_.file("there");
  createDatabase(there, 5);
  const std::string before = readFile(there);
  for (const auto& reject : rejects) {
    SCOPED_TRACE(reject.what);
    Lines lines = validDump();
    const auto at = lines.erase(lines.begin() + reject.line - 1,
                                lines.begin() + reject.line - 1 + reject.count);
    if (!reject.text.empty()) lines.insert(at, reject.text);
    const Result result = loadText(join(lines));
    EXPECT_EQ(result.code, exitNotAsExpected);
    EXPECT_THAT(result.text, HasSubstr(", " + file_ + reject.place + ", "));
    EXPECT_THAT(result.text, HasSubstr(reject.told));
    EXPECT_THAT(result.text, testing::EndsWith("nothing was loaded"));
    EXPECT_EQ(load({.database = there, .file = file_, .replace = true}).text, result.text);
    EXPECT_THAT(scratch_.names(), ElementsAre("file", "there"));
  }
  EXPECT_EQ(readFile(there), before);
}

TEST_F(DumpLoad, ReplacesAllRecordsAndKeepsThePreviousGeneration) {
  createDatabase(database_, 5);
  ASSERT_EQ(loadText(join(validDump()), true).text, "");
  EXPECT_THAT(test::objects(database_), ElementsAre(1, 2));
  EXPECT_THAT(test::objects(database_ + ".orx-previous"), ElementsAre(1, 2, 3, 4, 5));
  Lines empty = validDump();
  empty.erase(empty.begin() + 4, empty.begin() + 8);
  ASSERT_EQ(loadText(join(empty), true).text, "");
  EXPECT_THAT(test::objects(database_), ElementsAre());
}

// More than one input buffer.
TEST_F(DumpLoad, RestoredBackupGivesTheSameBackupAndALoadedDumpTheSameDump) {
  test::writeFile(file_, test::sampleText({.objects = 3000}, SampleOrder::random));
  createDatabase(database_);
  ASSERT_EQ(test::runIn(scratch_, "orxrestore", {"-i", "file", "-o", "db"}).exitCode, 0);
  const Lines lines = test::splitLines(test::sampleText({.objects = 3000}, SampleOrder::key));
  for (const bool crlf : {false, true}) {
    ASSERT_EQ(backupTo(file_, crlf).text, "");
    EXPECT_TRUE(readFile(file_) == join(lines, crlf ? "\r\n" : "\n"));
  }
  const std::string first = dumped();
  ASSERT_EQ(loadText(first, true).text, "");
  EXPECT_TRUE(dumped() == first);
}

TEST_F(DumpLoad, ARecordThatALineCannotCarryIsNamedAndNoBackupIsWritten) {
  DataBuffer record;
  record.setObjectHandle(CMConfigHandle(handle_type::resource, 9));
  record.setRecn(100000000);
  test::makeDatabase(database_, std::vector{record});
  test::writeFile(file_, "before");
  const Result result = backupTo(file_);
  EXPECT_EQ(result.code, exitNotAsExpected);
  EXPECT_THAT(result.text, HasSubstr("the record number"));
  EXPECT_THAT(result.text, HasSubstr("<1;1;4;0;0;0;9;> recn 100000000,"));
  EXPECT_EQ(readFile(file_), "before");
  EXPECT_THAT(scratch_.names(), ElementsAre("db", "file"));
}

TEST_F(DumpLoad, DamageOnTheWayLeavesNoOutput) {
  (void)test::writeDamagedDatabase(database_);
  for (const Result& result : {backupTo(file_), dumpTo(file_)}) {
    EXPECT_EQ(result.code, exitNotAsExpected);
    EXPECT_THAT(result.text, testing::StartsWith("the database is damaged, " + database_ +
                                                 " behind its record "));
  }
  EXPECT_THAT(scratch_.names(), ElementsAre("db"));
}

}  // namespace
}  // namespace orx::orxkdb
