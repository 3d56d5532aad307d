#include "orxkdb/cmd_explain.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>
#include <string>

#include "orxkdb/explain/explained_object.h"
#include "orxkdb/explain/handle_words.h"
#include "tests/support/small_fleet.h"

namespace orx::orxkdb {
namespace {

using test::attribute;
using test::handleText;
using test::handleValue;

class Explain : public testing::Test {
 protected:
  Explain() {
    auto lines = test::smallFleet();
    lines[0].data = attribute(1, {"A=1"}) + attribute(9, {"8", "x"});
    // The same resource below two groups, once as a chain.
    const std::string text =
        attribute(94, {handleValue(2, 5), "0500000000000201", "gone"}) + "<3276;1;2;;>" +
        attribute(5, {std::string(20, 'y'), "0500000000000201", "a;;b>>\x01"}) + "<6;rest";
    for (const std::uint32_t group : {1u, 2u}) {
      test::Line line{.parent = handleText(3, group), .object = handleText(4, 9), .recType = 4};
      line.auxValue1 = -7;
      line.data = group == 1 ? "" : text;
      if (group == 2) {
        line.data = text.substr(0, 100);
        lines.push_back(line);
        line.recn = 1;
        line.data = text.substr(100);
      }
      lines.push_back(line);
    }
    test::makeDatabase(database(), lines);
    test::writeFile(scratch_ / "backup",
                    test::backupText(lines) + "<1;1;2;0;0;0;5;>" + std::string(84, ' ') + "1x\n");
  }

  [[nodiscard]] std::string database() const { return scratch_.file("db"); }

  std::string output(const ExplainOptions& options, ExitCode code = exitDone) {
    testing::internal::CaptureStdout();
    result_ = explain(options);
    EXPECT_EQ(result_.code, code) << result_.text;
    return testing::internal::GetCapturedStdout();
  }
  std::string object(const std::string& handle, ExitCode code = exitDone) {
    return output({.database = database(), .handle = handle}, code);
  }

  test::TempDir scratch_;
  Result result_;
};

constexpr const char* nullWords = "<1;1;0;0;0;0;0;>, 0000000000000000, the null handle";

TEST_F(Explain, ShowsAnObjectBelowEachParent) {
  const std::string none(nullWords);
  const std::string expected =
      "object\n"
      "  handle: <1;1;4;0;0;0;9;>, 0900000000000401, new format, type 4, identifier 9\n"
      "  parent: <1;1;3;0;0;0;1;>, 0100000000000301, new format, type 3, identifier 1\n"
      "  record 0: recType 4, auxValue1 -7, auxValue2 0, 0 bytes of text\n"
      "    model: " +
      none +
      "\n"
      "\n"
      "object\n"
      "  handle: <1;1;4;0;0;0;9;>, 0900000000000401, new format, type 4, identifier 9\n"
      "  parent: <1;1;3;0;0;0;2;>, 0200000000000301, new format, type 3, identifier 2\n"
      "  record 0: recType 4, auxValue1 -7, auxValue2 0, 100 bytes of text\n"
      "    model: " +
      none +
      "\n"
      "  record 1: recType 4, auxValue1 -7, auxValue2 0, 29 bytes of text\n"
      "    model: " +
      none +
      "\n"
      "  attribute 94 of group 0, key 94 (handles), 3 values\n"
      "    <1;1;2;0;0;0;5;>, 0500000000000201, new format, type 2, identifier 5\n"
      "    <1;1;2;0;0;0;5;>, 0500000000000201, new format, type 2, identifier 5\n"
      "    \"gone\"\n"
      "  attribute 3276 of group 1, key 7372 (handles), 1 value, though it states 2\n"
      "    \"\"\n"
      "  attribute 5 of group 0, key 5, 3 values\n"
      "    \"yyyyyyyyyyyyyyyyyyyy\"\n"
      "    \"0500000000000201\"\n"
      "    \"a;b>\\x01\"\n"
      "  text that is not read: \"<6;rest\"\n";
  for (const char* handle : {"<1;1;4;0;0;0;9;>", "0900000000000401", "4:9"}) {
    EXPECT_EQ(object(handle), expected) << handle;
  }
}

TEST_F(Explain, NamesTheAttributesThatTheOperationsKnow) {
  EXPECT_EQ(object("0:0"),
            std::string("system record\n  handle: ") + nullWords + "\n  parent: " + nullWords +
                "\n  record 0: recType 0, auxValue1 0, auxValue2 0, 24 bytes of text\n"
                "    model: " +
                nullWords +
                "\n  attribute 1 of group 0, key 1 (system parameters), 1 value\n"
                "    \"A=1\"\n"
                "  attribute 9 of group 0, key 9 (identifier counters), 2 values\n"
                "    type 1: \"8\"\n"
                "    type 2: \"x\"\n");
  const std::string model = object("12:1");
  EXPECT_THAT(model, testing::HasSubstr("key 17 (use count), 1 value\n    \"1\"\n"));
  EXPECT_THAT(model, testing::HasSubstr("key 84 (signatures), 1 value\n    <1;1;2;0;0;0;5;>, "));
}

TEST_F(Explain, SaysWhatIsNotThereOrNoHandle) {
  EXPECT_EQ(object("4:8", exitNotAsExpected), "");
  EXPECT_EQ(result_.text, "there is no object of this handle, " + database() +
                              " <1;1;4;0;0;0;8;>, check the handle; the system record's is 0:0");
  for (const char* handle : {"", "4", "4:", ":4", "256:1", "4:4294967296", "4:1x", "<1;1;4;0;0;9;>",
                             "<1;1;4;0;0;0;9;>x", "09000000000004", "0900000000000G01"}) {
    EXPECT_EQ(object(handle, exitUsage), "") << handle;
  }
  output({.line = "backup"}, exitUsage);
  output({.line = scratch_.file("backup:0")}, exitUsage);
  output({.database = "db", .handle = "4:9", .line = "backup:1"}, exitUsage);
  output({.line = scratch_.file("backup:8")}, exitNotAsExpected);
  EXPECT_THAT(result_.text, testing::HasSubstr("its last line is 7"));
  output({.line = scratch_.file("none:1")}, exitNotOpened);
  output({.line = scratch_.file("db:1")}, exitNotAsExpected);
}

TEST_F(Explain, ShowsALineColumnByColumn) {
  const std::string line = scratch_.file("backup:3");
  EXPECT_EQ(output({.line = line}),
            line + ", 440 characters\n" +
                "  columns 0-47, parent handle (parentHandle): " + nullWords + "\n" +
                "  columns 48-95, object handle (objectHandle): <1;1;2;0;0;0;5;>, "
                "0500000000000201, new format, type 2, identifier 5\n"
                "  columns 96-103, record number (recn): 0\n"
                "  columns 104-111, record type (recType): 2\n"
                "  columns 112-159, model handle (modelHandle): <1;1;12;0;0;0;1;>, "
                "0100000000000C01, new format, type 12, identifier 1\n"
                "  columns 160-167, first auxiliary value (auxValue1): 0\n"
                "  columns 168-175, data length (dataLength): 15\n"
                "  columns 176-431, data (attrText): 15 bytes, \"<2;0;1;system;>\"\n"
                "  columns 432-439, second auxiliary value (auxValue2): 1\n");
  const auto json =
      nlohmann::json::parse(output({.line = scratch_.file("backup:7"), .json = true}));
  EXPECT_EQ(json["version"], 1);
  EXPECT_EQ(json["characters"], 102);
  EXPECT_EQ(json["columns"][0]["value"]["identifier"], 5);
  EXPECT_EQ(json["columns"][2]["value"], 1);
  EXPECT_EQ(json["findings"][0]["kind"], "line-length");
}

TEST_F(Explain, PrintsJson) {
  const auto json =
      nlohmann::json::parse(output({.database = database(), .handle = "4:9", .json = true}));
  EXPECT_EQ(json["version"], 1);
  ASSERT_EQ(json["objects"].size(), 2u);
  const auto& object = json["objects"][1];
  EXPECT_EQ(object["parent"]["identifier"], 2);
  EXPECT_EQ(object["records"][1]["recn"], 1);
  EXPECT_EQ(object["records"][1]["auxValue1"], -7);
  EXPECT_EQ(object["attributes"][0]["values"][1]["handle"]["exported"], "<1;1;2;0;0;0;5;>");
  EXPECT_EQ(object["attributes"][1]["attrGroup"], 1);
  EXPECT_EQ(object["attributes"][1]["statedCount"], 2);
  EXPECT_EQ(object["attributes"][2]["values"][2]["text"], "a;b>\x01");
  EXPECT_EQ(object["unreadText"], "<6;rest");
}

TEST(HandleWords, TellWhatAnInheritedHandleRefersTo) {
  const auto plain = [](int type, std::uint32_t id) { return CMConfigHandle(type, id); };
  EXPECT_EQ(handleWords(CMConfigHandle(plain(2, 2), plain(3, 7))),
            "<1;2;3;1;1;0;2;7;>, 0000070002006300, old format, type 3, inherited group, managed "
            "system <1;1;2;0;0;0;2;>, group <1;1;5;0;0;0;7;>, flag 2");
  EXPECT_EQ(handleWords(CMConfigHandle(CMConfigHandle(), plain(3, 70000), plain(6, 9))),
            "<1;3;4;1;0;0;70000;9;>, 7011010009002400, old format, type 4, inherited resource in a "
            "normal group, group <1;1;3;0;0;0;70000;>, resource <1;1;6;0;0;0;9;>");
  EXPECT_EQ(handleWords(CMConfigHandle::createTemporaryHandle(5, 7)),
            "<1;1;5;0;0;0;7;>, 0700000000000511, new format, type 5, identifier 7, temporary");
}

}  // namespace
}  // namespace orx::orxkdb
