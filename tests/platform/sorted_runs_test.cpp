#include "platform/kdb/sorted_runs.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <map>
#include <random>

#include "tests/support/kdb_records.h"

namespace orx::kdb {
namespace {

// Runs of 10 records, so that they are merged on several levels while others stand beside them.
TEST(SortedRuns, MergeOnAllLevelsAndFindRepeatedKeys) {
  const test::TempDir scratch;
  std::unique_ptr<SortedRuns> runs;
  ASSERT_EQ(SortedRuns::create(scratch.path().string(), runs, 10), 0);
  std::map<std::uint32_t, std::uint8_t> expected;
  std::mt19937 random(3);
  for (int i = 0; i < 60'000; ++i) {
    const auto object = static_cast<std::uint32_t>(random()) % 200'000;
    const auto fill = static_cast<std::uint8_t>(random());
    const test::Record record = test::makeRecord(object, 0, fill);
    const Outcome outcome = runs->add(Key::ofRecord(record.data()), record.data());
    ASSERT_EQ(outcome, expected.emplace(object, fill).second ? succeeded : duplicateKey) << i;
  }
  ASSERT_EQ(runs->startReading(), succeeded);
  Key key;
  const std::uint8_t* bytes = nullptr;
  for (const auto& [object, fill] : expected) {
    ASSERT_EQ(runs->next(key, bytes), succeeded);
    const test::Record wanted = test::makeRecord(object, 0, fill);
    ASSERT_TRUE(key == Key::ofRecord(wanted.data()) &&
                std::equal(wanted.begin(), wanted.end(), bytes));
  }
  EXPECT_EQ(runs->next(key, bytes), endOfData);
}

// As after a failure elsewhere: whoever gets the file must not close it under the writing thread.
TEST(SortedRuns, TheFileIsGivenAwayWhenNobodyWritesToItAnyMore) {
  constexpr std::size_t count = 5000;
  const test::TempDir scratch;
  std::unique_ptr<SortedRuns> runs;
  ASSERT_EQ(SortedRuns::create(scratch.path().string(), runs, count), 0);
  for (std::uint32_t object = count; object > 0; --object) {
    const test::Record record = test::makeRecord(object, 0, 1);
    ASSERT_EQ(runs->add(Key::ofRecord(record.data()), record.data()), succeeded);
  }
  const UniqueFd file = runs->takeFile();
  struct stat written {};
  ASSERT_EQ(::fstat(file.get(), &written), 0);
  EXPECT_EQ(written.st_size, static_cast<off_t>(count * entrySize));
}

}  // namespace
}  // namespace orx::kdb
