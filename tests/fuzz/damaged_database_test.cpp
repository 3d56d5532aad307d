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

// Every position gets one command for each damage, or all of them when there is time.
[[noreturn]] void damageEverywhere() {
  constexpr std::array<char, 4> flips{'\xFF', '\x01', '\x80', '\x10'};
  constexpr std::size_t pageSize = 4096, headSize = 48;  // with the offsets of the records
  const Workplace place;
  const std::size_t step = stepOr(199);
  std::size_t turn = 0, command = 0;
  for (std::size_t at = 0; at < place.soundBytes.size();
       at += at % pageSize < headSize ? 1 : step) {
    std::string flipped = place.soundBytes;
    flipped[at] = static_cast<char>(flipped[at] ^ flips[turn++ % flips.size()]);
    for (const std::string& bytes : {flipped, place.soundBytes.substr(0, at)}) {
      for (std::size_t i = 0; i < (step == 1 ? databaseCommands() : 1); ++i) {
        (void)std::fprintf(stderr, "\r%zu ", at);  // shown when the process ends here
        handOver(place, bytes, command++, Wording::text);
      }
    }
  }
  std::exit(0);
}

TEST(DamagedDatabase, EveryFlippedByteAndEveryCutGivesACode) {
  EXPECT_EXIT(damageEverywhere(), testing::ExitedWithCode(0), "");
}

}  // namespace
}  // namespace orx::fuzz
