// What a sample holds, and what stat counts.
#include <set>

#include "orxkdb/cmd_stat.h"
#include "tests/restore/merge_records.h"
#include "tests/support/program_runs.h"
#include "tests/support/sample_text.h"

namespace orx::orxkdb {
namespace {

using test::operator+;

std::vector<std::string> linesOf(std::uint32_t objects, std::uint64_t seed, SampleOrder order) {
  return test::splitLines(test::sampleText({objects, seed}, order));
}

// What its lines hold is for the check of a sample to say.
TEST(Sample, IsTheSameForTheSameSeedAndInEitherOrder) {
  const auto lines = linesOf(3000, 5, SampleOrder::key);
  EXPECT_NE(lines, linesOf(3000, 6, SampleOrder::key));
  const auto shuffled = linesOf(3000, 5, SampleOrder::random);
  EXPECT_NE(lines, shuffled);
  EXPECT_EQ(shuffled, linesOf(3000, 5, SampleOrder::random));
  EXPECT_EQ(std::multiset(lines.begin(), lines.end()),
            std::multiset(shuffled.begin(), shuffled.end()));
}

TEST(Stat, CountsRecordsObjectsAndChains) {
  const test::TempDir scratch;
  const std::string name = scratch.file("db\xFF");  // no UTF-8
  // The third has the object handle of the second below another parent.
  const auto chain = [](std::size_t records, int parent, std::uint32_t object, int recType) {
    return test::chain(
        {.parent = test::handle(parent, 1), .object = test::handle(4, object), .recType = recType},
        std::string((records - 1) * 256, 'x') + "abc");
  };
  test::makeDatabase(
      name, chain(1, 2, 1, 4) + chain(300, 2, 2, 4) + chain(2, 3, 2, -8) + chain(1, 3, 3, 9));
  const std::string json =
      test::printed([&] { EXPECT_EQ(stat({.database = name, .json = true}).text, ""); });
  const auto bytes = std::to_string(std::filesystem::file_size(name));
  test::expectJson(json, (R"({"/fileBytes": )" + bytes + R"(, "/records": 304, "/objects": 4,
      "/chains": 2, "/longestChain": 300, "/textBytes": 76812, "/recordTypes": [
      {"recType": -8, "records": 2}, {"recType": 4, "records": 301}, {"recType": 9, "records": 1}]})")
                             .c_str());
}

}  // namespace
}  // namespace orx::orxkdb
