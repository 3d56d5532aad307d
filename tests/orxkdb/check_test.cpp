#include "orxkdb/cmd_check.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "orxkdb/check/backup_file.h"
#include "orxkdb/check/check_run.h"
#include "orxkdb/cmd_backup.h"
#include "orxkdb/sample_writer.h"
#include "records/backup_reader.h"
#include "tests/support/places.h"
#include "tests/support/run_program.h"
#include "tests/support/small_fleet.h"

namespace orx::orxkdb {
namespace {

using test::attribute;
using test::handleText;
using test::handleValue;
using test::Line;
using testing::ElementsAre;
using testing::IsEmpty;

using Shown = std::vector<std::string>;

// "KIND line N TYPE:ID/RECN: TEXT" of every finding.
Shown findingsIn(const std::string& input, CheckCounts* counts = nullptr, bool withLines = true) {
  Findings findings(0);
  CheckCounts ignored;
  EXPECT_EQ(runCheck(input, findings, counts == nullptr ? ignored : *counts).text, "");
  Shown shown;
  for (const FindingKindText& kind : findingKinds) {
    for (const Finding& finding : findings.kept(kind.kind)) {
      const Place& place = finding.place;
      std::string text(kind.name);
      if (withLines && place.line != 0) text += " line " + std::to_string(place.line);
      if (place.object) {
        const CMConfigHandle object = handleOf(place.object->object);
        text += " " + std::to_string(object.getType()) + ":" +
                std::to_string(static_cast<std::int32_t>(object));
      }
      if (place.recn) text += "/" + std::to_string(*place.recn);
      shown.push_back(text + ": " + finding.text);
    }
  }
  return shown;
}

struct RecordCase {
  std::string name;
  std::function<void(std::vector<Line>&)> change;
  Shown findings;
};

RecordCase parameterCase(const std::vector<std::string>& values, const Shown& findings) {
  return {"parameters " + values.front(),
          [=](auto& lines) {
            lines[0].data =
                attribute(1, values) + attribute(9, std::vector<std::string>(26, "100"));
          },
          findings};
}

const std::string manyNs(20, 'N');

const std::vector<RecordCase> recordCases = {
    {"nothing", [](auto&) {}, {}},
    {"gaps",
     [](auto& lines) {
       for (const int recn : {0, 3, 5}) {
         lines.push_back(test::plainLine(7));
         lines.back().recn = recn;
       }
       lines.push_back(test::plainLine(8));
       lines.back().recn = 2;
     },
     {"chain-gap 2:7/3: records 1 to 2 are missing", "chain-gap 2:7/5: record 4 is missing",
      "chain-gap 2:8/2: records 0 to 1 are missing", "repeated-attribute 2:7: attribute 2"}},
    {"records that disagree",
     [](auto& lines) {
       lines.push_back(test::plainLine(7));
       lines.push_back(test::plainLine(7, ""));
       lines.back().recn = 1;
       lines.back().recType = 3;
       lines.back().auxValue2 = 9;
     },
     {"chain-disagrees 2:7/1: not as in record 0: recType, auxValue2"}},
    {"texts that are not read whole",
     [](auto& lines) {
       lines.push_back(test::plainLine(7, "<2;0;1;x;>junk<3;0;0;>"));
       lines.push_back(test::plainLine(8, "<2;0;1;x;"));
       lines.push_back(test::plainLine(9, "<2;0;3;a;b;><3;0;1;a;b;><4;><5;0;-1;a;>"));
     },
     {"text-left-over 2:7: 12 bytes from \"junk<3;0;0;>\"",
      "text-left-over 2:8: 9 bytes from \"<2;0;1;x;\"",
      "value-count 2:9: attribute 2 states 3 values, 2 can be read",
      "value-count 2:9: attribute 3 has more than the 1 values it states",
      "value-count 2:9: attribute 0 has no header of three numbers: \"4;\"",
      "value-count 2:9: attribute 5 states -1 values, 1 can be read"}},
    {"values that come back as others",
     [](auto& lines) {
       lines.push_back(test::plainLine(7, attribute(3, {"a\t"})));
       lines.push_back(test::plainLine(8, "<4;1;2;a;;;b;>"));
       lines.push_back(test::plainLine(9, attribute(3, {"a  ", "b\tc", " "})));
       lines.push_back(test::plainLine(10, attribute(3, {"a", " ", "b  c"})));
     },
     {"not-read-back 2:7: attribute 3 has a value that ends in a TAB",
      "not-read-back 2:9: attribute 3 has a value with a TAB",
      "not-read-back 2:9: attribute 3 has a value that ends in blanks",
      "ambiguous-value 2:8: attribute 4/1 has \";;;\" between two values"}},
    {"attribute keys that come back as others",
     [](auto& lines) {
       lines.push_back(test::plainLine(
           7, "<70000;0;1;a;><2x;0;1;b;><3; 0;1 ;b;><5;32767;0;><4294967300;0;0;><6897;0;0;>"));
     },
     {"attribute-header 2:7: attribute 368/1 is written \"70000;0;1\"",
      "attribute-header 2:7: attribute 2 is written \"2x;0;1\"",
      "attribute-header 2:7: attribute 4 is written \"4294967300;0;0\""}},
    {"groups at the end of their range",
     [](auto& lines) { lines.push_back(test::plainLine(7, "<32767;32760;0;><32767;32761;0;>")); },
     {"attribute-header 2:7: attribute 4095/32768 is written \"32767;32761;0\""}},
    {"record types beyond the table",
     [](auto& lines) {
       for (const int type : {254, 255, -1}) {
         lines.push_back(test::plainLine(static_cast<std::uint32_t>(lines.size() + 4)));
         lines.back().recType = type;
       }
     },
     {"record-type 2:8: it is 255", "record-type 2:9: it is -1"}},
    {"a model without its first record",
     [](auto& lines) {
       for (const std::uint32_t id : {2, 33}) {
         lines.push_back(test::modelLine(attribute(17, {"0"}), ""));
         lines.back().object = handleText(12, id);
         lines.back().recn = 1;
       }
     },
     {"chain-gap 12:2/1: record 0 is missing",
      "chain-gap 12:33/1: record 0 is missing; \"orxrestore -u\" joins the others to those of "
      "<1;1;12;0;0;0;1;>"}},
    {"a text over two records",
     [](auto& lines) {
       const std::string text = attribute(2, {std::string(300, 'x')});
       lines.push_back(test::plainLine(7, text.substr(0, 256)));
       lines.push_back(test::plainLine(7, text.substr(256)));
       lines.back().recn = 1;
     },
     {}},
    {"handles in attributes",
     [](auto& lines) {
       lines.push_back(test::plainLine(
           7, attribute(94, {handleValue(2, 5), "0500000000000201", "0000000000000000",
                             "050000000000020", "0a00000000000201", handleValue(2, 99)})));
     },
     {"handle-value 2:7: attribute 94 has the value \"050000000000020\"",
      "handle-value 2:7: attribute 94 has the value \"0a00000000000201\"",
      "missing-object 2:7: attribute 94 names <1;1;2;0;0;0;99;>, which is not there"}},
    {"models and parents that are not there",
     [](auto& lines) {
       for (const int id : {7, 8}) {
         lines.push_back(test::plainLine(id));
         lines.back().parent = handleText(3, 4);
         lines.back().model = handleText(12, 2);
       }
       lines.push_back(test::plainLine(9));
       lines.back().parent = lines.back().model = "<1;2;3;1;1;0;2;7;>";  // inherited
     },
     {"missing-object 2:7: its parent is not there; it is that of 1 more object",
      "missing-object 2:7: its model <1;1;12;0;0;0;2;> is not there",
      "missing-object 2:8: its model <1;1;12;0;0;0;2;> is not there"}},
    {"parents that lead back to their child",
     [](auto& lines) {
       for (const auto& [id, parent] : {std::pair{7, 7}, {8, 9}, {9, 8}, {10, 8}, {6, 10}}) {
         lines.push_back(test::plainLine(static_cast<std::uint32_t>(id)));
         lines.back().parent = handleText(2, static_cast<std::uint32_t>(parent));
       }
     },
     {"parent-cycle 2:7: it is its own parent",
      "parent-cycle 2:8: its parents lead back to it: <1;1;2;0;0;0;9;>, <1;1;2;0;0;0;8;>"}},
    {"a model that is none, and one without a use count",
     [](auto& lines) {
       lines[1] = test::modelLine("");
       lines.push_back(test::plainLine(7));
       lines.back().model = handleText(2, 5);
     },
     {"not-a-model 2:7: its model <1;1;2;0;0;0;5;> is none",
      "no-use-count 12:1: 1 object refers to it"}},
    {"another reference than the model tells of",
     [](auto& lines) { lines[2] = test::referringLine(6); },
     {"signatures 12:1: 1 is listed, 1 object refers to it; <1;1;2;0;0;0;5;> does not; "
      "<1;1;2;0;0;0;6;> is not listed"}},
    {"a use count that is wrong",
     [](auto& lines) {
       lines[1] = test::modelLine(attribute(17, {"3"}));
       lines.push_back(test::modelLine(attribute(17, {"0", "0"}), ""));
       lines.back().object = handleText(12, 2);
       lines.push_back(test::modelLine(attribute(17, {"0x"}), ""));
       lines.back().object = handleText(12, 3);
       lines.push_back(test::modelLine(attribute(17, {"1-"}), ""));
       lines.back().object = handleText(12, 4);
     },
     {"use-count 12:1: it is 3, 1 object refers to it",
      "use-count 12:2: it is not one number, 0 objects refer to it",
      "use-count 12:3: it is not one number, 0 objects refer to it",
      "use-count 12:4: it is not one number, 0 objects refer to it"}},
    {"references that do not count",
     [](auto& lines) {
       lines.push_back(test::referringLine(6));  // a record type without use counts
       lines.back().recType = 26;
       lines.push_back(test::modelLine("", attribute(84, {handleValue(2, 6)})));  // no attribute 17
       lines.back().object = handleText(12, 2);
       lines.push_back(test::modelLine(attribute(17, {"9"})));  // no model
       lines.back().object = handleText(26, 1);
       lines.back().recType = 26;
     },
     {}},
    {"two models of one handle",
     [](auto& lines) {
       lines.push_back(test::modelLine());
       lines.back().parent = handleText(2, 5);
     },
     {"use-count 12:1: it is 1, 0 objects refer to it",
      "signatures 12:1: 1 is listed, 0 objects refer to it; <1;1;2;0;0;0;5;> does not"}},
    {"no system record",
     [](auto& lines) { lines.erase(lines.begin()); },
     {"no-system-record: no record with a null object handle and auxValue2 0"}},
    {"a system record that a merge does not take",
     [](auto& lines) { lines[0].auxValue2 = 1; },
     {"no-system-record: no record with a null object handle and auxValue2 0"}},
    {"a system record below a parent, which a merge takes",
     [](auto& lines) {
       lines[0].parent = handleText(2, 5);
       lines[0].data = attribute(9, {"1"});
     },
     {"counter 0:0: value 1, of type 2, is missing; the highest identifier in use is 5",
      "counter 0:0: value 7, of type 12, is missing; the highest identifier in use is 1"}},
    {"a system record behind another record with its handles",
     [](auto& lines) {
       lines.push_back(lines[0]);
       lines.back().recn = 1;
       lines[0] = {.data = attribute(9, {"1"}), .auxValue2 = 1};
     },
     {"chain-disagrees 0:0/1: not as in record 0: auxValue2",
      "repeated-attribute 0:0: attribute 9"}},
    {"no counters",
     [](auto& lines) { lines[0].data = attribute(1, {"A=1"}); },
     {"no-counters 0:0: attribute 9 is missing"}},
    {"counters that are wrong",
     [](auto& lines) {
       lines[0] = test::systemLine({"x", "5", "-5"});
     },
     {"counter 0:0: value 0, of type 1, is no number",
      "counter 0:0: value 1, of type 2, is 5; the highest identifier in use is 5",
      "counter 0:0: value 7, of type 12, is missing; the highest identifier in use is 1",
      "near-limit 0:0: value 2, of type 3, is 4294967291"}},
    {"counters that only look like numbers, and too many",
     [](auto& lines) {
       std::vector<std::string> counters(27, "100");
       counters[0] = "5-5";
       counters[1] = "1-";
       counters[4] = "4294967297";
       lines[0] = test::systemLine(counters);
     },
     {"counter 0:0: there are 27 values; those behind the first 26 are not read, and a merge "
      "removes them",
      "counter 0:0: value 0, of type 1, is \"5-5\", which a merge reads as 5",
      "counter 0:0: value 1, of type 2, is \"1-\", which a merge reads as 1; the highest "
      "identifier "
      "in use is 5",
      "counter 0:0: value 4, of type 5, is \"4294967297\", which a merge reads as 1"}},
    {"identifiers near the highest",
     [](auto& lines) {
       std::vector<std::string> counters(26, "100");
       counters[0] = "4293967296";
       counters[1] = "4294967295";
       lines[0] = test::systemLine(counters);
       lines.push_back(test::plainLine(4293967296));
       lines.push_back(test::plainLine(4293967297));
     },
     {"near-limit 0:0: value 1, of type 2, is 4294967295",
      "near-limit 2:-999999: its identifier is 4293967297"}},
    parameterCase({"A= 1= note,B=,C =x"}, {}),
    parameterCase({",A=1"}, {"system-parameters 0:0: \",A=1\" is written as \"\""}),
    parameterCase({"A=1,A=2"}, {"system-parameters 0:0: \"A=1,A=2\" is written as \"A=1\""}),
    parameterCase({"A=1=b=c"}, {"system-parameters 0:0: \"A=1=b=c\" is written as \"A=1=b\""}),
    parameterCase({"A=x,,y"}, {"system-parameters 0:0: \"A=x,,y\" is written as \"A=x,y\""}),
    parameterCase({manyNs + manyNs + "12345678N=1"},
                  {"system-parameters 0:0: ...\"" + std::string(12, 'N') +
                   "12345678N=1\" is written as ...\"" + std::string(12, 'N') + "12345678=1\""}),
    parameterCase(
        {"B=1", "C=2"},
        {"system-parameters 0:0: there are 2 values; those behind the first are not read, "
         "and a merge removes them"}),
};

// The same findings in a backup, in one that is out of order, and in the database restored from it.
TEST(Check, FindsWhatIsWrongWithRecords) {
  const test::TempDir scratch;
  for (const RecordCase& test : recordCases) {
    SCOPED_TRACE(test.name);
    std::vector<Line> lines = test::smallFleet();
    test.change(lines);
    test::writeFile(scratch / "backup", test::backupText(lines));
    EXPECT_EQ(findingsIn(scratch.file("backup"), nullptr, false), test.findings);
    const std::string database = scratch.file(test.name);
    test::makeDatabase(database, lines);
    EXPECT_EQ(findingsIn(database), test.findings);
    std::reverse(lines.begin(), lines.end());
    test::writeFile(scratch / "backup", test::backupText(lines));
    EXPECT_EQ(findingsIn(scratch.file("backup"), nullptr, false), test.findings);
  }
}

struct LineCase {
  std::string name;
  std::function<void(std::string&)> change;  // of the text of a plain line, without its "\n"
  Shown findings;
};

std::function<void(std::string&)> put(std::size_t at, const std::string& text) {
  return [=](std::string& line) { line.replace(at, text.size(), text); };
}

const std::vector<LineCase> lineCases = {
    {"CR LF", [](auto& line) { line += "\r"; }, {}},
    {"cut behind the data",
     [](auto& line) { line.resize(430); },
     {"line-length line 4: 430 characters"}},
    {"longer", [](auto& line) { line += " "; }, {"line-length line 4: 441 characters"}},
    {"a blank line more",
     [](auto& line) { line += "\n"; },
     {"line-length line 5: 0 characters", "duplicate-key line 5 0:0/0: it has the key of line 1"}},
    {"so long that it is two records",
     [](auto& line) { line += std::string(50, ' '); },
     {"line-length line 4: 444 characters",
      "duplicate-key line 4 0:0/0: it has the key of line 1"}},
    {"a zero byte", [](auto& line) { line[200] = '\0'; }, {"zero-byte line 4: character 201"}},
    {"a zero byte at the start",
     [](auto& line) { line[0] = '\0'; },
     {"zero-byte line 4: a restore ends here, 441 bytes before the end of the file"}},
    {"no handle",
     put(48, "<1;1;2;0;0;0;7;#"),
     {"handle-column line 4: object handle \"<1;1;2;0;0;0;7;#\" is restored as <1;1;0;0;0;0;0;>",
      "duplicate-key line 4 0:0/0: it has the key of line 1"}},
    {"an identifier that does not fit",
     put(112, "<1;2;3;1;1;0;70000;7;>"),
     {"handle-column line 4: model handle \"<1;2;3;1;1;0;70000;7;>\" is restored as "
      "<1;2;3;1;1;0;4464;7;>"}},
    {"the older form of a handle", put(48, "<0;1;2;0;0;0;7;>"), {}},
    {"no numbers",
     [](auto& line) {
       put(160, "********")(line);
       put(432, "     12x")(line);
     },
     {"number-column line 4: first auxiliary value \"********\" is restored as 0",
      "number-column line 4: second auxiliary value \"12x\" is restored as 12"}},
    {"numbers aligned otherwise", put(160, " +12    "), {}},
    {"a data length beyond the column",
     put(168, "     257"),
     {"data-length line 4: data length 257 is not between 0 and 256"}},
    {"a data length below the data",
     put(168, "       0"),
     {"data-length line 4: data length 0, but the data ends at character 15"}},
};

TEST(Check, FindsWhatIsWrongWithLines) {
  const test::TempDir scratch;
  for (const LineCase& test : lineCases) {
    SCOPED_TRACE(test.name);
    std::string line = test::plainLine(7).text();
    test.change(line);
    test::writeFile(scratch / "backup", test::backupText(test::smallFleet()) + line + "\n");
    Shown found = findingsIn(scratch.file("backup"));
    // What a data length of 257 takes along is a text with a rest; the line is what counts here.
    std::erase_if(found,
                  [](const std::string& text) { return text.starts_with("text-left-over"); });
    EXPECT_EQ(found, test.findings);
  }
}

TEST(Check, FindsWhatOnlyADatabaseCanHold) {
  const test::TempDir scratch;
  std::vector<DataBuffer> records;
  for (const Line& line : test::smallFleet()) records.push_back(test::recordOf(line));
  const CMConfigHandle old(std::array<std::uint8_t, 8>{6, 0, 0, 0, 0, 0, 5, 0}.data());
  records[2].setObjectHandle(old);  // a signature names it in the new format
  records[1].setAttrText(attribute(17, {"1"}) + attribute(84, {handleValue(5, 6)}));
  DataBuffer record = test::recordOf(test::plainLine(7));
  record.setAuxValue1(100'000'000);
  records.push_back(record);
  record = test::recordOf(test::plainLine(8, "<2;0;1;a\nb;>"));
  records.push_back(record);
  record = test::recordOf(test::plainLine(9));
  record.data()[data_layout::attrText + 100] = 1;
  records.push_back(record);
  test::makeDatabase(scratch.file("db"), records);
  {
    const test::Opened database(scratch.file("db"));
    record = test::recordOf(test::plainLine(11));
    const DataBuffer key = test::recordOf(test::plainLine(10));
    ASSERT_EQ(kdb::AddRecord(database.handle, key.data(), 20, record.data(), 296), 0);
    ASSERT_EQ(database.close(), "0/0");
  }
  EXPECT_THAT(
      findingsIn(scratch.file("db")),
      ElementsAre(
          "stored-key 2:11/0: stored as parent <1;1;0;0;0;0;0;> object <1;1;2;0;0;0;10;> recn 0",
          "not-carried 2:7/0: the first auxiliary value needs more than the 8 characters of its "
          "column",
          "not-carried 2:8/0: the data holds a line feed, which would end the backup line",
          "not-carried 2:9/0: there are bytes behind the zero byte that ends its text"));
}

TEST(Check, FindsNothingInASampleItsDatabaseAndTheBackupOfThat) {
  const test::TempDir scratch;
  for (const SampleOrder order : {SampleOrder::key, SampleOrder::random}) {
    std::string text;
    ASSERT_TRUE(writeSample({3000, 4}, order, [&](std::string_view piece) {
      text += piece;
      return true;
    }));
    test::writeFile(scratch / "sample", text);
    CheckCounts counts;
    EXPECT_THAT(findingsIn(scratch.file("sample"), &counts), IsEmpty());
    EXPECT_FALSE(counts.isDatabase);
    EXPECT_EQ(counts.objects, 3000u);
    EXPECT_EQ(counts.outOfOrder > 0, order == SampleOrder::random);
    std::vector<DataBuffer> records(text.size() / 441);
    for (std::size_t i = 0; i < records.size(); ++i) {
      CMDatabaseBackupRecord(text.data() + i * 441).buildDataBuffer(records[i]);
    }
    const std::string database = scratch.file(order == SampleOrder::key ? "by key" : "random");
    test::makeDatabase(database, records);
    EXPECT_THAT(findingsIn(database, &counts), IsEmpty());
    EXPECT_TRUE(counts.isDatabase);
    EXPECT_GT(counts.references, 1000u);
    testing::internal::CaptureStdout();
    EXPECT_EQ(backup({.database = database, .file = scratch.file("backup")}).text, "");
    testing::internal::GetCapturedStdout();
    EXPECT_THAT(findingsIn(scratch.file("backup"), &counts), IsEmpty());
    EXPECT_EQ(counts.outOfOrder, 0u);
  }
}

TEST(Check, ReportsSomeOfManyFindingsAndCountsAll) {
  const test::TempDir scratch;
  std::vector<Line> lines = test::smallFleet();
  for (std::uint32_t id = 10; id < 15; ++id) lines.push_back(test::plainLine(id, "<2\x1B"));
  test::makeDatabase(scratch.file("db"), lines);
  testing::internal::CaptureStdout();
  const Result result = check({.input = scratch.file("db"), .limit = 2});
  EXPECT_EQ(testing::internal::GetCapturedStdout(),
            scratch.file("db") +
                ": database of 8 records, 8 objects, 1 models, 1 references\n\n"
                "text-left-over\n"
                "  an attribute text is not read to its end: the next rewrite of the object loses "
                "the rest\n"
                "  - parent <1;1;0;0;0;0;0;> object <1;1;2;0;0;0;10;>: 3 bytes from \"<2\\x1B\"\n"
                "  - parent <1;1;0;0;0;0;0;> object <1;1;2;0;0;0;11;>: 3 bytes from \"<2\\x1B\"\n"
                "  - and 3 more, which \"--limit 0\" shows\n\n"
                "findings by kind\n"
                "  text-left-over: 5\n");
  EXPECT_EQ(result.code, exitNotAsExpected);
  EXPECT_THAT(result.text, testing::StartsWith("5 findings, "));

  testing::internal::CaptureStdout();
  EXPECT_EQ(check({.input = scratch.file("db"), .limit = 0, .json = true}).code, exitNotAsExpected);
  const auto json = nlohmann::json::parse(testing::internal::GetCapturedStdout());
  EXPECT_EQ(json["version"], 1);
  EXPECT_EQ(json["form"], "database");
  EXPECT_EQ(json["findings"], 5);
  EXPECT_EQ(json["kinds"][0]["kind"], "text-left-over");
  EXPECT_EQ(json["kinds"][0]["count"], 5);
  EXPECT_EQ(json["kinds"][0]["shown"].size(), 5u);
  EXPECT_EQ(json["kinds"][0]["shown"][4]["objectHandle"], "<1;1;2;0;0;0;14;>");

  EXPECT_EQ(check({.input = scratch.file("none")}).code, exitNotOpened);
  EXPECT_EQ(check({.input = scratch.path()}).code, exitNotOpened);
  EXPECT_EQ(check({.input = "/proc/self/mem"}).code, exitFailed);
  EXPECT_EQ(check({.input = "/proc/self/stat"}).code, exitNotOpened);
  for (const char* limit : {"-1", ""}) {
    const auto run = test::runProgram({.file = test::builtProgram("orxkdb"),
                                       .arguments = {"check", "--limit", limit, scratch / "db"}});
    EXPECT_EQ(run.exitCode, exitUsage) << run.errors;
  }
}

// Lines are cut into records as a restore cuts them.
TEST(BackupFile, TakesLinesAsARestoreDoes) {
  const test::TempDir scratch;
  std::string text;
  for (const std::size_t length : {440, 0, 443, 444, 445, 900, 440, 442, 30}) {
    text += std::string(length, static_cast<char>('a' + text.size() % 26)) +
            (length % 3 == 0 ? "\r\n" : "\n");
  }
  text.insert(100, 1, '\0');
  text += std::string(440, 'z');
  test::writeFile(scratch / "backup", text);
  BackupReader reader;
  ASSERT_TRUE(reader.open(scratch.file("backup").c_str()));
  BackupFile file;
  ASSERT_TRUE(file.open(scratch.file("backup")).ok());
  BackupPiece piece;
  std::vector<std::uint64_t> offsets;
  std::vector<std::string> records;
  for (CMDatabaseBackupRecord expected; reader.next(expected) == ReadOutcome::line;) {
    ASSERT_TRUE(file.next(piece));
    EXPECT_EQ(piece.line, reader.lineNumber());
    offsets.push_back(piece.offset);
    records.emplace_back(expected.text());
  }
  EXPECT_FALSE(file.next(piece));
  for (std::size_t i = records.size(); i-- > 0;) {
    CMDatabaseBackupRecord record;
    ASSERT_TRUE(file.readAt(offsets[i], record));
    EXPECT_EQ(record.text(), records[i]) << i;
  }
}

}  // namespace
}  // namespace orx::orxkdb
