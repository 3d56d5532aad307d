// The files that fuzz targets work on, and what the code under test writes on standard output.
#pragma once

#include <string>
#include <string_view>

#include "platform/file.h"

namespace orx::fuzz {

// A directory below TMPDIR (or /tmp) that is removed at the end.
class Scratch {
 public:
  Scratch();
  Scratch(const Scratch&) = delete;
  Scratch& operator=(const Scratch&) = delete;
  ~Scratch();

  [[nodiscard]] std::string file(std::string_view name) const {
    return path_ + "/" + std::string(name);
  }
  // Removes whatever is in it.
  void empty() const;

 private:
  std::string path_;
};

void writeFile(const std::string& file, std::string_view bytes);
// Empty for a missing file.
[[nodiscard]] std::string readFile(const std::string& file);
[[nodiscard]] bool exists(const std::string& file);

// Bytes as a file without a name: its path lives as long as the object.
class MemoryFile {
 public:
  explicit MemoryFile(std::string_view bytes);
  [[nodiscard]] int fd() const { return fd_.get(); }
  [[nodiscard]] std::string path() const;

 private:
  UniqueFd fd_;
};

// Standard output goes to memory as long as one exists.
class CapturedOutput {
 public:
  CapturedOutput();
  CapturedOutput(const CapturedOutput&) = delete;
  CapturedOutput& operator=(const CapturedOutput&) = delete;
  ~CapturedOutput();

  // Everything that was written so far.
  [[nodiscard]] std::string text() const;

 private:
  UniqueFd before_;
  MemoryFile taken_{""};
};

}  // namespace orx::fuzz
