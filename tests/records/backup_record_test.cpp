#include "records/backup_record.h"

#include <gtest/gtest.h>

#include <random>

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
  buffer.setRecType(3);
  buffer.setAuxValue1(-1);
  buffer.setAttrText("abc");
  buffer.setAuxValue2(12);
  return buffer;
}

const std::string exampleLine =
    Line{
        .parent = "<1;1;2;0;0;0;5;>", .recType = 3, .auxValue1 = -1, .data = "abc", .auxValue2 = 12}
        .text();

DataBuffer built(const CMDatabaseBackupRecord& record) {
  DataBuffer buffer;
  buffer.setAttrText(std::string(256, '#'));
  record.buildDataBuffer(buffer);
  return buffer;
}

TEST(BackupRecord, WritesTheColumnsAndReadsThemBack) {
  EXPECT_EQ(CMDatabaseBackupRecord(example()).text(), exampleLine);
  EXPECT_EQ(built(CMDatabaseBackupRecord(exampleLine.c_str())), example());
  CMDatabaseBackupRecord record;
  EXPECT_EQ(record.text(), std::string(440, ' '));
  EXPECT_EQ(built(record), DataBuffer());
  record = example();
  EXPECT_EQ(record.text(), exampleLine);
  const CMDatabaseBackupRecord copy(record);
  record = CMDatabaseBackupRecord();
  EXPECT_EQ(record.text(), std::string(440, ' '));
  EXPECT_EQ(copy.text(), exampleLine);
}

TEST(BackupRecord, RecordBytesLieWhereTheDatabaseExpectsThem) {
  DataBuffer buffer = example();
  buffer.setObjectHandle(CMConfigHandle(5, 0x01020304));
  buffer.setModelHandle(CMConfigHandle(8, 0x11));
  buffer.setRecn(0xA1B2C3D4);
  const std::string bytes(buffer.data(), buffer.data() + DataBuffer::size());
  std::string expected(296, '\0');
  expected.replace(0, 8, std::string("\5\0\0\0\0\0\2\1", 8));
  expected.replace(8, 8, std::string("\4\3\2\1\0\0\5\1", 8));
  expected.replace(16, 8, std::string("\xD4\xC3\xB2\xA1\3\0\0\0", 8));
  expected.replace(24, 8, std::string("\x11\0\0\0\0\0\x8\1", 8));
  expected.replace(32, 7, "\xFF\xFF\xFF\xFF\x61\x62\x63");
  expected[292] = 12;
  EXPECT_EQ(bytes, expected);
  EXPECT_EQ(std::string(buffer.key().begin(), buffer.key().end()), expected.substr(0, 20));
}

TEST(BackupRecord, NumberColumnsStandAlone) {
  const std::pair<const char*, std::int32_t> cases[] = {
      {"  42    ", 42},  {"99999999", 99999999}, {"-9999999", -9999999}, {"      +5", 5},
      {"   1 2  ", 1},   {"12x34567", 12},       {"\t      5", 0},       {"********", 0},
      {"     256", 256}, {"     257", 257}};
  for (const auto& [column, expected] : cases) {
    SCOPED_TRACE(column);
    std::string line(440, '7');
    for (const auto at : {96u, 104u, 160u, 168u, 432u}) line.replace(at, 8, column);
    const DataBuffer buffer = built(CMDatabaseBackupRecord(line.c_str()));
    EXPECT_EQ(static_cast<std::int32_t>(buffer.recn()), expected);
    EXPECT_EQ(buffer.recType(), expected);
    EXPECT_EQ(buffer.auxValue1(), expected);
    EXPECT_EQ(buffer.auxValue2(), expected);
    const auto length = static_cast<std::size_t>(std::clamp(expected, 0, 256));
    EXPECT_EQ(std::string(buffer.attrText().begin(), buffer.attrText().end()),
              std::string(length, '7') + std::string(256 - length, '\0'));
  }
}

// Whatever a cut line does not reach reads as nothing; what it reaches whole is unharmed.
TEST(BackupRecord, LinesMayEndAnywhere) {
  DataBuffer full = example();
  full.setObjectHandle(CMConfigHandle(5, 9));
  full.setModelHandle(CMConfigHandle(8, 7));
  full.setRecn(4);
  const std::string line(CMDatabaseBackupRecord(full).text());
  for (std::size_t length = 0; length <= 440; ++length) {
    SCOPED_TRACE(length);
    CMDatabaseBackupRecord record;
    record.setLine(std::string_view(line).substr(0, length));
    const DataBuffer buffer = built(record);
    EXPECT_EQ(record.text(), line.substr(0, length) + std::string(440 - length, '\0'));
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

TEST(BackupRecord, RandomRecordsReturn) {
  std::mt19937 random(440296);
  std::uniform_int_distribution<std::int32_t> anyNumber(-9999999, 99999999);
  std::uniform_int_distribution<int> anyByte(1, 255);
  std::uniform_int_distribution<std::uint32_t> anyId;
  for (int i = 0; i < 20000; ++i) {
    DataBuffer buffer;
    buffer.setParentHandle(CMConfigHandle(anyByte(random), anyId(random)));
    buffer.setObjectHandle(CMConfigHandle(anyByte(random), anyId(random)));
    buffer.setModelHandle(CMConfigHandle(CMHandleType(0), anyId(random)));
    buffer.setRecn(static_cast<std::uint32_t>(anyNumber(random)));
    buffer.setRecType(anyNumber(random));
    buffer.setAuxValue1(anyNumber(random));
    buffer.setAuxValue2(anyNumber(random));
    std::string text(random() % 257, ' ');
    for (char& c : text) c = static_cast<char>(anyByte(random));
    buffer.setAttrText(text);
    ASSERT_EQ(built(CMDatabaseBackupRecord(buffer)), buffer);
    ASSERT_EQ(checkCarry(buffer),
              text.find('\n') == std::string::npos ? CarryProblem::none : CarryProblem::lineFeed);
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
      {none, [](DataBuffer& b) { b.setAttrText(std::string("a\0\n", 3)); }},
  };
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
    DataBuffer buffer = example();
    DataBuffer expected;
    expected.setRecType(recType);
    EXPECT_EQ(mergeRecord("<1;1;5;0;0;0;1;>", recType).buildDataBufferForMerge(buffer, tables), 0);
    EXPECT_EQ(buffer, expected);
  }
  EXPECT_EQ(tables.nextId, MergeTables().nextId);
}

TEST(BackupRecord, MergeRenumbersHandlesOfMergedTypes) {
  struct State {
    std::uint32_t idBase, nextId;
  };
  const std::string ten = "<1;1;5;0;0;0;10;>", last = "<1;1;5;0;0;0;4294967295;>";
  const CMConfigHandle kept(5, 10), renumbered(5, 109);
  const std::tuple<const char*, std::string, int, State, CMConfigHandle, std::uint32_t> cases[] = {
      {"renumbered", ten, 1, {100, 50}, renumbered, 110},
      {"counter is higher", ten, 1, {100, 200}, renumbered, 200},
      {"counter is that identifier", ten, 1, {100, 109}, renumbered, 110},
      {"merged, not renumbered", ten, 2, {100, 50}, kept, 50},
      {"no base", ten, 1, {0, 50}, kept, 50},
      {"inherited loses its kind", "<1;2;5;1;1;0;2;7;>", 1, {1, 0}, {5, 458752}, 458753},
      {"wraps", last, 1, {3, 0}, {5, 1}, 2},
      {"saturates", last, 1, {1, 7}, {5, 0xFFFFFFFF}, 0xFFFFFFFF},
      {"other type", "<1;1;255;0;0;0;10;>", 1, {100, 50}, {255, 10}, 50},
  };
  for (const auto& [what, handle, mergeType, state, expectedHandle, nextId] : cases) {
    SCOPED_TRACE(what);
    MergeTables tables;
    tables.mergeTypes[1] = 1;
    tables.mergeTypes[5] = mergeType;
    tables.idBase[5] = state.idBase;
    tables.nextId[5] = state.nextId;
    const CMDatabaseBackupRecord record = mergeRecord(handle, 1);
    DataBuffer expected = built(record);
    expected.setParentHandle(expectedHandle);
    expected.setObjectHandle(expectedHandle);
    expected.setModelHandle(expectedHandle);
    DataBuffer buffer = example();
    EXPECT_EQ(record.buildDataBufferForMerge(buffer, tables), 1);
    EXPECT_EQ(buffer, expected);
    EXPECT_EQ(tables.nextId[5], nextId);
  }
}

// Type 0, whose handles keep the old format, and the last type are types like any other.
TEST(BackupRecord, MergeRenumbersTheFirstAndTheLastTypeWhereBothTablesSaySo) {
  const std::tuple<int, std::uint32_t, std::uint32_t, std::uint32_t> cases[] = {
      {1, 100, 99, 100}, {1, 0, 0, 0}, {2, 100, 0, 0}};
  for (const int type : {0, 254}) {
    for (const auto& [mergeType, idBase, id, nextId] : cases) {
      MergeTables tables;
      tables.mergeTypes[1] = 1;
      const auto index = static_cast<std::size_t>(type);
      tables.mergeTypes[index] = mergeType;
      tables.idBase[index] = idBase;
      DataBuffer buffer;
      const auto record = mergeRecord(test::handleText(type, 0), type == 0 ? 1 : type);
      EXPECT_EQ(record.buildDataBufferForMerge(buffer, tables), 1);
      EXPECT_EQ(buffer.parentHandle(), CMConfigHandle(type, id));
      EXPECT_EQ(buffer.modelHandle(), CMConfigHandle(type, id));
      EXPECT_EQ(tables.nextId[index], nextId);
    }
  }
}

}  // namespace
}  // namespace orx
