#include "platform/compression/byte_source.h"

#include <fcntl.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <string_view>

#include "platform/run_progress.h"

namespace orx {

namespace {

constexpr std::size_t bufferSize = std::size_t{256} * 1024;

ByteFault faultOf(Decoding decoding) {
  if (decoding == Decoding::needsMemory) return ByteFault::needsMemory;
  return decoding == Decoding::damaged ? ByteFault::damaged : ByteFault::none;
}

std::string_view textOf(std::span<const std::uint8_t> bytes) {
  return {static_cast<const char*>(static_cast<const void*>(bytes.data())), bytes.size()};
}

}  // namespace

int ByteSource::open(const std::string& path) {
  file_ = openFile(path, O_RDONLY);
  return file_.valid() ? openDescriptor(file_.get()) : errno;
}

int ByteSource::openDescriptor(int fd) {
  fd_ = fd;
  buffer_.resize(bufferSize);
  runProgress().startFile();
  struct stat status {};
  if (::fstat(fd, &status) != 0) return errno;
  return S_ISDIR(status.st_mode) ? EISDIR : 0;
}

ssize_t ByteSource::read(char* buffer, std::size_t size) {
  if (fault_ != ByteFault::none) return -1;
  if (!hasBegun_ && !begin()) return -1;
  if (decoder_ == nullptr) return readPlain(buffer, size);
  return readDecoded({static_cast<std::uint8_t*>(static_cast<void*>(buffer)), size});
}

// A stream may give its first bytes one by one.
bool ByteSource::begin() {
  hasBegun_ = true;
  while (!ended_ && unread_.size() < compressionMarkSize) {
    if (!fill()) return false;
  }
  compression_ = compressionOf(textOf(unread_));
  decoder_ = makeDecoder(compression_);
  return true;
}

// Reads behind what is unread.
bool ByteSource::fill() {
  std::copy(unread_.begin(), unread_.end(), buffer_.begin());
  char* const free = static_cast<char*>(static_cast<void*>(buffer_.data())) + unread_.size();
  const ssize_t count = readSome(fd_, free, buffer_.size() - unread_.size());
  if (count < 0) {
    errorNumber_ = errno;
    (void)fail(ByteFault::system);
    return false;
  }
  ended_ = count == 0;
  unread_ = {buffer_.data(), unread_.size() + static_cast<std::size_t>(count)};
  position_ += static_cast<std::uint64_t>(count);
  runProgress().countBytes(static_cast<std::uint64_t>(count));
  return true;
}

// Behind the first bytes, straight into the caller's memory.
ssize_t ByteSource::readPlain(char* buffer, std::size_t size) {
  if (!unread_.empty()) {
    const std::size_t count = std::min(size, unread_.size());
    std::memcpy(buffer, unread_.data(), count);
    unread_ = unread_.subspan(count);
    return static_cast<ssize_t>(count);
  }
  if (ended_) return 0;
  const ssize_t count = readSome(fd_, buffer, size);
  if (count < 0) {
    errorNumber_ = errno;
    return fail(ByteFault::system);
  }
  ended_ = count == 0;
  position_ += static_cast<std::uint64_t>(count);
  runProgress().countBytes(static_cast<std::uint64_t>(count));
  return count;
}

ssize_t ByteSource::readDecoded(std::span<std::uint8_t> out) {
  const std::size_t size = out.size();
  while (true) {
    if (unread_.empty() && !ended_ && !fill()) return -1;
    const std::size_t before = unread_.size();
    const Decoding decoding = decoder_->decode(unread_, ended_, out);
    fault_ = faultOf(decoding);
    if (out.size() < size) return static_cast<ssize_t>(size - out.size());
    if (fault_ != ByteFault::none) return -1;
    if (!ended_ || unread_.size() < before) continue;
    return decoding == Decoding::complete ? 0 : fail(ByteFault::cut);
  }
}

ssize_t ByteSource::fail(ByteFault fault) {
  fault_ = fault;
  return -1;
}

}  // namespace orx
