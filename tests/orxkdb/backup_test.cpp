// Backups of databases, and what dump and backup refuse to overwrite.
#include <gmock/gmock.h>

#include "orxkdb/cmd_backup.h"
#include "orxkdb/cmd_dump.h"
#include "tests/support/program_runs.h"
#include "tests/support/sample_text.h"
#include "tests/support/small_fleet.h"

namespace orx::orxkdb {
namespace {

using test::createDatabase;
using test::readFile;
using testing::ElementsAre;
using testing::HasSubstr;

class Backup : public testing::Test {
 protected:
  // The subcommands tell what they did.
  void SetUp() override { testing::internal::CaptureStdout(); }
  void TearDown() override { (void)testing::internal::GetCapturedStdout(); }

  Result backupTo(const std::string& file, bool crlf = false) {
    return backup({.database = database_, .file = file, .crlf = crlf});
  }
  Result dumpTo(const std::string& file) { return dump({.database = database_, .file = file}); }

  test::TempDir scratch_;
  std::string database_ = scratch_.file("db");
  std::string file_ = scratch_.file("backup");
};

TEST_F(Backup, RestoredBackupGivesTheSameBackup) {
  test::writeFile(file_, test::sampleText({.objects = 600}, SampleOrder::random));
  createDatabase(database_);
  ASSERT_EQ(test::runIn(scratch_, "orxrestore", {"-i", "backup", "-o", "db"}).exitCode, 0);
  std::string lines, crLfLines;
  for (const auto& line : test::splitLines(test::sampleText({.objects = 600}, SampleOrder::key))) {
    lines += line + "\n";
    crLfLines += line + "\r\n";
  }
  ASSERT_EQ(backupTo(file_).text, "");
  EXPECT_TRUE(readFile(file_) == lines);
  ASSERT_EQ(backupTo(file_, true).text, "");
  EXPECT_TRUE(readFile(file_) == crLfLines);
}

TEST_F(Backup, RecordThatALineCannotCarryIsNamedAndNothingIsWritten) {
  const struct {
    std::function<void(DataBuffer&)> change;
    const char* recn;
    const char* problem;
  } cases[] = {
      {[](DataBuffer& record) { record.setRecn(100000000); }, "100000000", "the record number"},
      {[](DataBuffer& record) { record.setRecType(-10000000); }, "7", "the record type"},
      {[](DataBuffer& record) { record.setAuxValue2(100000000); }, "7", "the second auxiliary"},
      {[](DataBuffer& record) { record.setAttrText("a\nb"); }, "7", "a line feed"},
  };
  for (const auto& row : cases) {
    SCOPED_TRACE(row.problem);
    DataBuffer record;
    record.setObjectHandle(CMConfigHandle(handle_type::resource, 9));
    record.setRecn(7);
    row.change(record);
    test::makeDatabase(database_, std::vector{record});
    test::writeFile(file_, "before");
    const Result result = backupTo(file_);
    EXPECT_EQ(result.code, exitNotAsExpected);
    EXPECT_THAT(result.text, HasSubstr(row.problem));
    EXPECT_THAT(result.text,
                HasSubstr(database_ + " parent <1;1;0;0;0;0;0;> object <1;1;4;0;0;0;9;> recn " +
                          row.recn + ","));
    EXPECT_EQ(readFile(file_), "before");
    EXPECT_THAT(scratch_.names(), ElementsAre("backup", "db"));
    std::filesystem::remove(database_);
  }
}

TEST_F(Backup, NoOutputReplacesADatabase) {
  createDatabase(database_, 3);
  createDatabase(scratch_.file("other"), 2);
  createDatabase(scratch_.file("text.orx-new"), 1);
  std::filesystem::create_symlink("db", scratch_.file("symbolic"));
  std::filesystem::create_hard_link(database_, scratch_.file("hard"));
  const std::string before = readFile(database_);
  for (const char* name :
       {"db", "symbolic", "hard", "other", "text", "x.orx-previous", "x.orx-old"}) {
    const Result dumped = dumpTo(scratch_.file(name));
    const Result backedUp = backupTo(scratch_.file(name));
    EXPECT_EQ(dumped.code, exitNotAsExpected) << name;
    EXPECT_EQ(backedUp.code, exitNotAsExpected) << name;
    EXPECT_EQ(dumped.text, backedUp.text);
    EXPECT_THAT(dumped.text, HasSubstr("give another name for the output"));
  }
  EXPECT_EQ(readFile(database_), before);
  EXPECT_EQ(test::objects(scratch_.file("other")).size(), 2U);
  EXPECT_EQ(test::objects(scratch_.file("text.orx-new")).size(), 1U);
  EXPECT_TRUE(std::filesystem::is_symlink(scratch_.file("symbolic")));
}

TEST_F(Backup, OutputThatCannotBeMadeIsNotOpened) {
  createDatabase(database_, 1);
  for (const std::string& name :
       {scratch_.file("no/such"), scratch_.file(""), std::string("/dev/null")}) {
    EXPECT_EQ(backupTo(name).code, exitNotOpened) << name;
    EXPECT_EQ(dumpTo(name).code, exitNotOpened) << name;
  }
}

TEST_F(Backup, DamageOnTheWayLeavesNoOutput) {
  createDatabase(database_, 500);
  std::string bytes = readFile(database_);
  bytes.replace(bytes.size() / 4096 / 2 * 4096, 4096, std::string(4096, '\xFF'));
  test::writeFile(database_, bytes);
  for (const Result& result : {backupTo(file_), dumpTo(file_)}) {
    EXPECT_EQ(result.code, exitNotAsExpected);
    EXPECT_THAT(result.text, testing::StartsWith("the database is damaged, " + database_ +
                                                 " behind its record "));
    EXPECT_THAT(result.text, HasSubstr("(8 SystemError, 17 Format)"));
  }
  EXPECT_THAT(scratch_.names(), ElementsAre("db"));
}

}  // namespace
}  // namespace orx::orxkdb
