#include "restore/chain_writer.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tests/support/kdb_records.h"
#include "tests/support/temp_dir.h"

namespace orx {
namespace {

using test::Opened;
using testing::ElementsAre;

// "PARENT/OBJECT/NUMBER:SIZE" for each record, with the handles' first bytes.
std::string describe(const DataBuffer& record) {
  return std::to_string(record.parentBytes()[0]) + "/" + std::to_string(record.objectBytes()[0]) +
         "/" + std::to_string(record.recn()) + ":" + std::to_string(record.text().size());
}

std::vector<std::string> describeAll(const Opened& database) {
  std::vector<std::string> found;
  DataBuffer record;
  std::int32_t length = 0;
  const kdb::kdbHandle cursor = database.cursor();
  while (kdb::ReadNextFromCursor(cursor, 0, record.data(), 296, length) == 0) {
    found.push_back(describe(record));
  }
  return found;
}

DataBuffer recordOf(std::uint8_t object, std::uint32_t recn, std::int32_t auxValue2 = 0) {
  DataBuffer record;
  record.setObjectHandle(CMConfigHandle(HandleBytes{object}));
  record.setRecn(recn);
  record.setAuxValue2(auxValue2);
  record.setAttrText("old");
  return record;
}

class ChainWriterTest : public testing::Test {
 protected:
  void store(std::initializer_list<DataBuffer> records) {
    for (const DataBuffer& record : records) {
      ASSERT_EQ(kdb::AddRecord(database_.handle, record.data(), 20, record.data(), 296), 0);
    }
  }

  test::TempDir directory_;
  Opened database_{directory_.file("db"), kdb::openAsNew};
};

TEST_F(ChainWriterTest, TheLastRecordAlwaysHasRoomForAZero) {
  const struct {
    std::size_t size;
    std::vector<std::size_t> texts;
  } cases[] = {{1, {1}}, {255, {255}}, {256, {256, 0}}, {301, {256, 45}}, {512, {256, 256, 0}}};
  for (const auto& expected : cases) {
    const std::string text(expected.size, 'x');
    std::vector<std::size_t> sizes;
    for (std::size_t i = 0; i < chainLength(text); ++i) {
      sizes.push_back(chainRecord(recordOf(1, 9), text, i).text().size());
    }
    EXPECT_EQ(sizes, expected.texts) << expected.size;
  }
}

TEST_F(ChainWriterTest, GrowsAndShrinksOnlyItsOwnChain) {
  store({recordOf(1, 0), recordOf(2, 0), recordOf(2, 1), recordOf(2, 2), recordOf(2, 700),
         recordOf(3, 0), recordOf(3, 5)});
  EXPECT_EQ(
      rewriteChain(database_.handle, recordOf(2, 0), std::string(300, 'n'), ChainRecords::all), 0);
  EXPECT_EQ(
      rewriteChain(database_.handle, recordOf(1, 0), std::string(256, 'n'), ChainRecords::all), 0);
  EXPECT_THAT(describeAll(database_),
              ElementsAre("0/1/0:256", "0/1/1:0", "0/2/0:256", "0/2/1:44", "0/3/0:3", "0/3/5:3"));
}

TEST_F(ChainWriterTest, LeavesRecordsThatShareTheHandlesOfTheSystemRecord) {
  store({recordOf(0, 0), recordOf(0, 1), recordOf(0, 2, 7), recordOf(0, 3), recordOf(0, 0xFFFFFFFF),
         recordOf(1, 0)});
  EXPECT_EQ(rewriteChain(database_.handle, recordOf(0, 0), "new", ChainRecords::withoutAuxValue2),
            0);
  EXPECT_THAT(describeAll(database_), ElementsAre("0/0/0:3", "0/0/2:3", "0/1/0:3"));
}

}  // namespace
}  // namespace orx
