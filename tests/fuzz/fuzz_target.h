// What every fuzz target includes: a reader that takes an input apart, claims, and files in memory.
//
// A target is one source, NAME_fuzz.cpp, that registers itself. With libFuzzer each is a program of
// its own; in the other builds all are in one program and found by their names.
#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "platform/file.h"

namespace orx::fuzz {

// Ends the process as a crash does, with `claim` on standard error, unless it holds.
void require(bool holds, std::string_view claim);

// Takes pieces off the front of an input; behind its end everything is zero or empty.
class Input {
 public:
  explicit Input(std::string_view bytes) : rest_(bytes) {}

  [[nodiscard]] bool isEmpty() const { return rest_.empty(); }
  [[nodiscard]] std::uint8_t byte();
  [[nodiscard]] std::uint32_t number();  // 4 bytes
  // At most `size` bytes.
  [[nodiscard]] std::string_view take(std::size_t size);
  // The bytes before the next `mark`, which is taken too; all of them without one.
  [[nodiscard]] std::string_view upTo(char mark);
  [[nodiscard]] std::string_view rest() { return take(rest_.size()); }

 private:
  std::string_view rest_;
};

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

// Takes any input. A claim that does not hold ends the process.
using Target = void (*)(Input& input);

// The targets of this program, by name.
[[nodiscard]] std::map<std::string, Target>& targets();

struct Registration {
  Registration(const char* name, Target target) { targets()[name] = target; }
};

// Hands each file over to the target, with the file's name on standard error.
void replay(Target target, const std::vector<std::string>& files);

}  // namespace orx::fuzz
