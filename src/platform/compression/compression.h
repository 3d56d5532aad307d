// The compressed formats that are read, known by their first bytes and never by a file's name.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace orx {

enum class Compression : std::int32_t { none, gzip, zstd, xz };

// As many first bytes of a file as tell its format, fewer only of a shorter file.
inline constexpr std::size_t compressionMarkSize = 6;

[[nodiscard]] Compression compressionOf(std::string_view firstBytes);

// Of the regular file that `path` leads to; `none` when it cannot be read, and for anything else: a
// pipe is not even opened, its writer would notice.
[[nodiscard]] Compression compressionOfFile(const std::string& path);

// "gzip"; empty for none.
[[nodiscard]] const char* nameOf(Compression compression);

}  // namespace orx
