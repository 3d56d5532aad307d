#include "platform/compression/byte_source.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <array>
#include <thread>

#include "tests/support/compress.h"
#include "tests/support/temp_dir.h"

namespace orx {
namespace {

struct Outcome {
  std::string bytes;
  ByteFault fault = ByteFault::none;
};

Outcome readAll(ByteSource& source, std::size_t pieceSize) {
  Outcome outcome;
  std::string piece(pieceSize, '\0');
  ssize_t count = 0;
  while ((count = source.read(piece.data(), piece.size())) > 0) {
    outcome.bytes.append(piece, 0, static_cast<std::size_t>(count));
  }
  outcome.fault = source.fault();
  EXPECT_EQ(count < 0, outcome.fault != ByteFault::none);
  EXPECT_EQ(source.read(piece.data(), piece.size()), count);  // for good
  return outcome;
}

class ByteSources : public testing::TestWithParam<const char*> {
 protected:
  void SetUp() override {
    if (!test::hasCompressor(GetParam())) GTEST_SKIP() << GetParam() << " is not there";
  }

  Outcome readFile(const std::string& bytes, std::size_t pieceSize = 4096) {
    test::writeFile(scratch_ / "file", bytes);
    ByteSource source;
    EXPECT_EQ(source.open(scratch_.file("file")), 0);
    return readAll(source, pieceSize);
  }

  static std::string compressed(const std::string& bytes) {
    return test::compressed(GetParam(), bytes);
  }

  // Hardly compressible, larger than the buffers on the way.
  static std::string manyBytes() {
    std::string bytes;
    for (std::uint32_t i = 0; i < 100'000; ++i) bytes += std::to_string(i * 2654435761U) + "\n";
    return bytes;
  }

  test::TempDir scratch_;
};

TEST_P(ByteSources, GiveWhatWasCompressedMemberByMember) {
  const std::string zeros(3'000'000, '\0');
  const std::string many = manyBytes();
  const std::string file =
      compressed("one") + compressed("") + compressed(many) + compressed(zeros);
  for (const std::size_t pieceSize : {std::size_t{7}, std::size_t{1} << 20}) {
    const Outcome outcome = readFile(file, pieceSize);
    EXPECT_EQ(outcome.fault, ByteFault::none);
    EXPECT_TRUE(outcome.bytes == "one" + many + zeros) << outcome.bytes.size();
  }
  EXPECT_EQ(readFile(compressed("")).bytes, "");
  EXPECT_STREQ(nameOf(compressionOfFile(scratch_.file("file"))), GetParam());
}

TEST_P(ByteSources, NeverTakeACutOrChangedFileForAWholeOne) {
  const std::string bytes = "the first line\nthe second line\n";
  const std::string file = compressed(bytes) + compressed(bytes);
  const std::size_t member = file.size() / 2;
  EXPECT_EQ(readFile(file + "more than nothing").fault, ByteFault::damaged);
  for (std::size_t size = compressionMarkSize; size < file.size(); ++size) {
    if (size == member) continue;
    EXPECT_EQ(readFile(file.substr(0, size)).fault, ByteFault::cut) << size;
  }
  for (std::size_t at = 0; at < file.size() * 8; ++at) {
    std::string changed = file;
    changed[at / 8] = static_cast<char>(changed[at / 8] ^ (1 << at % 8));
    if (compressionOf(changed) == Compression::none) continue;
    const Outcome outcome = readFile(changed);
    // A time or a name in a header is no content.
    EXPECT_TRUE(outcome.fault != ByteFault::none || outcome.bytes == bytes + bytes) << at;
  }
}

TEST_P(ByteSources, KnowTheFormatOfAStreamThatComesByteByByte) {
  const std::string file = compressed("content");
  std::array<int, 2> ends{};
  ASSERT_EQ(pipe(ends.data()), 0);
  std::thread writer([&] {
    for (const char byte : file) {
      (void)!write(ends[1], &byte, 1);
      if (&byte - file.data() < 8) usleep(1000);
    }
    (void)close(ends[1]);
  });
  ByteSource source;
  EXPECT_EQ(source.openDescriptor(ends[0]), 0);
  EXPECT_EQ(readAll(source, 100).bytes, "content");
  EXPECT_STREQ(nameOf(source.compression()), GetParam());
  writer.join();
  (void)close(ends[0]);
}

INSTANTIATE_TEST_SUITE_P(Formats, ByteSources, testing::ValuesIn(test::compressors),
                         [](const auto& format) { return std::string(format.param); });

TEST(GzipBytes, MayEndInTheZerosOfATape) {
  const test::TempDir scratch;
  const std::string zeros(600'000, '\0');
  const std::string member = test::compressed("gzip", "text");
  for (const auto& [bytes, fault] : {std::pair(member + zeros, ByteFault::none),
                                     {member + zeros + member, ByteFault::damaged},
                                     {zeros + member, ByteFault::none}}) {
    test::writeFile(scratch / "file", bytes);
    ByteSource source;
    ASSERT_EQ(source.open(scratch.file("file")), 0);
    const Outcome outcome = readAll(source, 1000);
    EXPECT_EQ(outcome.fault, fault);
    EXPECT_EQ(outcome.bytes, bytes.front() == '\0' ? bytes : "text");
  }
}

TEST(PlainBytes, ComeAsTheyAre) {
  const test::TempDir scratch;
  const std::string large(700'000, 'x');
  for (const std::string& bytes : {std::string(), std::string("\x1F"),
                                   std::string("\xFD"
                                               "7zXY"),
                                   std::string("<1;1;0;0"), large}) {
    test::writeFile(scratch / "file", bytes);
    ByteSource source;
    ASSERT_EQ(source.open(scratch.file("file")), 0);
    EXPECT_EQ(readAll(source, 1000).bytes, bytes);
    EXPECT_EQ(source.compression(), Compression::none);
    EXPECT_EQ(source.position(), bytes.size());
  }
  ByteSource source;
  EXPECT_EQ(source.open(scratch.path().string()), EISDIR);
  EXPECT_EQ(source.open(scratch.file("none")), ENOENT);
}

}  // namespace
}  // namespace orx
