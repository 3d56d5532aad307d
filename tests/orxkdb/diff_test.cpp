#include "orxkdb/cmd_diff.h"

#include <gmock/gmock.h>

#include "orxkdb/diff/carried_source.h"
#include "tests/restore/merge_records.h"
#include "tests/support/program_runs.h"
#include "tests/support/sample_text.h"
#include "tests/support/small_fleet.h"

namespace orx::orxkdb {
namespace {

using test::attribute, test::backupOf, test::handleText, test::handleValue, test::Line;
using testing::HasSubstr;
using Records = std::vector<DataBuffer>;
using Lines = std::vector<Line>;

const std::string self = handleValue(2, 5);
const std::string chain = attribute(2, {"a", "b", "c"}) + attribute(94, {self});

// The managed system 2:5, a record for each text.
Lines managed(const std::vector<std::string>& texts = {chain}) {
  Lines lines;
  for (const std::string& text : texts) {
    lines.push_back(test::referringLine(5));
    lines.back().recn = static_cast<std::int32_t>(lines.size()) - 1;
    lines.back().data = text;
  }
  return lines;
}

// The small fleet with this managed system.
Records fleet(const Lines& system = managed()) {
  Lines lines = test::smallFleet();
  lines.pop_back();
  lines.insert(lines.end(), system.begin(), system.end());
  return test::recordsOf(lines);
}

class Diff : public testing::Test {
 protected:
  std::string database(const std::string& name, const Records& records) {
    test::makeDatabase(scratch_.file(name), records);
    return scratch_.file(name);
  }
  std::string backup(const std::string& name, const std::string& text) {
    test::writeFile(scratch_ / name, text);
    return scratch_.file(name);
  }

  std::string run(const DiffOptions& options, ExitCode code) {
    const std::string output = test::printed([&] { result_ = diff(options); });
    EXPECT_EQ(result_.code, code) << result_.text << "\n" << output;
    return output;
  }
  // The report up to the summary.
  std::string changes(const std::string& before, const std::string& after, bool records = false) {
    const std::string output =
        run({.before = before, .after = after, .limit = 0, .records = records}, exitDifferent);
    return output.substr(0, output.find("\ncompared\n"));
  }

  test::TempDir scratch_;
  Result result_;
};

struct ChangeCase {
  std::string name;
  Lines system;        // in place of managed()
  std::string report;  // behind the heading of the object 2:5
};

const std::string selfWords =
    "<1;1;2;0;0;0;5;>, 0500000000000201, new format, type 2, identifier 5";
const std::string modelWords =
    "<1;1;12;0;0;0;1;>, 0100000000000C01, new format, type 12, identifier 1";
const std::string inOtherOrder =
    "  attribute 2 of group 0, key 2, 3 values, values that both have stand in another order\n";

const ChangeCase changeCases[] = {
    {"head fields",
     {{Line{}.parent, handleText(2, 5), 0, 3, handleText(2, 5), -1, chain, 7}},
     "  recType: 2 -> 3\n  modelHandle: " + modelWords + " -> " + selfWords +
         "\n  auxValue1: 0 -> -1\n  auxValue2: 1 -> 7\n"},
    {"values", managed({attribute(2, {"a", "x"}) + attribute(94, {"gone"})}),
     "  attribute 2 of group 0, key 2, 3 values -> 2\n    - 2: \"b\"\n    - 3: \"c\"\n"
     "    + 2: \"x\"\n  attribute 94 of group 0, key 94 (handles), 1 value\n    - 1: " +
         selfWords + "\n    + 1: \"gone\"\n"},
    {"values that changed places behind others",
     managed({attribute(2, {"a", "c", "b"}) + attribute(94, {self})}),
     inOtherOrder + "    - 2: \"b\"\n    - 3: \"c\"\n    + 2: \"c\"\n    + 3: \"b\"\n"},
    {"values that changed places beside others",
     managed({attribute(2, {"b", "a", "d"}) + attribute(94, {self})}),
     inOtherOrder + "    - 3: \"c\"\n    + 3: \"d\"\n"},
    {"a value that is there once more",
     managed({attribute(2, {"b", "b", "d"}) + attribute(94, {self})}),
     "  attribute 2 of group 0, key 2, 3 values\n    - 1: \"a\"\n    - 3: \"c\"\n"
     "    + 2: \"b\"\n    + 3: \"d\"\n"},
    {"attributes", managed({attribute(2, {"a", "b", "c"}) + "<5;1;1;\x01;>"}),
     "  attribute 94 of group 0, key 94 (handles), removed with 1 value\n    - 1: " + selfWords +
         "\n  attribute 5 of group 1, key 4101, added with 1 value\n    + 1: \"\\x01\"\n"},
    {"the second of two attributes with one key", managed({chain + attribute(2, {"d"})}),
     "  attribute 2 of group 0, key 2, added with 1 value\n    + 1: \"d\"\n"},
    {"a longer chain", managed({chain.substr(0, 10), chain.substr(10)}),
     "  chain: 1 record -> 2\n"},
    {"other bytes only", managed({attribute(94, {self}) + attribute(2, {"a ", "b", "c"})}),
     "  same attributes, other records\n  record 0: text of 48 -> 49 bytes, from byte 1 on "
     "\"2;0;3;a;b;c;><94;0;1;<1;;1;;2;;0\"... -> \"94;0;1;<1;;1;;2;;0;;0;;0;;5;;>>;\"...\n"},
    {"a text that does not parse", managed({chain + "<6;0;2;e;>"}),
     "  text that does not parse, compared byte by byte\n"
     "  record 0: text of 48 -> 58 bytes, from byte 48 on \"\" -> \"<6;0;2;e;>\"\n"},
};

TEST_F(Diff, TellsWhatChangedWhateverTheFormsAre) {
  const std::string forms[] = {database("a", fleet()), backup("a.txt", backupOf(fleet()))};
  for (const ChangeCase& test : changeCases) {
    const Records now = fleet(test.system);
    const std::string nowForms[] = {database(test.name, now),
                                    backup(test.name + ".txt", backupOf(now, "\r\n"))};
    for (const std::string& before : forms) {
      for (const std::string& after : nowForms) {
        EXPECT_EQ(changes(before, after),
                  "changed: object <1;1;2;0;0;0;5;> parent <1;1;0;0;0;0;0;>\n" + test.report);
      }
    }
  }
}

TEST_F(Diff, ShowsRecordsWhenAskedAndAddedAndRemovedObjects) {
  const std::string before = database("a", fleet(managed({chain, "<7;0;1;x;>"})));
  Lines now = managed({chain, "<7;0;1;y;>", "<7;0;1;y;>"});
  now[0].auxValue1 = 1;
  now[1].recType = 3;
  const std::string after = database("b", fleet(now));
  EXPECT_THAT(changes(before, after, true),
              HasSubstr("  record 0: auxValue1 0 -> 1\n"
                        "  record 1: recType 2 -> 3, text of 10 bytes, from byte 7 on "
                        "\"x;>\" -> \"y;>\"\n"
                        "  record 2: added with 10 bytes of text, \"<7;0;1;y;>\"\n"));
  EXPECT_THAT(changes(after, before, true), HasSubstr("  record 2: removed with 10 bytes"));
  for (Line& line : now) line.parent = handleText(3, 1);
  EXPECT_EQ(changes(before, database("c", fleet(now))),
            "removed: object <1;1;2;0;0;0;5;> parent <1;1;0;0;0;0;0;>, recType 2, 2 records, 3 "
            "attributes\n"
            "added: object <1;1;2;0;0;0;5;> parent <1;1;3;0;0;0;1;>, recType 2, 3 records, 4 "
            "attributes\n");
  EXPECT_THAT(result_.text, HasSubstr("1 added, 1 removed, 0 changed, " + before));
}

TEST_F(Diff, LimitsWhatIsShownAndCountsAll) {
  Lines old = test::smallFleet(), now = old;
  for (std::uint32_t id = 10; id < 13; ++id) {
    old.insert(old.end(), {test::plainLine(id), test::plainLine(id + 100)});
    now.insert(now.end(), {test::plainLine(id, attribute(2, {"x"})), test::plainLine(id + 200)});
  }
  DiffOptions options{.before = database("a", test::recordsOf(old)),
                      .after = database("b", test::recordsOf(now)),
                      .limit = 2};
  EXPECT_THAT(run(options, exitDifferent),
              HasSubstr("  changed: 3, the first 2 are shown; \"--limit 0\" shows all\n"
                        "    attributes with other values: 3\n"
                        "  unchanged: 3\n"));
  options.json = true;
  test::expectJson(run(options, exitDifferent), R"({"/objects#": 6, "/summary/removed": 3})");
}

TEST_F(Diff, PrintsJson) {
  const std::string same = database("a", fleet());
  test::expectJson(run({.before = same, .after = same, .json = true}, exitDone),
                   R"({"/version": 1, "/same": true, "/objects": []})");
  Lines now = test::smallFleet();
  now[1].auxValue1 = 4;
  now[1].data = attribute(84, {handleValue(2, 6)});
  now[2].data = "\xFF<";
  const std::string after = backup("b", test::backupText(now) + "\n");
  test::expectJson(run({.before = same, .after = after, .json = true}, exitDifferent), R"({
      "/inputs/0/form": "database", "/inputs/1/unreadableShown/0/line": 4, "/objects#": 2,
      "/objects/0/head/0": {"field": "auxValue1", "old": 0, "new": 4},
      "/objects/0/attributes/0/change": "removed",
      "/objects/0/attributes/2/new/0/handle/identifier": 6,
      "/objects/1/object/identifier": 5, "/objects/1/textsParse": false})");
}

TEST_F(Diff, TakesTheLinesOfABackupInAnyOrder) {
  auto lines = test::splitLines(test::sampleText({.objects = 300}, SampleOrder::random));
  const auto file = [&](const char* name) {
    std::string text;
    for (const std::string& line : lines) text += line + "\n";
    return backup(name, text);
  };
  const std::string shuffled = file("shuffled");
  std::ranges::reverse(lines);
  EXPECT_THAT(run({.before = shuffled, .after = file("reversed")}, exitDone), HasSubstr("same\n"));

  // The first line of a key counts, in the order of the file.
  lines.push_back(lines.front());
  lines.back().replace(430, 1, "!");
  lines.back().replace(160, 8, "      77");
  EXPECT_THAT(run({.before = shuffled, .after = file("twice")}, exitDone),
              HasSubstr("    1 more ignored"));
  std::ranges::reverse(lines);
  EXPECT_THAT(changes(shuffled, file("first")), HasSubstr("auxValue1"));
}

TEST_F(Diff, CountsLinesThatAreNoRecords) {
  const std::string good = backupOf(fleet());
  const std::string key = good.substr(0, 96);
  const std::string before = backup("a", good);
  const std::string after =
      backup("b", good.substr(0, 441) + "notes\n" + good.substr(441, 441) + good.substr(882, 440) +
                      std::string(10, 'x') + "\n" + key + "     1x\n");
  const std::string place = "unreadable line: " + after;
  EXPECT_EQ(changes(before, after), place + ":2, it has no parent handle: \"notes\"\n" + place +
                                        ":4, the line is too long, and this is its rest\n" + place +
                                        ":5, it has no record number: \"" + key + "     1x\"\n");
  EXPECT_THAT(run({.before = after, .after = before, .limit = 1}, exitDifferent),
              HasSubstr("and 2 more, which \"--limit 0\" shows\n"));
}

// Records with everything that a line changes: old and temporary handles, bytes behind the text.
Records oddRecords() {
  const CMConfigHandle handles[] = {
      CMConfigHandle(),
      CMConfigHandle(2, 5),
      CMConfigHandle(4, 5),
      CMConfigHandle::createTemporaryHandle(4, 5),
      CMConfigHandle(CMConfigHandle(2, 2), CMConfigHandle(3, 7)),
      CMConfigHandle(CMConfigHandle(), CMConfigHandle(3, 70000), CMConfigHandle(6, 9))};
  Records records;
  for (const CMConfigHandle& parent : handles) {
    for (const CMConfigHandle& object : handles) {
      const auto number = static_cast<std::uint32_t>(records.size());
      DataBuffer record;
      record.setParentHandle(parent);
      record.setObjectHandle(object);
      record.setModelHandle(parent);
      record.setAttrText(std::string(7 * number, "a! "[number % 3]));
      if (number % 4 == 1) record.data()[data_layout::attrText + 5 * number] = 0;
      records.push_back(record);
      if (number % 4 != 2) continue;
      record.setAuxValue1(1);
      record.data()[data_layout::objectHandle + 7] ^= 1;
      records.push_back(record);
    }
  }
  return records;
}

TEST_F(Diff, ComparesADatabaseWithABackupByWhatTheBackupCarries) {
  const Records records = oddRecords();
  for (const DataBuffer& record : records) {
    DataBuffer restored;
    CMDatabaseBackupRecord(record).buildDataBuffer(restored);
    ASSERT_EQ(carriedForm(record), restored);
  }
  const std::string odd = database("a", records);
  Records stored;
  for (const auto& bytes : test::Opened(odd, kdb::openForReading).all()) {
    std::ranges::copy(bytes, stored.emplace_back().data());
  }
  const std::string copy = backup("b", backupOf(stored));
  EXPECT_THAT(run({.before = odd, .after = copy}, exitDone), HasSubstr("hold more than a backup"));
  EXPECT_THAT(run({.before = copy, .after = odd}, exitDone), HasSubstr("more ignored"));
  stored.front().setAuxValue2(1);
  EXPECT_THAT(changes(odd, backup("c", backupOf(stored))), HasSubstr("auxValue2: 0 -> 1"));
  Records notCarried = fleet();
  notCarried[2].setAuxValue1(100000000);
  EXPECT_THAT(changes(database("d", notCarried), backup("e", backupOf(fleet()))),
              HasSubstr("auxValue1: 100000000 -> 0"));
}

}  // namespace
}  // namespace orx::orxkdb
