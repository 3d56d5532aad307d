// Backups of databases, and what dump and backup refuse to overwrite.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <string>

#include "orxkdb/cmd_backup.h"
#include "orxkdb/cmd_dump.h"
#include "orxkdb/sample_writer.h"
#include "records/data_buffer.h"
#include "tests/support/kdb_records.h"
#include "tests/support/places.h"
#include "tests/support/run_program.h"

namespace orx::orxkdb {
namespace {

using test::createDatabase;
using test::Opened;
using testing::Contains;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

std::string sample(SampleOrder order) {
  std::string text;
  EXPECT_TRUE(writeSample({.objects = 600}, order, [&](std::string_view piece) {
    text += piece;
    return true;
  }));
  return text;
}

class Backup : public testing::Test {
 protected:
  // The subcommands tell what they did.
  void SetUp() override { testing::internal::CaptureStdout(); }
  void TearDown() override { (void)testing::internal::GetCapturedStdout(); }

  Result backupTo(const std::string& file, bool crlf = false) {
    return backup({.database = database_, .file = file, .crlf = crlf});
  }

  test::TempDir scratch_;
  std::string database_ = scratch_.file("db");
  std::string file_ = scratch_.file("backup");
};

TEST_F(Backup, RestoredBackupGivesTheSameBackup) {
  test::writeFile(file_, sample(SampleOrder::random));
  createDatabase(database_);
  const auto restored = test::runProgram({.file = test::builtProgram("orxrestore"),
                                          .arguments = {"-i", "backup", "-o", "db"},
                                          .directory = std::filesystem::path(file_).parent_path()});
  ASSERT_EQ(restored.exitCode, 0) << restored.errors;
  ASSERT_EQ(backupTo(file_).text, "");
  const std::string expected = sample(SampleOrder::key);
  EXPECT_TRUE(test::readFile(file_) == expected);

  ASSERT_EQ(backupTo(file_, true).text, "");
  std::string crlf = test::readFile(file_);
  EXPECT_EQ(crlf.size(), expected.size() / 441 * 442);
  for (std::size_t at = 440; at < crlf.size(); at += 441) {
    ASSERT_EQ(crlf.substr(at, 2), "\r\n");
    crlf.erase(at, 1);
  }
  EXPECT_TRUE(crlf == expected);
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
    {
      const Opened database(database_, kdb::openAsNew);
      ASSERT_EQ(kdb::AddRecord(database.handle, record.data(), 20, record.data(), 296), 0);
      ASSERT_EQ(database.close(), "0/0");
    }
    test::writeFile(file_, "before");
    const Result result = backupTo(file_);
    EXPECT_EQ(result.code, exitNotAsExpected);
    EXPECT_THAT(result.text, HasSubstr(row.problem));
    EXPECT_THAT(result.text, HasSubstr(database_ +
                                       " parent <1;1;0;0;0;0;0;> object "
                                       "<1;1;4;0;0;0;9;> recn " +
                                       row.recn + ","));
    EXPECT_EQ(test::readFile(file_), "before");
    EXPECT_THAT(scratch_.names(), testing::ElementsAre("backup", "db"));
    std::filesystem::remove(database_);
  }
}

TEST_F(Backup, NoOutputReplacesADatabase) {
  createDatabase(database_, 3);
  createDatabase(scratch_.file("other"), 2);
  createDatabase(scratch_.file("text.orx-new"), 1);
  std::filesystem::create_symlink("db", scratch_.file("symbolic"));
  std::filesystem::create_hard_link(database_, scratch_.file("hard"));
  const std::string before = test::readFile(database_);
  for (const char* name : {"db", "symbolic", "hard", "other", "text", "x.orx-previous"}) {
    SCOPED_TRACE(name);
    const Result dumped = dump({.database = database_, .file = scratch_.file(name)});
    const Result backedUp = backupTo(scratch_.file(name));
    EXPECT_EQ(dumped.code, exitNotAsExpected);
    EXPECT_EQ(backedUp.code, exitNotAsExpected);
    EXPECT_EQ(dumped.text, backedUp.text);
    EXPECT_THAT(dumped.text, HasSubstr("give another name for the output"));
  }
  EXPECT_EQ(test::readFile(database_), before);
  EXPECT_EQ(test::objects(scratch_.file("other")).size(), 2U);
  EXPECT_EQ(test::objects(scratch_.file("text.orx-new")).size(), 1U);
  EXPECT_TRUE(std::filesystem::is_symlink(scratch_.file("symbolic")));
}

TEST_F(Backup, OutputThatCannotBeMadeIsNotOpened) {
  createDatabase(database_, 1);
  for (const std::string& name :
       {scratch_.file("no/such"), scratch_.file(""), std::string("/dev/null")}) {
    SCOPED_TRACE(name);
    EXPECT_EQ(backupTo(name).code, exitNotOpened);
    EXPECT_EQ(dump({.database = database_, .file = name}).code, exitNotOpened);
  }
}

TEST_F(Backup, DamageOnTheWayLeavesNoOutput) {
  createDatabase(database_, 500);
  std::string bytes = test::readFile(database_);
  const std::size_t middle = bytes.size() / 4096 / 2 * 4096;
  bytes.replace(middle, 4096, std::string(4096, '\xFF'));
  test::writeFile(database_, bytes);
  for (const Result& result : {backupTo(file_), dump({.database = database_, .file = file_})}) {
    EXPECT_EQ(result.code, exitNotAsExpected);
    EXPECT_THAT(result.text, StartsWith("this is no database, or it is damaged, " + database_ +
                                        " behind its record "));
    EXPECT_THAT(result.text, HasSubstr("(8 SystemError, 17 Format)"));
  }
  EXPECT_THAT(scratch_.names(), testing::ElementsAre("db"));
}

}  // namespace
}  // namespace orx::orxkdb
