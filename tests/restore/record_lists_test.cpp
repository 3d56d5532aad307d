#include "restore/record_lists.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "restore/restore_settings.h"

namespace orx {
namespace {

using testing::ElementsAre;
using testing::internal::CaptureStdout;
using testing::internal::GetCapturedStdout;

// A record of an object whose first handle byte is `object`.
DataBuffer recordOf(std::uint8_t object, std::uint32_t recn, const std::string& text) {
  DataBuffer record;
  record.setObjectHandle(CMConfigHandle(HandleBytes{object}));
  record.setRecn(recn);
  record.setAttrText(text);
  return record;
}

std::vector<std::string> texts(const RecordList& list) {
  std::vector<std::string> found;
  for (std::size_t i = 0; i < list.entries(); ++i) found.emplace_back(list.at(i).data.text());
  return found;
}

class RecordListsTest : public testing::Test {
 protected:
  void TearDown() override { restoreSettings() = RestoreSettings(); }

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
  lists_.append(0, recordOf(0x80, 0, "high byte last"));
  lists_.append(0, recordOf(2, 256, "256"));
  lists_.append(0, recordOf(2, 0x80000000, "2^31"));
  lists_.append(0, recordOf(2, 1, "first 1"));
  lists_.append(0, recordOf(2, 1, "second 1"));
  lists_.append(0, recordOf(2, 255, "255"));
  lists_.append(0, recordOf(2, 0, "0"));
  DataBuffer child = recordOf(1, 0, "has a parent");
  child.setParentHandle(CMConfigHandle(HandleBytes{1}));
  lists_.append(0, child);
  sortLists(lists_);
  EXPECT_THAT(texts(lists_[0]), ElementsAre("0", "first 1", "second 1", "255", "256", "2^31",
                                            "high byte last", "has a parent"));
}

TEST_F(RecordListsTest, GathersAHeadWithWhatFollowsUpToTheNextHead) {
  const std::string full(256, 'f');
  lists_.append(0, recordOf(1, 7, "headless"));
  lists_.append(0, recordOf(2, 0, full));
  lists_.append(0, recordOf(2, 1, "b"));
  lists_.append(0, recordOf(3, 2, "another handle"));
  lists_.append(0, recordOf(4, 0, "last"));
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
  restoreSettings().verbose = 1;
  const std::string full(256, 'f');
  lists_.append(31, recordOf(1, 0xFFFFFFFF, full));
  CaptureStdout();
  sortLists(lists_);
  ASSERT_EQ(myGetNextAndDestroy(lists_[31], object_), 1);
  std::string expected;
  for (int i = 0; i < 32; ++i) {
    const std::string number = (i < 10 ? "0" : "") + std::to_string(i);
    expected += "list No." + number + " has " + (i == 31 ? "1" : "0") + " entries.\n";
    expected += "finish sorting for list No." + number + "\n";
  }
  expected += "next in list: data.recn=-1, attribute: '" + full + "'\n";
  EXPECT_EQ(GetCapturedStdout(), expected);
}

}  // namespace
}  // namespace orx
