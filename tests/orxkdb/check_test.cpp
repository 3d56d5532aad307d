#include "orxkdb/cmd_check.h"

#include <gmock/gmock.h>

#include "orxkdb/check/check_run.h"
#include "tests/support/program_runs.h"
#include "tests/support/small_fleet.h"

namespace orx::orxkdb {
namespace {

using test::attribute, test::handleText, test::handleValue, test::Line;
using test::modelLine, test::plainLine, test::systemLine;
using Lines = std::vector<Line>;

class Check : public testing::Test {
 protected:
  // "KIND line N TYPE:ID/RECN: TEXT" of every finding, one a line.
  std::string findingsIn(const std::string& input, bool withLines = true) {
    Findings findings(0);
    counts_ = {};
    EXPECT_EQ(runCheck(input, findings, counts_).text, "");
    std::string shown;
    for (const FindingKindText& kind : findingKinds) {
      for (const Finding& finding : findings.kept(kind.kind)) {
        const Place& place = finding.place;
        shown += kind.name;
        if (withLines && place.line != 0) shown += " line " + std::to_string(place.line);
        if (place.object) {
          const CMConfigHandle object = handleOf(place.object->object);
          shown += " " + std::to_string(object.getType()) + ":" +
                   std::to_string(static_cast<std::int32_t>(object));
        }
        if (place.recn) shown += "/" + std::to_string(*place.recn);
        shown += ": " + finding.text + "\n";
      }
    }
    return shown;
  }
  std::string findingsInLines(const Lines& lines) {
    test::writeFile(scratch_ / "backup", test::backupText(lines));
    return findingsIn(scratch_.file("backup"), false);
  }

  test::TempDir scratch_;
  CheckCounts counts_;
};

template <typename T>
Line with(T Line::*column, const std::type_identity_t<T>& value, Line line) {
  line.*column = value;
  return line;
}
Line recordAt(std::int32_t recn, const Line& line) {
  return with(&Line::recn, recn, line);
}
Line model(std::uint32_t id, const Line& line) {
  return with(&Line::object, handleText(12, id), line);
}
Line below(const std::string& parent, const Line& line) {
  return with(&Line::parent, parent, line);
}

// The small fleet with more lines, or with another one in the place of one of its own.
Lines add(const Lines& more) {
  Lines lines = test::smallFleet();
  lines.insert(lines.end(), more.begin(), more.end());
  return lines;
}
Lines replace(std::size_t at, const Line& line, const Lines& more = {}) {
  Lines lines = add(more);
  lines[at] = line;
  return lines;
}

// Counters of 100, but for these.
std::vector<std::string> counters(const std::map<std::size_t, const char*>& others,
                                  std::size_t count = 26) {
  std::vector<std::string> values(count, "100");
  for (const auto& [index, value] : others) values[index] = value;
  return values;
}

struct RecordCase {
  std::string name;
  Lines lines;
  std::string findings;
};

RecordCase parameterCase(const std::vector<std::string>& values, const std::string& finding) {
  return {"parameters " + values.front(),
          replace(0, {.data = attribute(1, values) + attribute(9, counters({}))}),
          finding.empty() ? "" : "system-parameters 0:0: " + finding + "\n"};
}

Line strayBelow(std::uint32_t id) {
  return {.parent = handleText(2, id), .data = attribute(60, {"stray"})};
}
const Line systemBelow = below(handleText(2, 5), {.data = attribute(9, {"1"})});
const Line orphan = with(&Line::model, handleText(12, 2), below(handleText(3, 4), plainLine(7)));
const std::string inherited = "<1;2;3;1;1;0;2;7;>";
const std::string manyNs(40, 'N');
const std::string lastNs = "...\"" + std::string(12, 'N');

const std::vector<RecordCase> recordCases = {
    {"gaps, and records that disagree",
     add({plainLine(7), recordAt(3, plainLine(7)), recordAt(5, plainLine(7)),
          recordAt(2, plainLine(8)), plainLine(9),
          recordAt(1, with(&Line::recType, 3, with(&Line::auxValue2, 9, plainLine(9, ""))))}),
     "chain-gap 2:7/3: records 1 to 2 are missing\n"
     "chain-gap 2:7/5: record 4 is missing\n"
     "chain-gap 2:8/2: records 0 to 1 are missing\n"
     "chain-disagrees 2:9/1: not as in record 0: recType, auxValue2\n"
     "repeated-attribute 2:7: attribute 2\n"},
    {"texts that come back as others",
     add({plainLine(7, "<2;0;1;x;>junk<3;0;0;>"), plainLine(8, "<2;0;1;x;"),
          plainLine(9, "<2;0;3;a;b;><3;0;1;a;b;><4;><5;0;-1;a;>"),
          plainLine(10, attribute(3, {"a\t"})), plainLine(11, "<4;1;2;a;;;b;>"),
          plainLine(12, attribute(3, {"a  ", "b\tc", " "})),
          plainLine(13, attribute(3, {"a", " ", "b  c"})), plainLine(14, "<2;0;2;a;;; ;>"),
          plainLine(15, "<2;0;2;a;;b;c;>"), plainLine(16, "<2;0;2;a;;;;>"),
          plainLine(
              17, "<70000;0;1;a;><2x;0;1;b;><3; 0;1 ;b;><5;32767;0;><4294967300;0;0;><6897;0;0;>"),
          plainLine(18, "<32767;32760;0;><32767;32761;0;>"),
          plainLine(19, attribute(94, {handleValue(2, 5), "0500000000000201", "0000000000000000",
                                       "050000000000020", "0a00000000000201", handleValue(2, 99)})),
          with(&Line::recType, 254, plainLine(20)), with(&Line::recType, 255, plainLine(21)),
          with(&Line::recType, -1, plainLine(22))}),
     "record-type 2:21: it is 255\nrecord-type 2:22: it is -1\n"
     "text-left-over 2:7: 12 bytes from \"junk<3;0;0;>\"\n"
     "text-left-over 2:8: 9 bytes from \"<2;0;1;x;\"\n"
     "attribute-header 2:17: attribute 368/1 is written \"70000;0;1\"\n"
     "attribute-header 2:17: attribute 2 is written \"2x;0;1\"\n"
     "attribute-header 2:17: attribute 4 is written \"4294967300;0;0\"\n"
     "attribute-header 2:18: attribute 4095/32768 is written \"32767;32761;0\"\n"
     "value-count 2:9: attribute 2 states 3 values, 2 can be read\n"
     "value-count 2:9: attribute 3 has more than the 1 values it states\n"
     "value-count 2:9: attribute 0 has no header of three numbers: \"4;\"\n"
     "value-count 2:9: attribute 5 states -1 values, 1 can be read\n"
     "value-count 2:16: attribute 2 states 2 values, 0 can be read\n"
     "not-read-back 2:10: attribute 3 has a value that ends in a TAB\n"
     "not-read-back 2:12: attribute 3 has a value with a TAB\n"
     "not-read-back 2:12: attribute 3 has a value that ends in blanks\n"
     "ambiguous-value 2:11: attribute 4/1 has \";;;\" between two values\n"
     "handle-value 2:19: attribute 94 has the value \"050000000000020\"\n"
     "handle-value 2:19: attribute 94 has the value \"0a00000000000201\"\n"
     "missing-object 2:19: attribute 94 names <1;1;2;0;0;0;99;>, which is not there\n"},
    {"a model without its first record",
     add({recordAt(1, model(2, modelLine(attribute(17, {"0"}), ""))),
          recordAt(1, model(33, modelLine(attribute(17, {"0"}), "")))}),
     "chain-gap 12:2/1: record 0 is missing\n"
     "chain-gap 12:33/1: record 0 is missing; \"orxrestore -u\" joins the others to those of "
     "<1;1;12;0;0;0;1;>\n"},
    {"models and parents that are not there",
     add({orphan, with(&Line::object, handleText(2, 8), orphan),
          with(&Line::model, inherited, below(inherited, plainLine(9)))}),
     "missing-object 2:7: its parent is not there; it is that of 1 more object\n"
     "missing-object 2:7: its model <1;1;12;0;0;0;2;> is not there\n"
     "missing-object 2:8: its model <1;1;12;0;0;0;2;> is not there\n"},
    {"parents that lead back to their child",
     add({below(handleText(2, 7), plainLine(7)), below(handleText(2, 9), plainLine(8)),
          below(handleText(2, 8), plainLine(9)), below(handleText(2, 8), plainLine(10)),
          below(handleText(2, 10), plainLine(6))}),
     "parent-cycle 2:7: it is its own parent\n"
     "parent-cycle 2:8: its parents lead back to it: <1;1;2;0;0;0;9;>, <1;1;2;0;0;0;8;>\n"},
    {"a model that is none, and one without a use count",
     replace(1, modelLine(""), {with(&Line::model, handleText(2, 5), plainLine(7))}),
     "not-a-model 2:7: its model <1;1;2;0;0;0;5;> is none\n"
     "no-use-count 12:1: 1 object refers to it\n"},
    {"another reference than the model tells of", replace(2, test::referringLine(6)),
     "signatures 12:1: 1 is listed, 1 object refers to it; <1;1;2;0;0;0;5;> does not; "
     "<1;1;2;0;0;0;6;> is not listed\n"},
    {"a use count that is wrong",
     replace(1, modelLine(attribute(17, {"3"})),
             {model(2, modelLine(attribute(17, {"0", "0"}), "")),
              model(3, modelLine(attribute(17, {"0x"}), ""))}),
     "use-count 12:1: it is 3, 1 object refers to it\n"
     "use-count 12:2: it is not one number, 0 objects refer to it\n"
     "use-count 12:3: it is not one number, 0 objects refer to it\n"},
    {"references that do not count: of another record type, and to models without a use count",
     add({with(&Line::recType, 26, test::referringLine(6)),
          model(2, modelLine("", attribute(84, {handleValue(2, 6)}))),
          with(&Line::object, handleText(26, 1),
               with(&Line::recType, 26, modelLine(attribute(17, {"9"}))))}),
     ""},
    {"two models of one handle", add({below(handleText(2, 5), modelLine())}),
     "use-count 12:1: it is 1, 0 objects refer to it\n"
     "signatures 12:1: 1 is listed, 0 objects refer to it; <1;1;2;0;0;0;5;> does not\n"},
    {"a system record that a merge does not take",
     replace(0, with(&Line::auxValue2, 1, systemLine())),
     "no-system-record: no record with a null object handle and auxValue2 0\n"},
    {"a system record below a parent, which a merge takes", replace(0, systemBelow),
     "stray-system-record 0:0: 1 record with auxValue2 0, 10 bytes of text\n"
     "counter 0:0: value 1, of type 2, is missing; the highest identifier in use is 5\n"
     "counter 0:0: value 7, of type 12, is missing; the highest identifier in use is 1\n"},
    {"records below a parent that a merge takes for the system record's, and that it does not",
     add({recordAt(1, strayBelow(5)), strayBelow(5), with(&Line::auxValue2, -1, strayBelow(7)),
          plainLine(7)}),
     "repeated-attribute 0:0: attribute 60\n"
     "stray-system-record 0:0: 2 records with auxValue2 0, 30 bytes of text\n"},
    {"no counters", replace(0, {.data = attribute(1, {"A=1"})}),
     "no-counters 0:0: attribute 9 is missing\n"},
    {"counters that are wrong", replace(0, systemLine({"x", "5", "-5"})),
     "counter 0:0: value 0, of type 1, is no number\n"
     "counter 0:0: value 1, of type 2, is 5; the highest identifier in use is 5\n"
     "counter 0:0: value 7, of type 12, is missing; the highest identifier in use is 1\n"
     "near-limit 0:0: value 2, of type 3, is 4294967291\n"},
    {"counters that only look like numbers, and too many",
     replace(0, systemLine(counters({{1, "1-"}, {4, "4294967297"}}, 27))),
     "counter 0:0: there are 27 values; those behind the first 26 are not read, and a merge "
     "removes them\n"
     "counter 0:0: value 1, of type 2, is \"1-\", which a merge reads as 1; the highest "
     "identifier in use is 5\n"
     "counter 0:0: value 4, of type 5, is \"4294967297\", which a merge reads as 1\n"},
    {"identifiers near the highest",
     replace(0, systemLine(counters({{0, "4293967296"}, {1, "4294967295"}})),
             {plainLine(4293967296), plainLine(4293967297)}),
     "near-limit 0:0: value 1, of type 2, is 4294967295\n"
     "near-limit 2:-999999: its identifier is 4293967297\n"},
    parameterCase({"A= 1= note,B=,C =x"}, ""),
    parameterCase({",A=1"}, "\",A=1\" is written as \"\""),
    parameterCase({"A=1,A=2"}, "\"A=1,A=2\" is written as \"A=1\""),
    parameterCase({manyNs + "12345678N=1"},
                  lastNs + "12345678N=1\" is written as " + lastNs + "12345678=1\""),
    parameterCase({"B=1", "C=2"},
                  "there are 2 values; those behind the first are not read, and a merge removes "
                  "them"),
};

// The same findings in a backup, in one that is out of order, and in the database restored from it.
TEST_F(Check, FindsWhatIsWrongWithRecords) {
  for (const RecordCase& test : recordCases) {
    SCOPED_TRACE(test.name);
    Lines lines = test.lines;
    EXPECT_EQ(findingsInLines(lines), test.findings);
    test::makeDatabase(scratch_.file(test.name), lines);
    EXPECT_EQ(findingsIn(scratch_.file(test.name)), test.findings);
    std::reverse(lines.begin(), lines.end());
    EXPECT_EQ(findingsInLines(lines), test.findings);
  }
}

struct LineCase {
  const char* name;
  std::function<void(std::string&)> change;  // of the text of a plain line, without its "\n"
  const char* findings;
};

std::function<void(std::string&)> put(std::size_t at, const std::string& text) {
  return [=](std::string& line) { line.replace(at, text.size(), text); };
}

const LineCase lineCases[] = {
    {"cut behind the data", [](auto& line) { line.resize(430); },
     "line-length line 4: 430 characters\n"},
    {"a blank line more", [](auto& line) { line += "\n"; },
     "line-length line 5: 0 characters\nduplicate-key line 5 0:0/0: it has the key of line 1\n"},
    {"so long that it is two records", [](auto& line) { line += std::string(50, ' '); },
     "line-length line 4: 444 characters\nduplicate-key line 4 0:0/0: it has the key of line 1\n"},
    {"a zero byte", [](auto& line) { line[200] = '\0'; }, "zero-byte line 4: character 201\n"},
    {"a zero byte at the start", [](auto& line) { line[0] = '\0'; },
     "zero-byte line 4: a restore ends here, 441 bytes before the end of the file\n"},
    {"no handle", put(48, "<1;1;2;0;0;0;7;#"),
     "handle-column line 4: object handle \"<1;1;2;0;0;0;7;#\" is restored as <1;1;0;0;0;0;0;>\n"
     "duplicate-key line 4 0:0/0: it has the key of line 1\n"},
    {"an identifier that does not fit", put(112, "<1;2;3;1;1;0;70000;7;>"),
     "handle-column line 4: model handle \"<1;2;3;1;1;0;70000;7;>\" is restored as "
     "<1;2;3;1;1;0;4464;7;>\n"},
    {"the older form of a handle", put(48, "<0;1;2;0;0;0;7;>"), ""},
    {"no number", put(160, "********"),
     "number-column line 4: first auxiliary value \"********\" is restored as 0\n"},
    {"not only a number", put(432, "     12x"),
     "number-column line 4: second auxiliary value \"12x\" is restored as 12\n"},
    {"a number aligned otherwise", put(160, " +12    "), ""},
    {"a data length beyond the column", put(168, "     257"),
     "data-length line 4: data length 257 is not between 0 and 256\n"},
    {"a data length below the data", put(168, "       0"),
     "data-length line 4: data length 0, but the data ends at character 15\n"},
};

TEST_F(Check, FindsWhatIsWrongWithLines) {
  for (const LineCase& test : lineCases) {
    std::string line = plainLine(7).text();
    test.change(line);
    test::writeFile(scratch_ / "backup", test::backupText(test::smallFleet()) + line + "\n");
    const std::string found = findingsIn(scratch_.file("backup"));
    // What a data length of 257 takes along is a text with a rest; the line is what counts here.
    EXPECT_EQ(found.substr(0, found.find("text-left-over")), test.findings) << test.name;
  }
}

TEST_F(Check, FindsWhatOnlyADatabaseCanHold) {
  std::vector<DataBuffer> records = test::recordsOf(test::smallFleet());
  const CMConfigHandle old(std::array<std::uint8_t, 8>{6, 0, 0, 0, 0, 0, 5, 0}.data());
  records[2].setObjectHandle(old);  // a signature names it in the new format
  records[1].setAttrText(attribute(17, {"1"}) + attribute(84, {handleValue(5, 6)}));
  records.push_back(test::recordOf(plainLine(7)));
  records.back().setAuxValue1(100'000'000);
  records.push_back(test::recordOf(plainLine(8, "<2;0;1;a\nb;>")));
  records.push_back(test::recordOf(plainLine(9)));
  records.back().data()[data_layout::attrText + 100] = 1;
  test::makeDatabase(scratch_.file("db"), records);
  {
    const test::Opened database(scratch_.file("db"));
    test::addUnder(database, test::recordOf(plainLine(10)), test::recordOf(plainLine(11)));
    ASSERT_EQ(database.close(), "0/0");
  }
  EXPECT_EQ(findingsIn(scratch_.file("db")),
            "stored-key 2:11/0: stored as parent <1;1;0;0;0;0;0;> object <1;1;2;0;0;0;10;> recn 0\n"
            "not-carried 2:7/0: the first auxiliary value needs more than the 8 characters of its "
            "column\n"
            "not-carried 2:8/0: the data holds a line feed, which would end the backup line\n"
            "not-carried 2:9/0: there are bytes behind the zero byte that ends its text\n");
}

TEST_F(Check, FindsNothingInASampleItsDatabaseAndTheBackupOfThat) {
  const auto result = test::runProgram(test::shellScript(scratch_, R"(set -e
for fleet in '20 key' '3000 key' '3000 random'; do
  set -- $fleet; rm -rf db*; orxkdb create db > log
  orxkdb sample --objects $1 --seed 4 --order $2 backup > log; orxkdb check backup
  orxrestore -i backup -o db > log; orxkdb check db
  orxkdb backup db again > log; orxkdb check again
done)"));
  EXPECT_EQ(result.exitCode, exitDone) << result.errors << result.output;
  EXPECT_THAT(result.output, testing::EndsWith(R"(
backup: backup of 3489 records, 3000 objects, 150 models, 2048 references
1757 lines are out of key order, which a restore does not mind
no findings
db: database of 3489 records, 3000 objects, 150 models, 2048 references
no findings
again: backup of 3489 records, 3000 objects, 150 models, 2048 references
no findings
)"));
}

TEST_F(Check, ReportsSomeOfManyFindingsAndCountsAll) {
  Lines lines = test::smallFleet();
  for (std::uint32_t id = 10; id < 15; ++id) lines.push_back(plainLine(id, "<2\x1B\xC2\x9B"));
  test::makeDatabase(scratch_.file("db"), lines);
  Result result;
  EXPECT_EQ(test::printed([&] { result = check({.input = scratch_.file("db"), .limit = 2}); }),
            scratch_.file("db") + R"(: database of 8 records, 8 objects, 1 models, 1 references

text-left-over
  an attribute text is not read to its end: the next rewrite of the object loses the rest
  - parent <1;1;0;0;0;0;0;> object <1;1;2;0;0;0;10;>: 5 bytes from "<2\x1B\xC2\x9B"
  - parent <1;1;0;0;0;0;0;> object <1;1;2;0;0;0;11;>: 5 bytes from "<2\x1B\xC2\x9B"
  - and 3 more, which "--limit 0" shows

findings by kind
  text-left-over: 5
)");
  EXPECT_EQ(result.code, exitNotAsExpected);
  EXPECT_THAT(result.text, testing::StartsWith("5 findings, "));

  const CheckOptions all{.input = scratch_.file("db"), .limit = 0, .json = true};
  test::expectJson(test::printed([&] { EXPECT_EQ(check(all).code, exitNotAsExpected); }),
                   R"({"/version": 1, "/form": "database", "/findings": 5, "/kinds/0/count": 5,
                       "/kinds/0/kind": "text-left-over", "/kinds/0/shown#": 5,
                       "/kinds/0/shown/4/objectHandle": "<1;1;2;0;0;0;14;>"})");
}

}  // namespace
}  // namespace orx::orxkdb
