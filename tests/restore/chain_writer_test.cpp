#include "restore/chain_writer.h"

#include <gmock/gmock.h>

#include "tests/restore/merge_records.h"

namespace orx {
namespace {

using test::Opened, testing::ElementsAre;

DataBuffer recordOf(std::uint8_t object, std::uint32_t recn, std::int32_t auxValue2 = 0) {
  return test::build({.object = CMConfigHandle(HandleBytes{object}),
                      .recn = recn,
                      .text = "old",
                      .auxValue2 = auxValue2});
}

class ChainWriterTest : public testing::Test {
 protected:
  void store(std::initializer_list<DataBuffer> records) {
    for (const DataBuffer& record : records) {
      ASSERT_EQ(kdb::AddRecord(database_.handle, record.data(), 20, record.data(), 296), 0);
    }
  }

  void rewrite(std::uint8_t object, std::size_t size, ChainRecords records = ChainRecords::all) {
    const std::string text(size, 'n');
    EXPECT_EQ(rewriteChain(database_.handle, recordOf(object, 0), text, records), 0);
  }

  // "OBJECT/NUMBER:SIZE" for each record, with the handle's first byte.
  std::vector<std::string> stored() const {
    std::vector<std::string> found;
    for (const DataBuffer& record : test::recordsOf(database_)) {
      found.push_back(std::to_string(record.objectBytes()[0]) + "/" +
                      std::to_string(record.recn()) + ":" + std::to_string(record.text().size()));
    }
    return found;
  }

  test::TempDir directory_;
  Opened database_{directory_.file("db"), kdb::openAsNew};
};

// The last record always has room for a zero.
TEST_F(ChainWriterTest, GrowsAndShrinksOnlyItsOwnChain) {
  store({recordOf(1, 0), recordOf(2, 0), recordOf(2, 1), recordOf(2, 2), recordOf(2, 700),
         recordOf(3, 0), recordOf(3, 5), recordOf(4, 1)});
  rewrite(2, 300);
  rewrite(1, 512);
  rewrite(4, 255);
  EXPECT_THAT(stored(), ElementsAre("1/0:256", "1/1:256", "1/2:0", "2/0:256", "2/1:44", "3/0:3",
                                    "3/5:3", "4/0:255"));
}

TEST_F(ChainWriterTest, LeavesRecordsThatShareTheHandlesOfTheSystemRecord) {
  store({recordOf(0, 0), recordOf(0, 1), recordOf(0, 2, 7), recordOf(0, 3), recordOf(0, 0xFFFFFFFF),
         recordOf(1, 0)});
  rewrite(0, 4, ChainRecords::withoutAuxValue2);
  EXPECT_THAT(stored(), ElementsAre("0/0:4", "0/2:3", "1/0:3"));
}

}  // namespace
}  // namespace orx
