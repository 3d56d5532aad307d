// What every fuzz target includes: its entry point, a reader that takes an input apart, and claims.
//
// A target is one source, NAME_fuzz.cpp. libFuzzer calls its entry point with inputs that it makes
// up; in the other builds all targets are in one program and found by their names, which the build
// gives them (ORX_FUZZ_NAME).
#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <string>
#include <string_view>

// Takes any bytes and returns 0. A claim that does not hold ends the process.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace orx::fuzz {

using EntryPoint = int (*)(const std::uint8_t* data, std::size_t size);

// Ends the process as a crash does, with `claim` on standard error, unless it holds.
void require(bool holds, std::string_view claim);

// Takes pieces off the front of an input; behind its end everything is zero or empty.
class Input {
 public:
  Input(const std::uint8_t* data, std::size_t size)
      : rest_(static_cast<const char*>(static_cast<const void*>(data)), size) {}

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

// The targets of this program, by name.
[[nodiscard]] std::map<std::string, EntryPoint>& targets();

struct Registration {
  Registration(const char* name, EntryPoint entryPoint) { targets()[name] = entryPoint; }
};

}  // namespace orx::fuzz

#ifdef ORX_FUZZ_NAME
static const orx::fuzz::Registration orxFuzzRegistration(ORX_FUZZ_NAME, LLVMFuzzerTestOneInput);
#endif
