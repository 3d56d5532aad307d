// ByteSource: the bytes of a file or a stream in order, decompressed where its first bytes are
// those of a compressed format.
//
//   ByteSource source;
//   if (const int error = source.open(path)) ...
//   while ((count = source.read(buffer, size)) > 0) ...
//   if (count < 0) ... source.fault() ...
//
// One open() or openDescriptor() for an object, which is of no use after it failed.
//
// Memory is bounded whatever the input is: a buffer, and what the format's decoder keeps, see
// Decoder::mostMemory. What is read from the file counts as the progress of the run.
#pragma once

#include <sys/types.h>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <vector>

#include "platform/compression/decoder.h"
#include "platform/file.h"

namespace orx {

enum class ByteFault : std::int32_t {
  none,
  system,       // a read failed: errorNumber() is the errno value
  damaged,      // the compressed data is damaged, or something else follows it
  cut,          // it ends before it is complete
  needsMemory,  // see Decoding
};

class ByteSource {
 public:
  // 0 or an errno value, EISDIR for a directory; nothing is read yet.
  [[nodiscard]] int open(const std::string& path);
  // Reads an open descriptor, which stays the caller's, from where it stands.
  [[nodiscard]] int openDescriptor(int fd);

  // 1 to `size` bytes, `size` being at least 1; 0 at the end; -1 after a fault, which stays. What
  // came before a fault is given out first. Throws std::bad_alloc.
  [[nodiscard]] ssize_t read(char* buffer, std::size_t size);

  [[nodiscard]] ByteFault fault() const { return fault_; }
  [[nodiscard]] int errorNumber() const { return errorNumber_; }
  // `none` before the first read().
  [[nodiscard]] Compression compression() const { return compression_; }
  // How many bytes of the file, as it is stored, were taken so far.
  [[nodiscard]] std::uint64_t position() const { return position_; }

 private:
  [[nodiscard]] bool begin();
  [[nodiscard]] bool fill();
  [[nodiscard]] ssize_t readPlain(char* buffer, std::size_t size);
  [[nodiscard]] ssize_t readDecoded(std::span<std::uint8_t> out);
  [[nodiscard]] ssize_t fail(ByteFault fault);

  UniqueFd file_;
  int fd_ = -1;
  bool hasBegun_ = false;
  bool ended_ = false;  // nothing is left to read from the file
  ByteFault fault_ = ByteFault::none;
  int errorNumber_ = 0;
  std::uint64_t position_ = 0;
  Compression compression_ = Compression::none;
  std::unique_ptr<Decoder> decoder_;
  std::vector<std::uint8_t> buffer_;
  std::span<const std::uint8_t> unread_;  // of buffer_
};

}  // namespace orx
