#include <gtest/gtest.h>

#include <map>
#include <nlohmann/json.hpp>
#include <string>

#include "orxkdb/cmd_stat.h"
#include "records/data_buffer.h"
#include "tests/support/kdb_records.h"

namespace orx::orxkdb {
namespace {

void addChain(const test::Opened& database, std::uint32_t parent, std::uint32_t object,
              std::uint32_t records, std::int32_t recType) {
  for (std::uint32_t recn = 0; recn < records; ++recn) {
    DataBuffer record;
    record.setParentHandle(CMConfigHandle(handle_type::managedSystem, parent));
    record.setObjectHandle(CMConfigHandle(handle_type::resource, object));
    record.setRecn(recn);
    record.setRecType(recType);
    record.setAttrText(recn + 1 < records ? std::string(256, 'x') : "abc");
    ASSERT_EQ(kdb::AddRecord(database.handle, record.data(), 20, record.data(), 296), 0);
  }
}

TEST(Stat, CountsRecordsObjectsAndChains) {
  const test::TempDir scratch;
  const std::string name = scratch.file(
      "d\xFF"
      "b");  // no UTF-8
  {
    const test::Opened database(name, kdb::openAsNew);
    addChain(database, 1, 1, 1, 4);
    addChain(database, 1, 2, 300, 4);
    addChain(database, 2, 2, 2, -8);  // the same object handle below another parent
    addChain(database, 2, 3, 1, 9);
    ASSERT_EQ(database.close(), "0/0");
  }
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

  testing::internal::CaptureStdout();
  EXPECT_EQ(stat({.database = name, .json = true}).text, "");
  const auto json = nlohmann::json::parse(testing::internal::GetCapturedStdout());
  EXPECT_EQ(json["version"], 1);
  EXPECT_EQ(json["records"], 304);
  EXPECT_EQ(json["longestChain"], 300);
  EXPECT_EQ(json["recordTypes"][0], nlohmann::json({{"recType", -8}, {"records", 2}}));
}

}  // namespace
}  // namespace orx::orxkdb
