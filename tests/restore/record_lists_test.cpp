#include "restore/record_lists.h"

#include <gmock/gmock.h>

#include "restore/verbose_lists.h"
#include "tests/restore/merge_records.h"

namespace orx {
namespace {

// A record of an object whose first handle byte is `object`.
DataBuffer recordOf(std::uint8_t object, std::uint32_t recn, const std::string& text) {
  return test::build({.object = CMConfigHandle(HandleBytes{object}), .recn = recn, .text = text});
}

const std::string full(256, 'f');

class RecordListsTest : public testing::Test {
 protected:
  std::string gather(int expected = 1) {
    object_.attributeText.clear();
    EXPECT_EQ(myGetNextAndDestroy(lists_[0], object_), expected);
    return object_.attributeText;
  }

  RecordLists lists_;
  BigDataRecord object_;
};

TEST_F(RecordListsTest, NumbersAreUnsignedModulo32) {
  for (const std::uint32_t number : {0U, 31U, 32U, 0x80000001U, 0xFFFFFFFFU}) {
    lists_.append(number, recordOf(1, 0, ""));
  }
  EXPECT_EQ(lists_[0].entries(), 2U);
  EXPECT_EQ(lists_[1].entries(), 1U);
  EXPECT_EQ(lists_[31].entries(), 2U);
}

TEST_F(RecordListsTest, SortsByHandleBytesThenByNumberAndKeepsEqualKeysInOrder) {
  DataBuffer child = recordOf(1, 0, "has a parent");
  child.setParentHandle(CMConfigHandle(HandleBytes{1}));
  for (const DataBuffer& record :
       {recordOf(0x80, 0, "high byte"), recordOf(2, 256, "256"), recordOf(2, 0x80000000, "2^31"),
        recordOf(2, 1, "first 1"), recordOf(2, 1, "second 1"), recordOf(2, 255, "255"),
        recordOf(2, 0, "0"), child}) {
    lists_.append(0, record);
  }
  sortLists(lists_);
  std::string texts;
  for (std::size_t i = 0; i < lists_[0].entries(); ++i) {
    texts.append(lists_[0].at(i).data.text()) += ", ";
  }
  EXPECT_EQ(texts, "0, first 1, second 1, 255, 256, 2^31, high byte, has a parent, ");
}

TEST_F(RecordListsTest, GathersAHeadWithWhatFollowsUpToTheNextHead) {
  for (const DataBuffer& record :
       {recordOf(1, 7, "headless"), recordOf(2, 0, full), recordOf(2, 1, "b"),
        recordOf(3, 2, "another handle"), recordOf(4, 0, "last")}) {
    lists_.append(0, record);
  }
  EXPECT_EQ(gather(), "headless");
  EXPECT_EQ(object_.data.recn(), 7U);
  EXPECT_EQ(gather(), full + "banother handle");
  EXPECT_EQ(object_.data, recordOf(2, 0, full));
  EXPECT_EQ(lists_[0].entries(), 1U);
  EXPECT_EQ(gather(), "last");
  EXPECT_EQ(gather(0), "");
  EXPECT_EQ(object_.data, recordOf(4, 0, "last"));
}

TEST_F(RecordListsTest, VerboseTellsOfListsAndRecords) {
  VerboseLists<RecordListObserver> verbose;
  RecordLists lists(verbose);
  lists.append(31, recordOf(1, 0xFFFFFFFF, full));
  testing::internal::CaptureStdout();
  sortLists(lists);
  ASSERT_EQ(myGetNextAndDestroy(lists[31], object_), 1);
  EXPECT_EQ(testing::internal::GetCapturedStdout(),
            test::listLines({"31"}) + "next in list: data.recn=-1, attribute: '" + full + "'\n");
}

}  // namespace
}  // namespace orx
