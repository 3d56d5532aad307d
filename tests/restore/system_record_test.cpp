#include "restore/system_record.h"

#include <tuple>

#include "tests/restore/merge_records.h"

namespace orx {
namespace {

using test::build, test::handle;

SystemRecord systemRecord(const std::string& text) {
  SystemRecord system;
  for (const DataBuffer& record : test::chain({}, text)) system.takeRecord(record);
  return system;
}

TEST(SystemRecord, ItsTextComesFromRecordsWithoutObjectAndSecondValue) {
  SystemRecord system;
  system.takeRecord(build({.text = "<9;0;1;"}));
  system.takeRecord(build({.recn = 1, .text = "x", .auxValue2 = 1}));
  system.takeRecord(build({.object = handle(1, 1), .text = "y"}));
  system.takeRecord(build({.recn = 2, .text = "7;>"}));
  ASSERT_TRUE(system.readText());
  EXPECT_EQ(system.attributes().text(), "<9;0;1;7;>");
}

// The counters before, the bases and next identifiers of types 1, 2, 3, 5 and 40 that they give,
// and the counters after nothing was added.
TEST(SystemRecord, CountersFillTheTablesAndAreWrittenBack) {
  const auto text = [](std::size_t count, const std::string& first, const std::string& rest) {
    std::string text = "<9;0;" + std::to_string(count) + ";" + first;
    for (std::size_t i = 3; i < count; ++i) text += rest + ";";
    return text + ">";
  };
  using Table = std::vector<std::uint32_t>;
  const std::tuple<std::string, Table, std::string> cases[] = {
      {text(30, "1;2;3;", "7"), {1, 2, 3, 7, 7}, text(26, "1;2;3;", "7")},
      {text(3, "11;12;13;", ""), {11, 12, 13, 0, 0}, text(26, "11;12;13;", "0")},
      {text(26, "x1;1 2; ;", "9"), {0, 0, 0, 9, 9}, text(26, "0;0;0;", "9")},
      {text(26, "-5;4294967295;007;", "1"),
       {4294967291, 4294967295, 7, 1, 1},
       text(26, "4294967291;4294967295;7;", "1")},
      {"<9;0;0;>", {0, 0, 0, 0, 0}, text(26, "0;0;0;", "0")}};
  for (const auto& [before, table, after] : cases) {
    SystemRecord system = systemRecord(before);
    MergeTables tables;
    MergeObserver observer;
    ASSERT_TRUE(system.readText()) << before;
    system.readTables(tables, observer);
    Table bases, nextIds;
    for (const std::size_t type : {1, 2, 3, 5, 40}) {
      bases.push_back(tables.idBase[type]);
      nextIds.push_back(tables.nextId[type]);
    }
    EXPECT_EQ(bases, table) << before;
    EXPECT_EQ(nextIds, table) << before;
    system.writeCounters(tables, observer);
    EXPECT_EQ(system.attributes().text(), after) << before;
  }
}

TEST(SystemRecord, ParametersOfTheBackupAreAdded) {
  const char* none = "";
  const std::tuple<std::string, const char*, std::string> cases[] = {
      {"<1;0;1;A=9,B=2;>", "<1;0;1;A=1,C=3;>", "<1;0;1;A=9,B=2,C=3;>"},
      {"<1;0;1;A=9;>", "<1;0;1;A=1=other,B= 2 = a note ;><9;0;1;99;>", "<1;0;1;A=9,B=2=a note;>"},
      {"<1;0;1;A= ,B=1=  ;>", nullptr, "<1;0;1;A=,B=1;>"},
      {"<1;0;1;A=x,,y==z;>", none, "<1;0;1;A=x,y=z;>"},
      {"<1;0;0;>", "<1;0;1;C=3;><1;0;1;D=4;>", "<1;0;1;C=3;>"},
      {"<1;0;1;A=1;><1;0;1;B=2;>", "<2;0;1;x;>", "<1;0;1;A=1;><1;0;1;B=2;>"},
      {none, "<1;0;1;C=3;>", none},
      {"<3;0;1;a;><3;0;1;b;>", none, "<3;0;1;a;><3;0;1;b;>"},
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
