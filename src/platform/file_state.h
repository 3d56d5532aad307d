// What a regular file shows of itself when somebody writes to it: two states that differ are a file
// that was changed, or another file.
#pragma once

#include <sys/stat.h>

#include <cstdint>
#include <optional>
#include <string>

namespace orx {

struct FileState {
  dev_t device = 0;
  ino_t number = 0;  // of the file on its device
  off_t size = 0;
  std::int64_t seconds = 0;  // of the last modification
  std::int64_t nanoseconds = 0;

  friend bool operator==(const FileState&, const FileState&) = default;
};

// Of an open file, or of the one that `path` leads to. None for what is no regular file, or cannot
// be looked at: of that nothing is known.
[[nodiscard]] std::optional<FileState> stateOf(int descriptor);
[[nodiscard]] std::optional<FileState> stateOf(const std::string& path);

}  // namespace orx
