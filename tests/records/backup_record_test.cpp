#include "records/backup_record.h"

#include <gtest/gtest.h>

#include "records/carry_check.h"
#include "records/data_buffer.h"
#include "records/merge_tables.h"
#include "tests/support/backup_lines.h"

namespace orx {
namespace {

using test::Line;

DataBuffer example() {
  DataBuffer buffer;
  buffer.setParentHandle(CMConfigHandle(2, 5));
  buffer.setObjectHandle(CMConfigHandle(5, 9));
  buffer.setRecn(4);
  buffer.setRecType(3);
  buffer.setModelHandle(CMConfigHandle(8, 7));
  buffer.setAuxValue1(-1);
  buffer.setAttrText("abc");
  buffer.setAuxValue2(12);
  return buffer;
}

const std::string exampleLine =
    Line{
        test::handleText(2, 5), test::handleText(5, 9), 4, 3, test::handleText(8, 7), -1, "abc", 12}
        .text();

DataBuffer built(const CMDatabaseBackupRecord& record) {
  DataBuffer buffer;
  buffer.setAttrText(std::string(256, '#'));
  record.buildDataBuffer(buffer);
  return buffer;
}

TEST(BackupRecord, WritesTheColumnsAndReadsThemBack) {
  CMDatabaseBackupRecord record;
  EXPECT_EQ(record.text(), std::string(440, ' '));
  EXPECT_EQ(built(record), DataBuffer());
  record = example();
  EXPECT_EQ(record.text(), exampleLine);
  EXPECT_EQ(built(CMDatabaseBackupRecord(exampleLine.c_str())), example());
}

TEST(BackupRecord, NumberColumnsStandAlone) {
  const std::pair<const char*, std::int32_t> cases[] = {
      {"  42    ", 42}, {"99999999", 99999999}, {"-9999999", -9999999}, {"      +5", 5},
      {"   1 2  ", 1},  {"12x34567", 12},       {"********", 0},        {"     257", 257}};
  for (const auto& [column, expected] : cases) {
    std::string line(440, '7');
    for (const auto at : {96u, 104u, 160u, 168u, 432u}) line.replace(at, 8, column);
    const DataBuffer buffer = built(CMDatabaseBackupRecord(line.c_str()));
    EXPECT_EQ(static_cast<std::int32_t>(buffer.recn()), expected) << column;
    EXPECT_TRUE(buffer.recType() == expected && buffer.auxValue1() == expected &&
                buffer.auxValue2() == expected)
        << column;
    const auto length = static_cast<std::size_t>(std::clamp(expected, 0, 256));
    EXPECT_EQ(std::string(buffer.attrText().begin(), buffer.attrText().end()),
              std::string(length, '7') + std::string(256 - length, '\0'));
  }
}

// Whatever a cut line does not reach reads as nothing; what it reaches whole is unharmed.
TEST(BackupRecord, LinesMayEndAnywhere) {
  for (std::size_t length = 0; length <= 440; ++length) {
    SCOPED_TRACE(length);
    CMDatabaseBackupRecord record;
    record.setLine(std::string_view(exampleLine).substr(0, length));
    const DataBuffer buffer = built(record);
    EXPECT_EQ(record.text(), exampleLine.substr(0, length) + std::string(440 - length, '\0'));
    EXPECT_EQ(buffer.parentHandle().isNull(), length < 16);
    EXPECT_EQ(buffer.objectHandle().isNull(), length < 48 + 16);
    EXPECT_EQ(buffer.recn(), length < 104 ? 0u : 4u);
    EXPECT_EQ(buffer.recType(), length < 112 ? 0 : 3);
    EXPECT_EQ(buffer.modelHandle().isNull(), length < 112 + 16);
    EXPECT_EQ(buffer.auxValue1(), length < 168 ? 0 : -1);
    EXPECT_EQ(buffer.text(), length < 177 ? "" : std::string("abc").substr(0, length - 176));
    EXPECT_EQ(buffer.auxValue2(), length < 439 ? 0 : length < 440 ? 1 : 12);
  }
}

TEST(CarryCheck, NamesWhatALineWouldLose) {
  using enum CarryProblem;
  const std::pair<CarryProblem, void (*)(DataBuffer&)> cases[] = {
      {none, [](DataBuffer& b) { b.setRecn(0xFFFFFFFF); }},  // written as -1
      {none, [](DataBuffer& b) { b.setRecn(99999999); }},
      {none, [](DataBuffer& b) { b.setRecType(-9999999); }},
      {recordNumber, [](DataBuffer& b) { b.setRecn(100000000); }},
      {recordType, [](DataBuffer& b) { b.setRecType(-10000000); }},
      {firstAuxiliary, [](DataBuffer& b) { b.setAuxValue1(-2147483647 - 1); }},
      {secondAuxiliary, [](DataBuffer& b) { b.setAuxValue2(2147483647); }},
      {lineFeed, [](DataBuffer& b) { b.setAttrText("a\nb"); }},
      {none, [](DataBuffer& b) { b.setAttrText(std::string("a\0\n", 3)); }}};
  for (const auto& [expected, change] : cases) {
    DataBuffer buffer = example();
    change(buffer);
    EXPECT_EQ(checkCarry(buffer), expected) << describe(expected);
    const bool tooWide = expected != none && expected != lineFeed;
    EXPECT_EQ(CMDatabaseBackupRecord(buffer).text().find("********") < 440, tooWide);
  }
}

CMDatabaseBackupRecord mergeRecord(const std::string& handle, int recType) {
  return CMDatabaseBackupRecord(
      Line{handle, handle, 2, recType, handle, 6, "text", 8}.text().c_str());
}

TEST(BackupRecord, MergeSkipsRecordsOfOtherTypes) {
  MergeTables tables;
  tables.mergeTypes.fill(1);
  tables.mergeTypes[7] = 0;
  tables.idBase.fill(100);
  for (const int recType : {255, -1, 7}) {
    DataBuffer buffer = example(), expected;
    expected.setRecType(recType);
    EXPECT_EQ(mergeRecord("<1;1;5;0;0;0;1;>", recType).buildDataBufferForMerge(buffer, tables), 0);
    EXPECT_EQ(buffer, expected);
  }
  EXPECT_EQ(tables.nextId, MergeTables().nextId);
}

// Of the types that both tables name. Type 0, whose handles keep the old format, and the last type
// are types like any other.
TEST(BackupRecord, MergeRenumbersHandlesOfMergedTypes) {
  struct State {
    std::uint32_t idBase, nextId;
  };
  using test::handleText;
  constexpr std::uint32_t highest = 0xFFFFFFFF;
  const std::tuple<const char*, std::string, int, State, CMConfigHandle, std::uint32_t> cases[] = {
      {"renumbered", handleText(5, 10), 1, {100, 50}, {5, 109}, 110},
      {"counter is higher", handleText(5, 10), 1, {100, 200}, {5, 109}, 200},
      {"counter is that identifier", handleText(5, 10), 1, {100, 109}, {5, 109}, 110},
      {"merged, not renumbered", handleText(5, 10), 2, {100, 50}, {5, 10}, 50},
      {"no base", handleText(5, 10), 1, {0, 50}, {5, 10}, 50},
      {"inherited loses its kind", "<1;2;5;1;1;0;2;7;>", 1, {1, 0}, {5, 458752}, 458753},
      {"wraps", handleText(5, highest), 1, {3, 0}, {5, 1}, 2},
      {"saturates", handleText(5, highest), 1, {1, 7}, {5, highest}, highest},
      {"no type", handleText(255, 10), 1, {100, 50}, {255, 10}, 50},
      {"first type", handleText(0, 0), 1, {100, 0}, {0, 99}, 100},
      {"last type", handleText(254, 0), 1, {100, 0}, {254, 99}, 100}};
  for (const auto& [what, handle, mergeType, state, expectedHandle, nextId] : cases) {
    const CMDatabaseBackupRecord record = mergeRecord(handle, 1);
    DataBuffer buffer = example(), expected = built(record);
    const auto type = static_cast<std::size_t>(expected.objectHandle().getType()) % 255;
    MergeTables tables;
    tables.mergeTypes[1] = 1;
    tables.mergeTypes[type] = mergeType;
    tables.idBase[type] = state.idBase;
    tables.nextId[type] = state.nextId;
    expected.setParentHandle(expectedHandle);
    expected.setObjectHandle(expectedHandle);
    expected.setModelHandle(expectedHandle);
    EXPECT_EQ(record.buildDataBufferForMerge(buffer, tables), 1) << what;
    EXPECT_EQ(buffer, expected) << what;
    EXPECT_EQ(tables.nextId[type], nextId) << what;
  }
}

}  // namespace
}  // namespace orx
