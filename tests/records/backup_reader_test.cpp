#include "records/backup_reader.h"

#include <gtest/gtest.h>

#include "records/backup_record.h"
#include "tests/support/backup_lines.h"
#include "tests/support/temp_dir.h"

namespace orx {
namespace {

class BackupReaderTest : public testing::Test {
 protected:
  std::string fileWith(const std::string& content) {
    test::writeFile(directory_ / "backup", content);
    return directory_.file("backup");
  }

  void expectSameAsPlain(const std::string& content) {
    const std::string path = fileWith(content);
    const auto expected = test::plainLines(path);
    std::vector<std::string> lines;
    ASSERT_TRUE(reader_.open(path.c_str()));
    while (reader_.next(line_) == ReadOutcome::line) {
      lines.emplace_back(line_.chars.begin(), line_.chars.end());
    }
    EXPECT_EQ(reader_.next(line_), ReadOutcome::end);
    EXPECT_EQ(reader_.errorNumber(), 0);
    ASSERT_EQ(lines, expected);
    ASSERT_TRUE(reader_.open(path.c_str()));
    for (const std::string& line : expected) {
      ASSERT_EQ(reader_.next(record_), ReadOutcome::line);
      ASSERT_EQ(record_.text(), line.substr(0, 440));
    }
    ASSERT_EQ(reader_.next(record_), ReadOutcome::end);
  }

  test::TempDir directory_;
  BackupReader reader_;
  BackupLine line_;
  CMDatabaseBackupRecord record_;
};

TEST_F(BackupReaderTest, FollowsTheLineRules) {
  const char* const ends[] = {"\n", "\r\n", "\r\r\n", "\r"};
  std::string large;  // than the reader's buffer, with all kinds of ends anywhere in it
  for (std::size_t i = 0; large.size() < 700'000; ++i) {
    large.append(1 + i * 7 % 950, 'x').append(ends[i % 4]);
  }
  const std::string contents[] = {
      "",
      "\n",
      "a\n\nb\r\n\r\nc\r",
      "a\r\r\nb",
      std::string("a\0b\r\nc\n", 8),  // a line end behind a zero byte stays
      std::string("a\n\0b\nc\n", 7),  // a zero byte at the start ends the input
      std::string(443, 'x') + "\ny\n",
      std::string(444, 'x') + "\ny\n",  // the line feed alone is a piece of its own
      std::string(442, 'x') + "\r\ny",
      std::string(443, 'x') + "\r\ny",
      std::string(1500, 'x'),
      large};
  for (const std::string& content : contents) {
    SCOPED_TRACE(testing::PrintToString(content.substr(0, 1500)));
    expectSameAsPlain(content);
  }
}

}  // namespace
}  // namespace orx
