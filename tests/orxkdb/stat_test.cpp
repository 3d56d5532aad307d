#include "orxkdb/cmd_stat.h"

#include "orxkdb/stat/database_statistics.h"
#include "tests/restore/merge_records.h"
#include "tests/support/program_runs.h"
#include "tests/support/small_fleet.h"

namespace orx::orxkdb {
namespace {

using test::operator+;

std::vector<DataBuffer> chainOf(std::size_t records, std::uint32_t parent, std::uint32_t object,
                                std::int32_t recType) {
  return test::chain(
      {.parent = test::handle(2, parent), .object = test::handle(4, object), .recType = recType},
      std::string((records - 1) * 256, 'x') + "abc");
}

TEST(Stat, CountsRecordsObjectsAndChains) {
  const test::TempDir scratch;
  const std::string name = scratch.file("db\xFF");  // no UTF-8
  // The third has the object handle of the second below another parent.
  test::makeDatabase(name, chainOf(1, 1, 1, 4) + chainOf(300, 1, 2, 4) + chainOf(2, 2, 2, -8) +
                               chainOf(1, 2, 3, 9));
  DatabaseStatistics statistics;
  ASSERT_EQ(gatherStatistics(name, statistics).text, "");
  EXPECT_EQ(statistics.records, 304U);
  EXPECT_EQ(statistics.objects, 4U);
  EXPECT_EQ(statistics.chains, 2U);
  EXPECT_EQ(statistics.longestChain, 300U);
  EXPECT_EQ(statistics.textBytes, 300U * 256 + 4 * 3);
  EXPECT_EQ(statistics.fileBytes, std::filesystem::file_size(name));
  const std::map<std::int32_t, std::uint64_t> types{{-8, 2}, {4, 301}, {9, 1}};
  EXPECT_EQ(statistics.recordsOfType, types);
  test::expectJson(
      test::printed([&] { EXPECT_EQ(stat({.database = name, .json = true}).text, ""); }),
      R"({"/version": 1, "/records": 304, "/longestChain": 300,
          "/recordTypes/0": {"recType": -8, "records": 2}})");
}

}  // namespace
}  // namespace orx::orxkdb
