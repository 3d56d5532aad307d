#include "orxkdb/cmd_explain.h"

#include <gmock/gmock.h>

#include <regex>

#include "orxkdb/explain/explained_object.h"
#include "orxkdb/words/handle_words.h"
#include "tests/support/program_runs.h"
#include "tests/support/small_fleet.h"

namespace orx::orxkdb {
namespace {

using test::attribute, test::handleText, test::handleValue;
using testing::HasSubstr;

// The same resource below two groups, without a text and as a chain.
std::vector<test::Line> fleet() {
  const std::string text =
      attribute(94, {handleValue(2, 5), "0500000000000201", "gone"}) + "<3276;1;2;;>" +
      attribute(5, {std::string(20, 'y'), "0500000000000201", "a;;b>>\x01"}) + "<6;rest";
  auto lines = test::smallFleet();
  lines[0].data = attribute(1, {"A=1"}) + attribute(9, {"8", "x"});
  lines.push_back({.parent = handleText(3, 1), .object = handleText(4, 9), .recType = 4});
  lines.back().auxValue1 = -7;
  for (const int recn : {0, 1}) {
    lines.push_back(lines[3]);
    lines.back().parent = handleText(3, 2);
    lines.back().recn = recn;
    lines.back().data = recn == 0 ? text.substr(0, 100) : text.substr(100);
  }
  return lines;
}

class Explain : public testing::Test {
 protected:
  Explain() {
    test::makeDatabase(database_, fleet());
    test::writeFile(scratch_ / "backup",
                    test::backupText(fleet()) + "<1;1;2;0;0;0;5;>" + std::string(84, ' ') + "1x\n");
  }

  std::string output(const ExplainOptions& options) {
    return test::printed([&] { EXPECT_EQ(explain(options).text, ""); });
  }
  std::string object(const std::string& handle) {
    return output({.database = database_, .handle = handle});
  }

  test::TempDir scratch_;
  std::string database_ = scratch_.file("db");
};

// In what is expected, "NONE" and "SYSTEM" stand for these handles.
std::string withHandles(std::string text) {
  text = std::regex_replace(text, std::regex("NONE"),
                            "<1;1;0;0;0;0;0;>, 0000000000000000, the null handle");
  return std::regex_replace(text, std::regex("SYSTEM"),
                            "<1;1;2;0;0;0;5;>, 0500000000000201, new format, type 2, identifier 5");
}

TEST_F(Explain, ShowsAnObjectBelowEachParent) {
  const std::string expected = withHandles(R"(object
  handle: <1;1;4;0;0;0;9;>, 0900000000000401, new format, type 4, identifier 9
  parent: <1;1;3;0;0;0;1;>, 0100000000000301, new format, type 3, identifier 1
  record 0: recType 4, auxValue1 -7, auxValue2 0, 0 bytes of text
    model: NONE

object
  handle: <1;1;4;0;0;0;9;>, 0900000000000401, new format, type 4, identifier 9
  parent: <1;1;3;0;0;0;2;>, 0200000000000301, new format, type 3, identifier 2
  record 0: recType 4, auxValue1 -7, auxValue2 0, 100 bytes of text
    model: NONE
  record 1: recType 4, auxValue1 -7, auxValue2 0, 29 bytes of text
    model: NONE
  attribute 94 of group 0, key 94 (handles), 3 values
    SYSTEM
    SYSTEM
    "gone"
  attribute 3276 of group 1, key 7372 (handles), 1 value, though it states 2
    ""
  attribute 5 of group 0, key 5, 3 values
    "yyyyyyyyyyyyyyyyyyyy"
    "0500000000000201"
    "a;b>\x01"
  text that is not read: "<6;rest"
)");
  for (const char* handle : {"<1;1;4;0;0;0;9;>", "0900000000000401", "4:9"}) {
    EXPECT_EQ(object(handle), expected) << handle;
  }
  test::expectJson(output({.database = database_, .handle = "4:9", .json = true}), R"({
      "/version": 1, "/objects/1/parent/identifier": 2, "/objects/1/records/1/recn": 1,
      "/objects/1/records/1/auxValue1": -7,
      "/objects/1/attributes/0/values/1/handle/exported": "<1;1;2;0;0;0;5;>",
      "/objects/1/attributes/1/attrGroup": 1, "/objects/1/attributes/1/statedCount": 2,
      "/objects/1/attributes/2/values/2/text": "a;b>\u0001", "/objects/1/unreadText": "<6;rest"})");
}

TEST_F(Explain, NamesTheAttributesThatTheOperationsKnow) {
  const std::string text = object("0:0") + object("12:1");
  EXPECT_THAT(text, testing::StartsWith("system record\n"));
  for (const char* part :
       {"key 1 (system parameters), 1 value\n    \"A=1\"\n",
        "key 9 (identifier counters), 2 values\n    type 1: \"8\"\n    type 2: \"x\"\n",
        "key 17 (use count), 1 value\n    \"1\"\n",
        "key 84 (signatures), 1 value\n    <1;1;2;0;0;0;5;>, "}) {
    EXPECT_THAT(text, HasSubstr(part));
  }
}

TEST_F(Explain, ShowsALineColumnByColumn) {
  const std::string line = scratch_.file("backup:3");
  EXPECT_EQ(output({.line = line}), line + withHandles(R"(, 440 characters
  columns 0-47, parent handle (parentHandle): NONE
  columns 48-95, object handle (objectHandle): SYSTEM
  columns 96-103, record number (recn): 0
  columns 104-111, record type (recType): 2
  columns 112-159, model handle (modelHandle): <1;1;12;0;0;0;1;>, 0100000000000C01, new format, )"
                                                       R"(type 12, identifier 1
  columns 160-167, first auxiliary value (auxValue1): 0
  columns 168-175, data length (dataLength): 15
  columns 176-431, data (attrText): 15 bytes, "<2;0;1;system;>"
  columns 432-439, second auxiliary value (auxValue2): 1
)"));
  test::expectJson(output({.line = scratch_.file("backup:7"), .json = true}),
                   R"({"/version": 1, "/characters": 102, "/columns/0/value/identifier": 5,
                       "/columns/2/value": 1, "/findings/0/kind": "line-length"})");
}

TEST(HandleWords, TellWhatAnInheritedHandleRefersTo) {
  EXPECT_EQ(handleWords(CMConfigHandle(CMConfigHandle(2, 2), CMConfigHandle(3, 7))),
            "<1;2;3;1;1;0;2;7;>, 0000070002006300, old format, type 3, inherited group, managed "
            "system <1;1;2;0;0;0;2;>, group <1;1;5;0;0;0;7;>, flag 2");
  EXPECT_EQ(
      handleWords(CMConfigHandle(CMConfigHandle(), CMConfigHandle(3, 70000), CMConfigHandle(6, 9))),
      "<1;3;4;1;0;0;70000;9;>, 7011010009002400, old format, type 4, inherited resource in a "
      "normal group, group <1;1;3;0;0;0;70000;>, resource <1;1;6;0;0;0;9;>");
}

}  // namespace
}  // namespace orx::orxkdb
