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

class Damage {
 public:
  // Every position gets one command, or all of them when there is time.
  void handOver(const std::string& bytes, std::size_t position, bool toAll) {
    const std::size_t count = readingCommands() + changes;
    for (std::size_t i = 0; i < (toAll ? count : 1); ++i) {
      (void)std::fprintf(stderr, "\r%zu ", position);  // shown when the process ends here
      handOver(bytes, toAll ? i : next_++ % count);
    }
  }

  [[nodiscard]] const std::string& sound() const { return sound_; }

 private:
  void handOver(const std::string& bytes, std::size_t command) {
    scratch_.empty();
    writeFile(place_.database, bytes);
    writeFile(place_.sound, sound_);
    writeFile(place_.backup, backup_);
    if (command < readingCommands()) {
      (void)readDatabase(place_, command, Wording::text);
    } else {
      (void)changeDatabase(place_, static_cast<Change>(command - readingCommands()), bytes);
    }
  }

  Scratch scratch_;
  Workplace place_{scratch_};
  std::string sound_ = soundDatabase(scratch_);
  std::string backup_ = soundBackup(2);
  std::size_t next_ = 0;
};

[[noreturn]] void flipEveryByte() {
  constexpr std::array<char, 4> flips{'\xFF', '\x01', '\x80', '\x10'};
  constexpr std::size_t pageSize = 4096, headSize = 48;  // with the offsets of the records
  Damage damage;
  const std::size_t step = stepOr(199);
  std::size_t turn = 0;
  for (std::size_t at = 0; at < damage.sound().size(); at += at % pageSize < headSize ? 1 : step) {
    std::string bytes = damage.sound();
    bytes[at] = static_cast<char>(bytes[at] ^ flips[turn++ % flips.size()]);
    damage.handOver(bytes, at, step == 1);
  }
  std::exit(0);
}

[[noreturn]] void cutEverywhere() {
  Damage damage;
  const std::size_t step = stepOr(397);
  for (std::size_t length = 0; length < damage.sound().size(); length += step) {
    damage.handOver(damage.sound().substr(0, length), length, step == 1);
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
