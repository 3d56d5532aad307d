#include "tests/fuzz/fuzz_target.h"

#include <cstdio>
#include <cstdlib>

#include "platform/bytes.h"

namespace orx::fuzz {

void require(bool holds, std::string_view claim) {
  if (holds) return;
  (void)std::fprintf(stderr, "does not hold: %.*s\n", static_cast<int>(claim.size()), claim.data());
  std::abort();
}

std::uint8_t Input::byte() {
  const std::string_view taken = take(1);
  return taken.empty() ? std::uint8_t{0} : static_cast<std::uint8_t>(taken.front());
}

std::uint32_t Input::number() {
  std::uint8_t bytes[4];
  for (std::uint8_t& next : bytes) next = byte();
  return loadLE32(bytes);
}

std::string_view Input::take(std::size_t size) {
  const std::string_view taken = rest_.substr(0, size);
  rest_.remove_prefix(taken.size());
  return taken;
}

std::string_view Input::upTo(char mark) {
  const std::string_view taken = take(rest_.find(mark));
  (void)take(1);
  return taken;
}

std::map<std::string, EntryPoint>& targets() {
  static std::map<std::string, EntryPoint> all;
  return all;
}

}  // namespace orx::fuzz
