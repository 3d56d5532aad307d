// How objects lie in records: sorted lists of them, chains, the system record.
#include <gmock/gmock.h>

#include "restore/chain_writer.h"
#include "restore/record_lists.h"
#include "restore/system_record.h"
#include "tests/restore/merge_records.h"

namespace orx {
namespace {

using test::build, test::handle, testing::ElementsAre;

// A record of an object whose first handle byte is `object`.
DataBuffer recordOf(std::uint8_t object, std::uint32_t recn, const std::string& text = "old",
                    std::int32_t auxValue2 = 0) {
  return build({.object = CMConfigHandle(HandleBytes{object}),
                .recn = recn,
                .text = text,
                .auxValue2 = auxValue2});
}

TEST(RecordLists, SortByHandleBytesThenByNumberAndKeepEqualKeysInOrder) {
  RecordLists lists;
  DataBuffer child = recordOf(1, 0, "has a parent");
  child.setParentHandle(CMConfigHandle(HandleBytes{1}));
  for (const DataBuffer& record :
       {recordOf(0x80, 0, "high byte"), recordOf(2, 256, "256"), recordOf(2, 0x80000000, "2^31"),
        recordOf(2, 255, "255"), recordOf(2, 0, "0"), child}) {
    lists.append(0, record);
  }
  std::string expected = "0, ", texts;
  for (char letter = 'a'; letter <= 'z'; ++letter) {
    lists.append(0, recordOf(2, 1, {letter}));
    expected.append({letter, ',', ' '});
  }
  sortLists(lists);
  for (std::size_t i = 0; i < lists[0].entries(); ++i) {
    texts.append(lists[0].at(i).data.text()) += ", ";
  }
  EXPECT_EQ(texts, expected + "255, 256, 2^31, high byte, has a parent, ");
}

TEST(RecordLists, GatherAHeadWithWhatFollowsUpToTheNextHead) {
  RecordLists lists;
  BigDataRecord object;
  const std::string full(256, 'f');
  for (const DataBuffer& record :
       {recordOf(1, 7, "headless"), recordOf(2, 0, full), recordOf(2, 1, "b"),
        recordOf(3, 2, "another handle"), recordOf(4, 0, "last")}) {
    lists.append(0, record);
  }
  const std::tuple<std::uint8_t, std::uint32_t, std::string, std::size_t> objects[] = {
      {1, 7, "headless", 4}, {2, 0, full + "banother handle", 1}, {4, 0, "last", 0}};
  for (const auto& [number, recn, text, left] : objects) {
    object.attributeText.clear();
    EXPECT_EQ(myGetNextAndDestroy(lists[0], object), 1);
    EXPECT_EQ(object.attributeText, text);
    EXPECT_EQ(object.data, recordOf(number, recn, text.substr(0, 256)));
    EXPECT_EQ(lists[0].entries(), left);
  }
  EXPECT_EQ(myGetNextAndDestroy(lists[0], object), 0);
  EXPECT_EQ(object.data, recordOf(4, 0, "last"));
}

// Stores the records, rewrites chains of them, and tells "OBJECT/NUMBER:SIZE" of each record then,
// with the first byte of its handle. The last record of a chain has room for a zero.
TEST(ChainWriter, GrowsAndShrinksOnlyItsOwnChain) {
  struct Rewrite {
    std::uint8_t object;
    std::size_t size;
    ChainRecords records;
  };
  const std::tuple<std::vector<DataBuffer>, std::vector<Rewrite>, std::string> cases[] = {
      {{recordOf(1, 0), recordOf(2, 0), recordOf(2, 1), recordOf(2, 2), recordOf(2, 700),
        recordOf(3, 0), recordOf(3, 5), recordOf(4, 1)},
       {{2, 300, ChainRecords::all}, {1, 512, ChainRecords::all}, {4, 255, ChainRecords::all}},
       "1/0:256 1/1:256 1/2:0 2/0:256 2/1:44 3/0:3 3/5:3 4/0:255 "},
      {{recordOf(0, 0), recordOf(0, 1), recordOf(0, 2, "old", 7), recordOf(0, 3),
        recordOf(0, 0xFFFFFFFF), recordOf(1, 0)},
       {{0, 4, ChainRecords::withoutAuxValue2}},
       "0/0:4 0/2:3 1/0:3 "}};
  for (const auto& [before, rewrites, after] : cases) {
    const test::TempDir directory;
    const test::Opened database(directory.file("db"), kdb::openAsNew);
    for (const DataBuffer& record : before) test::addUnder(database, record, record);
    for (const auto& [object, size, records] : rewrites) {
      const std::string text(size, 'n');
      EXPECT_EQ(rewriteChain(database.handle, recordOf(object, 0), text, records), 0);
    }
    std::string found;
    for (const DataBuffer& record : test::recordsOf(database)) {
      found += std::to_string(record.objectBytes()[0]) + "/" + std::to_string(record.recn()) + ":" +
               std::to_string(record.text().size()) + " ";
    }
    EXPECT_EQ(found, after);
  }
}

SystemRecord systemRecord(const std::string& text) {
  SystemRecord system;
  for (const DataBuffer& record : test::chain({}, text)) system.takeRecord(record);
  return system;
}

// The counters before, the identifiers of types 1, 2, 3, 5 and 40 that they give, and the counters
// after nothing was added.
TEST(SystemRecord, CountersFillTheTablesAndAreWrittenBack) {
  const auto text = [](std::size_t count, const std::string& first, const std::string& rest) {
    std::string text = "<9;0;" + std::to_string(count) + ";" + first;
    for (std::size_t i = 3; i < count; ++i) text += rest + ";";
    return text + ">";
  };
  const std::tuple<std::string, std::array<std::uint32_t, 5>, std::string> cases[] = {
      {text(30, "1;2;3;", "7"), {1, 2, 3, 7, 7}, text(26, "1;2;3;", "7")},
      {text(3, "11;12;13;", ""), {11, 12, 13, 0, 0}, text(26, "11;12;13;", "0")},
      {text(26, "x1;1 2; ;", "9"), {0, 0, 0, 9, 9}, text(26, "0;0;0;", "9")},
      {text(26, "-5;4294967295;007;", "1"),
       {4294967291, 4294967295, 7, 1, 1},
       text(26, "4294967291;4294967295;7;", "1")}};
  for (const auto& [before, ids, after] : cases) {
    SystemRecord system = systemRecord(before);
    MergeTables tables;
    MergeObserver observer;
    ASSERT_TRUE(system.readText()) << before;
    system.readTables(tables, observer);
    for (std::size_t i = 0; i < ids.size(); ++i) {
      const std::size_t type = std::array<std::size_t, 5>{1, 2, 3, 5, 40}[i];
      EXPECT_TRUE(tables.idBase[type] == ids[i] && tables.nextId[type] == ids[i]) << before << type;
    }
    system.writeCounters(tables, observer);
    EXPECT_EQ(system.attributes().text(), after) << before;
  }
}

TEST(SystemRecord, ParametersOfTheBackupAreAdded) {
  const std::tuple<std::string, const char*, std::string> cases[] = {
      {"<1;0;1;A=9,B=2;>", "<1;0;1;A=1,C=3;>", "<1;0;1;A=9,B=2,C=3;>"},
      {"<1;0;1;A=9;>", "<1;0;1;A=1=other,B= 2 = a note ;><9;0;1;99;>", "<1;0;1;A=9,B=2=a note;>"},
      {"<1;0;1;A= ,B=1=  ;>", nullptr, "<1;0;1;A=,B=1;>"},
      {"<1;0;1;A=x,,y==z;>", "", "<1;0;1;A=x,y=z;>"},
      {"<1;0;0;>", "<1;0;1;C=3;><1;0;1;D=4;>", "<1;0;1;C=3;>"},
      {"<1;0;1;A=1;><1;0;1;B=2;>", "<2;0;1;x;>", "<1;0;1;A=1;><1;0;1;B=2;>"},
      {"", "<1;0;1;C=3;>", ""},
      {"<1;0;1;A=1;;2>>;>", "<1;0;1;B=;;;>", "<1;0;1;A=1;;2>>,B=;;;>"}};
  for (const auto& [current, alien, merged] : cases) {
    SystemRecord system = systemRecord(current + "<9;0;1;1;>");
    MergeObserver observer;
    ASSERT_TRUE(system.readText());
    const std::string alienText = alien == nullptr ? "" : alien;
    system.mergeParameters(alien == nullptr ? nullptr : &alienText, observer);
    EXPECT_EQ(system.attributes().text(), merged + "<9;0;1;1;>") << current;
  }
}

}  // namespace
}  // namespace orx
