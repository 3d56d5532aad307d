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
  Compression compression = Compression::none;
};

Outcome readAll(ByteSource& source, std::size_t pieceSize) {
  std::string bytes, piece(pieceSize, '\0');
  ssize_t count = 0;
  while ((count = source.read(piece.data(), piece.size())) > 0) {
    bytes.append(piece, 0, static_cast<std::size_t>(count));
  }
  EXPECT_EQ(count < 0, source.fault() != ByteFault::none);
  EXPECT_EQ(source.read(piece.data(), piece.size()), count) << "it stays at its end";
  EXPECT_TRUE(source.compression() != Compression::none || source.position() == bytes.size());
  return {bytes, source.fault(), source.compression()};
}

Outcome readFile(const std::string& bytes, std::size_t pieceSize = 1000) {
  const test::TempDir scratch;
  test::writeFile(scratch / "file", bytes);
  ByteSource source;
  EXPECT_EQ(source.open(scratch.file("file")), 0);
  return readAll(source, pieceSize);
}

class CompressedBytes : public testing::TestWithParam<const char*> {
 protected:
  static std::string compressed(const std::string& bytes) {
    return test::compressed(GetParam(), bytes);
  }
};

TEST_P(CompressedBytes, AreUnpackedMemberByMemberInPiecesOfAnySize) {
  const std::string zeros(3'000'000, '\0');
  std::string many;  // hardly compressible, larger than the buffers on the way
  for (std::uint32_t i = 0; i < 100'000; ++i) many += std::to_string(i * 2654435761U) + "\n";
  const std::string file =
      compressed("one") + compressed("") + compressed(many) + compressed(zeros);
  for (const std::size_t pieceSize : {std::size_t{7}, std::size_t{1} << 20}) {
    const Outcome outcome = readFile(file, pieceSize);
    EXPECT_EQ(outcome.fault, ByteFault::none);
    EXPECT_STREQ(nameOf(outcome.compression), GetParam());
    EXPECT_TRUE(outcome.bytes == "one" + many + zeros) << outcome.bytes.size();
  }
  EXPECT_EQ(readFile(compressed("")).bytes, "");
}

TEST_P(CompressedBytes, CutOrChangedAreNeverTakenForAWholeFile) {
  const std::string bytes = "the first line\nthe second line\n";
  const std::string file = compressed(bytes) + compressed(bytes);
  for (std::size_t size = compressionMarkSize; size < file.size(); ++size) {
    const bool isMember = size == file.size() / 2;
    EXPECT_EQ(readFile(file.substr(0, size)).fault, isMember ? ByteFault::none : ByteFault::cut)
        << size;
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

TEST_P(CompressedBytes, AreKnownInAStreamThatGivesItsFirstByteAlone) {
  const std::string file = compressed("content");
  std::array<int, 2> ends{};
  ASSERT_EQ(pipe(ends.data()), 0);
  (void)!write(ends[1], file.data(), 1);
  std::thread writer([&] {
    usleep(50'000);
    (void)!write(ends[1], file.data() + 1, file.size() - 1);
    (void)close(ends[1]);
  });
  ByteSource source;
  EXPECT_EQ(source.openDescriptor(ends[0]), 0);
  EXPECT_EQ(readAll(source, 100).bytes, "content");
  writer.join();
  (void)close(ends[0]);
}

INSTANTIATE_TEST_SUITE_P(Formats, CompressedBytes, testing::ValuesIn(test::compressors),
                         [](const auto& format) { return std::string(format.param); });

TEST(GzipBytes, MayEndInTheZerosOfATape) {
  const std::string zeros(600'000, '\0');
  const std::string member = test::compressed("gzip", "text");
  EXPECT_EQ(readFile(member + zeros).fault, ByteFault::none);
  EXPECT_EQ(readFile(member + zeros).bytes, "text");
  EXPECT_EQ(readFile(member + zeros + member).fault, ByteFault::damaged);
  for (const std::string& plain :
       {zeros + member, std::string("\x1F"), std::string("\xFD\x37zXY")}) {
    EXPECT_TRUE(readFile(plain).bytes == plain);
  }
}

}  // namespace
}  // namespace orx
