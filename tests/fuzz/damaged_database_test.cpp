// A small database with every byte flipped, and cut at every length, one at a time, handed to the
// commands: a code, never a signal, and what is not published changes nothing.
//
// As a test it takes a sample, and of every page the head; the environment variable
// ORX_DAMAGE_STEP=1 takes all.
#include <gtest/gtest.h>

#include <array>
#include <cstdio>
#include <cstdlib>

#include "tests/fuzz/commands.h"

namespace orx::fuzz {
namespace {

std::size_t stepOr(std::size_t usual) {
  const char* step = std::getenv("ORX_DAMAGE_STEP");
  return step == nullptr ? usual : std::max(1UL, std::strtoul(step, nullptr, 10));
}

// Every position gets one command, or all of them when there is time.
void damage(const Workplace& place, const std::string& bytes, std::size_t position, bool toAll) {
  static std::size_t turn = 0;
  for (std::size_t i = 0; i < (toAll ? databaseCommands() : 1); ++i) {
    (void)std::fprintf(stderr, "\r%zu ", position);  // shown when the process ends here
    handOver(place, bytes, turn++, Wording::text);
  }
}

[[noreturn]] void flipEveryByte() {
  constexpr std::array<char, 4> flips{'\xFF', '\x01', '\x80', '\x10'};
  constexpr std::size_t pageSize = 4096, headSize = 48;  // with the offsets of the records
  const Workplace place;
  const std::size_t step = stepOr(199);
  std::size_t turn = 0;
  for (std::size_t at = 0; at < place.soundBytes.size();
       at += at % pageSize < headSize ? 1 : step) {
    std::string bytes = place.soundBytes;
    bytes[at] = static_cast<char>(bytes[at] ^ flips[turn++ % flips.size()]);
    damage(place, bytes, at, step == 1);
  }
  std::exit(0);
}

[[noreturn]] void cutEverywhere() {
  const Workplace place;
  const std::size_t step = stepOr(397);
  for (std::size_t length = 0; length < place.soundBytes.size(); length += step) {
    damage(place, place.soundBytes.substr(0, length), length, step == 1);
  }
  std::exit(0);
}

TEST(DamagedDatabase, EveryFlippedByteGivesACode) {
  EXPECT_EXIT(flipEveryByte(), testing::ExitedWithCode(0), "");
}

TEST(DamagedDatabase, EveryCutGivesACode) {
  EXPECT_EXIT(cutEverywhere(), testing::ExitedWithCode(0), "");
}

}  // namespace
}  // namespace orx::fuzz
