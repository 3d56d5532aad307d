#include "platform/compression/compression.h"

#include <fcntl.h>

#include <array>

#include "platform/file.h"

namespace orx {

namespace {

using namespace std::string_view_literals;

struct Mark {
  Compression compression;
  std::string_view bytes;
};

constexpr std::array marks{Mark{Compression::gzip, "\x1F\x8B"sv},
                           Mark{Compression::zstd, "\x28\xB5\x2F\xFD"sv},
                           Mark{Compression::xz,
                                "\xFD"
                                "7zXZ\0"sv}};

// Parallel compressors begin with such a frame: 50 to 5F 2A 4D 18.
bool isSkippableFrame(std::string_view bytes) {
  return bytes.size() >= 4 && (bytes[0] & 0xF0) == 0x50 && bytes.substr(1, 3) == "\x2A\x4D\x18"sv;
}

}  // namespace

Compression compressionOf(std::string_view firstBytes) {
  for (const Mark& mark : marks) {
    if (firstBytes.starts_with(mark.bytes)) return mark.compression;
  }
  return isSkippableFrame(firstBytes) ? Compression::zstd : Compression::none;
}

Compression compressionOfFile(const std::string& path) {
  struct stat status {};
  if (::stat(path.c_str(), &status) != 0 || !S_ISREG(status.st_mode)) return Compression::none;
  const UniqueFd file = openFile(path, O_RDONLY | O_NONBLOCK | O_NOCTTY);
  if (!file.valid()) return Compression::none;
  std::array<std::uint8_t, compressionMarkSize> bytes{};
  const ssize_t count = readAt(file.get(), bytes.data(), bytes.size(), 0);
  if (count <= 0) return Compression::none;
  const auto* const text = static_cast<const char*>(static_cast<const void*>(bytes.data()));
  return compressionOf({text, static_cast<std::size_t>(count)});
}

const char* nameOf(Compression compression) {
  switch (compression) {
    case Compression::gzip:
      return "gzip";
    case Compression::zstd:
      return "zstd";
    case Compression::xz:
      return "xz";
    case Compression::none:
      break;
  }
  return "";
}

}  // namespace orx
