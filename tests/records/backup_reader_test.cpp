#include "records/backup_reader.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <random>
#include <thread>

#include "records/backup_record.h"
#include "tests/support/temp_dir.h"

namespace orx {
namespace {

using Area = std::array<char, 445>;

// The line rules in their plainest form.
std::vector<Area> plainRead(const std::string& path) {
  std::vector<Area> lines;
  std::FILE* file = std::fopen(path.c_str(), "rb");
  while (true) {
    Area line{};
    (void)!std::fgets(line.data(), static_cast<int>(line.size()), file);
    std::size_t length = std::strlen(line.data());
    if (length == 0) break;
    if (line[length - 1] == '\n') {
      line[--length] = '\0';
      if (length > 0 && line[length - 1] == '\r') line[--length] = '\0';
    }
    lines.push_back(line);
  }
  (void)std::fclose(file);
  return lines;
}

class BackupReaderTest : public testing::Test {
 protected:
  std::string fileWith(const std::string& content) {
    test::writeFile(directory_ / "backup", content);
    return directory_.file("backup");
  }

  std::vector<Area> readLines(const std::string& path) {
    std::vector<Area> lines;
    EXPECT_TRUE(reader_.open(path.c_str()));
    while (reader_.next(line_) == ReadOutcome::line) lines.push_back(line_.chars);
    EXPECT_EQ(reader_.next(line_), ReadOutcome::end);
    EXPECT_EQ(reader_.errorNumber(), 0);
    return lines;
  }

  void expectSameAsPlain(const std::string& content) {
    const std::string path = fileWith(content);
    const std::vector<Area> expected = plainRead(path);
    ASSERT_EQ(readLines(path), expected);
    ASSERT_TRUE(reader_.open(path.c_str()));
    for (const Area& line : expected) {
      ASSERT_EQ(reader_.next(record_), ReadOutcome::line);
      ASSERT_EQ(record_.text(), std::string_view(line.data(), 440));
    }
    ASSERT_EQ(reader_.next(record_), ReadOutcome::end);
  }

  test::TempDir directory_;
  BackupReader reader_;
  BackupLine line_;
  CMDatabaseBackupRecord record_;
};

TEST_F(BackupReaderTest, FollowsTheLineRules) {
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
  };
  for (const std::string& content : contents) {
    SCOPED_TRACE(testing::PrintToString(content));
    expectSameAsPlain(content);
  }
}

TEST_F(BackupReaderTest, ReadsRandomInputLikeThePlainRules) {
  std::mt19937 random(444);
  for (int round = 0; round < 60; ++round) {
    std::string content;
    const std::size_t target = round % 20 == 0 ? 700000 : random() % 5000;
    while (content.size() < target) {
      content.append(random() % (random() % 4 == 0 ? 950 : 446), 'x');
      if (random() % 40 == 0 && !content.empty()) content[random() % content.size()] = '\r';
      if (random() % 40 == 0 && !content.empty()) content.back() = '\0';
      content.append(random() % 3, '\r').append(random() % 2, '\n');
      if (!content.empty() && content.back() == '\n') content += 'y';
    }
    ASSERT_NO_FATAL_FAILURE(expectSameAsPlain(content)) << round;
  }
}

TEST_F(BackupReaderTest, CountsLinesOfTheFile) {
  EXPECT_EQ(reader_.next(line_), ReadOutcome::end);
  ASSERT_TRUE(reader_.open(fileWith("a\n" + std::string(1000, 'x') + "\nb").c_str()));
  EXPECT_EQ(reader_.lineNumber(), 0u);
  for (const std::uint64_t expected : {1u, 2u, 2u, 2u, 3u, 3u}) {
    (void)reader_.next(line_);
    EXPECT_EQ(reader_.lineNumber(), expected);
  }
  EXPECT_EQ(line_.text(), "b");  // the end changes nothing
}

TEST_F(BackupReaderTest, ReadsAPipeThatDeliversInPieces) {
  const std::string path = directory_.file("fifo");
  ASSERT_EQ(mkfifo(path.c_str(), 0600), 0);
  const std::string content = std::string(440, 'a') + "\r\n" + std::string(440, 'b') + "\nc";
  std::thread writer([&] {
    std::ofstream pipe(path);
    for (std::size_t i = 0; i < content.size(); i += 73)
      pipe << content.substr(i, 73) << std::flush;
  });
  const std::vector<Area> lines = readLines(path);
  writer.join();
  EXPECT_EQ(lines, plainRead(fileWith(content)));
}

TEST_F(BackupReaderTest, TellsWhatCannotBeOpened) {
  EXPECT_FALSE(reader_.open("/nonexistent/backup"));
  EXPECT_EQ(reader_.errorNumber(), ENOENT);
  EXPECT_FALSE(reader_.open(directory_.path().c_str()));
  EXPECT_EQ(reader_.errorNumber(), EISDIR);
  EXPECT_EQ(reader_.next(line_), ReadOutcome::end);
  EXPECT_TRUE(reader_.open(fileWith("a").c_str()));
  EXPECT_EQ(reader_.errorNumber(), 0);
}

TEST_F(BackupReaderTest, TellsAReadErrorFromTheEnd) {
  // Address 0 of a process is never mapped: opening its memory works, reading there does not.
  ASSERT_TRUE(reader_.open("/proc/self/mem"));
  EXPECT_EQ(reader_.next(record_), ReadOutcome::error);
  EXPECT_EQ(reader_.next(record_), ReadOutcome::error);
  EXPECT_EQ(reader_.errorNumber(), EIO);
  EXPECT_EQ(record_.text(), std::string(440, ' '));
}

}  // namespace
}  // namespace orx
