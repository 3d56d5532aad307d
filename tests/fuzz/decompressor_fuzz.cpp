// Compressed bytes of every format: the same comes out however it is asked for, or a fault.
#include <algorithm>
#include <string>

#include "platform/compression/byte_source.h"
#include "tests/fuzz/fuzz_target.h"

namespace orx::fuzz {
namespace {

constexpr std::size_t mostBytes = std::size_t{1} << 20;

struct Unpacked {
  std::string bytes;
  ByteFault fault = ByteFault::none;
};

Unpacked unpack(const MemoryFile& file, std::size_t pieceSize) {
  ByteSource source;
  require(source.open(file.path()) == 0, "a file in memory can be opened");
  Unpacked unpacked;
  std::string piece(pieceSize, '\0');
  ssize_t count = 0;
  while (unpacked.bytes.size() < mostBytes) {
    count = source.read(piece.data(), piece.size());
    if (count <= 0) break;
    unpacked.bytes.append(piece, 0, static_cast<std::size_t>(count));
  }
  unpacked.fault = source.fault();
  require((count < 0) == (unpacked.fault != ByteFault::none), "a failed read has a fault");
  if (count < 0) require(source.read(piece.data(), 1) == -1, "a fault stays");
  return unpacked;
}

const Registration target("decompressor", [](Input& input) {
  const std::size_t pieceSize = 1 + std::size_t{input.byte()};
  const std::string_view packed = input.rest();
  const MemoryFile file(packed);
  const Unpacked whole = unpack(file, std::size_t{64} << 10);
  const Unpacked pieces = unpack(file, pieceSize);
  const std::size_t common = std::min(whole.bytes.size(), pieces.bytes.size());
  require(whole.bytes.compare(0, common, pieces.bytes, 0, common) == 0,
          "the bytes do not depend on how they are asked for");
  if (std::max(whole.bytes.size(), pieces.bytes.size()) >= mostBytes) return;
  require((whole.fault == ByteFault::none) == (pieces.fault == ByteFault::none),
          "neither does whether there is a fault");
  if (whole.fault == ByteFault::none) {
    require(whole.bytes == pieces.bytes, "neither does their number");
  }
  if (compressionOf(packed) == Compression::none) {
    require(whole.bytes == packed, "plain bytes stay as they are");
  }
});

}  // namespace
}  // namespace orx::fuzz
