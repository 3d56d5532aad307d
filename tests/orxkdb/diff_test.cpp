#include "orxkdb/cmd_diff.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <map>
#include <nlohmann/json.hpp>
#include <random>
#include <string>
#include <vector>

#include "orxkdb/diff/carried_source.h"
#include "orxkdb/diff/value_changes.h"
#include "orxkdb/program.h"
#include "orxkdb/sample_writer.h"
#include "tests/support/small_fleet.h"

namespace orx::orxkdb {
namespace {

using test::attribute;
using test::handleText;
using test::handleValue;
using test::Line;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

using Records = std::vector<DataBuffer>;

Records recordsOf(const std::vector<Line>& lines) {
  Records records;
  for (const Line& line : lines) records.push_back(test::recordOf(line));
  return records;
}

std::string linesOf(const Records& records, const std::string& lineEnd = "\n") {
  std::string text;
  for (const DataBuffer& record : records) {
    text += std::string(CMDatabaseBackupRecord(record).text()) + lineEnd;
  }
  return text;
}

// Writes inputs and compares them.
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
    testing::internal::CaptureStdout();
    result_ = diff(options);
    std::string output = testing::internal::GetCapturedStdout();
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

constexpr const char* systemWords = "<1;1;2;0;0;0;5;>, 0500000000000201, new format, type 2, ";

struct ChangeCase {
  std::string name;
  std::function<void(std::vector<Line>&)> change;
  std::string report;  // behind the heading of the object 2:5
};

// What happens to the managed system 2:5, whose text is that of `chain`.
const std::string chain = attribute(2, {"a", "b", "c"}) + attribute(94, {handleValue(2, 5)});

const std::vector<ChangeCase> changeCases = {
    {"head fields",
     [](auto& lines) {
       lines[2].recType = 3;
       lines[2].auxValue1 = -1;
       lines[2].auxValue2 = 7;
     },
     "  recType: 2 -> 3\n  auxValue1: 0 -> -1\n  auxValue2: 1 -> 7\n"},
    {"model handle", [](auto& lines) { lines[2].model = handleText(2, 5); },
     "  modelHandle: <1;1;12;0;0;0;1;>, 0100000000000C01, new format, type 12, identifier 1 -> " +
         std::string(systemWords) + "identifier 5\n"},
    {"values",
     [](auto& lines) {
       lines[2].data = attribute(2, {"a", "x"}) + attribute(94, {"gone"});
     },
     "  attribute 2 of group 0, key 2, 3 values -> 2\n    - 2: \"b\"\n    - 3: \"c\"\n"
     "    + 2: \"x\"\n"
     "  attribute 94 of group 0, key 94 (handles), 1 value\n    - 1: " +
         std::string(systemWords) + "identifier 5\n    + 1: \"gone\"\n"},
    {"attributes",
     [](auto& lines) {
       lines[2].data = attribute(2, {"a", "b", "c"}) + "<5;1;1;\x01;>";
     },
     "  attribute 94 of group 0, key 94 (handles), removed with 1 value\n    - 1: " +
         std::string(systemWords) + "identifier 5\n" +
         "  attribute 5 of group 1, key 4101, added with 1 value\n    + 1: \"\\x01\"\n"},
    {"the second of two attributes with one key",
     [](auto& lines) { lines[2].data = chain + attribute(2, {"d"}); },
     "  attribute 2 of group 0, key 2, added with 1 value\n    + 1: \"d\"\n"},
    {"a longer chain",
     [](auto& lines) {
       lines[2].data = chain.substr(0, 10);
       lines.push_back(lines[2]);
       lines.back().recn = 1;
       lines.back().data = chain.substr(10);
     },
     "  chain: 1 record -> 2\n"},
    {"other bytes only",
     [](auto& lines) {
       lines[2].data = attribute(94, {handleValue(2, 5)}) + attribute(2, {"a ", "b", "c"});
     },
     "  same attributes, other records\n  record 0: text of 48 -> 49 bytes, from byte 1 on "
     "\"2;0;3;a;b;c;><94;0;1;<1;;1;;2;;0\"... -> \"94;0;1;<1;;1;;2;;0;;0;;0;;5;;>>;\"...\n"},
    {"a text that does not parse", [](auto& lines) { lines[2].data = chain + "<6;0;2;e;>"; },
     "  text that does not parse, compared byte by byte\n"
     "  record 0: text of 48 -> 58 bytes, from byte 48 on \"\" -> \"<6;0;2;e;>\"\n"},
};

std::vector<Line> fleetOf(const std::function<void(std::vector<Line>&)>& change = {}) {
  auto lines = test::smallFleet();
  lines[2].data = chain;
  if (change) change(lines);
  return lines;
}

TEST_F(Diff, TellsWhatChangedWhateverTheFormsAre) {
  const Records old = recordsOf(fleetOf());
  const std::string forms[] = {database("a", old), backup("a.txt", linesOf(old))};
  for (const ChangeCase& test : changeCases) {
    SCOPED_TRACE(test.name);
    const Records now = recordsOf(fleetOf(test.change));
    const std::string expected =
        "changed: object <1;1;2;0;0;0;5;> parent <1;1;0;0;0;0;0;>\n" + test.report;
    const std::string nowForms[] = {database(test.name, now),
                                    backup(test.name + ".txt", linesOf(now, "\r\n"))};
    for (const std::string& before : forms) {
      for (const std::string& after : nowForms) EXPECT_EQ(changes(before, after), expected);
    }
  }
}

TEST_F(Diff, TellsWhatWasAddedAndRemoved) {
  const auto before = fleetOf();
  const auto after = fleetOf([](auto& lines) {
    lines[2].parent = handleText(3, 1);
    lines.push_back(lines[2]);
    lines.back().recn = 1;
  });
  EXPECT_EQ(changes(database("a", recordsOf(before)), database("b", recordsOf(after))),
            "removed: object <1;1;2;0;0;0;5;> parent <1;1;0;0;0;0;0;>, recType 2, 1 record, 2 "
            "attributes\n"
            "added: object <1;1;2;0;0;0;5;> parent <1;1;3;0;0;0;1;>, recType 2, 2 records, 4 "
            "attributes\n");
  EXPECT_THAT(result_.text, HasSubstr("1 added, 1 removed, 0 changed, " + scratch_.file("a")));
}

TEST_F(Diff, ShowsRecordsWhenAsked) {
  const auto withTail = [](std::int32_t recType, const std::string& data, bool third) {
    return recordsOf(fleetOf([&](auto& lines) {
      lines.push_back(lines[2]);
      lines.back().recn = 1;
      lines.back().recType = recType;
      lines.back().data = data;
      if (third) lines.push_back(lines.back());
      if (third) lines.back().recn = 2;
      lines[2].auxValue1 = third ? 1 : 0;
    }));
  };
  const std::string before = database("a", withTail(2, "<7;0;1;x;>", false));
  const std::string after = database("b", withTail(3, "<7;0;1;y;>", true));
  EXPECT_THAT(changes(before, after), Not(HasSubstr("record 1")));
  EXPECT_THAT(changes(before, after, true),
              HasSubstr("  record 0: auxValue1 0 -> 1\n"
                        "  record 1: recType 2 -> 3, text of 10 bytes, from byte 7 on "
                        "\"x;>\" -> \"y;>\"\n"
                        "  record 2: added with 10 bytes of text, \"<7;0;1;y;>\"\n"));
  EXPECT_THAT(changes(after, before, true), HasSubstr("  record 2: removed with 10 bytes"));
}

TEST_F(Diff, LimitsWhatIsShownAndCountsAll) {
  std::vector<Line> old = test::smallFleet();
  std::vector<Line> now = test::smallFleet();
  for (std::uint32_t id = 10; id < 13; ++id) {
    old.push_back(test::plainLine(id));
    old.push_back(test::plainLine(id + 100));
    now.push_back(test::plainLine(id, attribute(2, {"other"})));
    now.push_back(test::plainLine(id + 200));
  }
  DiffOptions options{
      .before = database("a", recordsOf(old)), .after = database("b", recordsOf(now)), .limit = 2};
  const std::string report = run(options, exitDifferent);
  EXPECT_THAT(report, HasSubstr("objects by kind\n"
                                "  added: 3, the first 2 are shown; \"--limit 0\" shows all\n"
                                "  removed: 3, the first 2 are shown; \"--limit 0\" shows all\n"
                                "  changed: 3, the first 2 are shown; \"--limit 0\" shows all\n"
                                "    attributes with other values: 3\n"
                                "  unchanged: 3\n"));
  options.json = true;
  const auto json = nlohmann::json::parse(run(options, exitDifferent));
  EXPECT_EQ(json["objects"].size(), 6u);
  EXPECT_EQ(json["summary"]["removed"], 3);
}

TEST_F(Diff, PrintsJson) {
  const std::string same = database("a", recordsOf(fleetOf()));
  auto json = nlohmann::json::parse(run({.before = same, .after = same, .json = true}, exitDone));
  EXPECT_EQ(json["version"], 1);
  EXPECT_EQ(json["same"], true);
  EXPECT_THAT(json["objects"], IsEmpty());
  const std::string now = backup("b", linesOf(recordsOf(fleetOf([](auto& lines) {
                                        lines[1].auxValue1 = 4;
                                        lines[1].data = attribute(84, {handleValue(2, 6)});
                                        lines[2].data = "\xFF<";
                                      }))) +
                                          "\n");
  json = nlohmann::json::parse(run({.before = same, .after = now, .json = true}, exitDifferent));
  EXPECT_EQ(json["inputs"][0]["form"], "database");
  EXPECT_EQ(json["inputs"][1]["unreadableShown"][0]["line"], 4);
  ASSERT_EQ(json["objects"].size(), 2u);
  const auto& system = json["objects"][1];
  EXPECT_EQ(system["object"]["identifier"], 5);
  EXPECT_EQ(system["textsParse"], false);
  EXPECT_EQ(system["records"][0]["fields"]["text"]["old"], chain);
  const auto& model = json["objects"][0];
  EXPECT_EQ(model["head"][0], (nlohmann::json{{"field", "auxValue1"}, {"old", 0}, {"new", 4}}));
  EXPECT_EQ(model["attributes"][0]["change"], "removed");
  EXPECT_EQ(model["attributes"][2]["new"][0]["handle"]["identifier"], 6);
}

TEST_F(Diff, TakesTheLinesOfABackupInAnyOrder) {
  std::vector<std::string> lines;
  (void)writeSample({.objects = 300}, SampleOrder::random, [&](std::string_view piece) {
    for (; !piece.empty(); piece.remove_prefix(piece.find('\n') + 1)) {
      lines.emplace_back(piece.substr(0, piece.find('\n') + 1));
    }
    return true;
  });
  const auto joined = [](const std::vector<std::string>& all) {
    std::string text;
    for (const std::string& line : all) text += line;
    return text;
  };
  const std::string shuffled = backup("shuffled", joined(lines));
  std::ranges::reverse(lines);
  const std::string reversed = backup("reversed", joined(lines));
  EXPECT_THAT(run({.before = shuffled, .after = reversed}, exitDone), HasSubstr("same\n"));

  // The first line of a key counts, in the order of the file.
  lines.push_back(lines.front());
  lines.back().replace(430, 1, "!");
  lines.back().replace(160, 8, "      77");
  const std::string twice = backup("twice", joined(lines));
  EXPECT_THAT(run({.before = shuffled, .after = twice}, exitDone), HasSubstr("    1 more ignored"));
  std::ranges::reverse(lines);
  EXPECT_THAT(changes(shuffled, backup("first", joined(lines))), HasSubstr("auxValue1"));
}

TEST_F(Diff, CountsLinesThatAreNoRecords) {
  const Records records = recordsOf(fleetOf());
  const std::string good = linesOf(records);
  const std::string key = good.substr(0, 96);
  const std::string text = good.substr(0, 441) + "notes\n" + good.substr(441, 441) +
                           good.substr(882, 440) + std::string(10, 'x') + "\n" + key + "     1x\n";
  const std::string report = changes(backup("a", good), backup("b", text));
  const std::string place = "unreadable line: " + scratch_.file("b");
  EXPECT_EQ(report, place + ":2, it has no parent handle: \"notes\"\n" + place +
                        ":4, the line is too long, and this is its rest\n" + place +
                        ":5, it has no record number: \"" + key + "     1x\"\n");
  EXPECT_THAT(
      run({.before = scratch_.file("b"), .after = scratch_.file("a"), .limit = 1}, exitDifferent),
      HasSubstr("and 2 more, which \"--limit 0\" shows\n"));
}

// Records with everything that a line changes: old and temporary handles, bytes behind the text.
Records oddRecords(std::mt19937& random) {
  const CMConfigHandle handles[] = {
      CMConfigHandle(),
      CMConfigHandle(2, 5),
      CMConfigHandle(2, 4000000000u),
      CMConfigHandle::createTemporaryHandle(4, 5),
      CMConfigHandle(CMConfigHandle(2, 2), CMConfigHandle(3, 7)),
      CMConfigHandle(CMConfigHandle(), CMConfigHandle(3, 70000), CMConfigHandle(6, 9))};
  const auto pick = [&] { return handles[random() % std::size(handles)]; };
  std::map<std::string, DataBuffer> records;
  for (int i = 0; i < 200; ++i) {
    DataBuffer record;
    record.setParentHandle(pick());
    record.setObjectHandle(pick());
    record.setRecn(static_cast<std::uint32_t>(random() % 3));
    record.setModelHandle(pick());
    record.setAuxValue1(static_cast<std::int32_t>(random() % 100000000));
    record.setAttrText(std::string(random() % 257, static_cast<char>(random() % 3 + ' ')));
    if (random() % 4 == 0) record.data()[data_layout::attrText + random() % 256] = 0;
    if (random() % 4 == 0) record.data()[data_layout::objectHandle + 7] ^= 1;
    records.emplace(std::string(record.key().begin(), record.key().end()), record);
  }
  Records list;
  for (const auto& [key, record] : records) list.push_back(record);
  return list;
}

TEST_F(Diff, ComparesADatabaseWithABackupByWhatTheBackupCarries) {
  std::mt19937 random(7);
  const Records records = oddRecords(random);
  for (const DataBuffer& record : records) {
    DataBuffer restored;
    CMDatabaseBackupRecord(record).buildDataBuffer(restored);
    ASSERT_EQ(carriedForm(record), restored);
  }
  const std::string odd = database("a", records);
  Records stored;
  {
    const test::Opened opened(odd, kdb::openForReading);
    for (const orx::test::Record& bytes : opened.all()) {
      std::copy(bytes.begin(), bytes.end(), stored.emplace_back().data());
    }
  }
  const std::string copy = backup("b", linesOf(stored));
  EXPECT_THAT(run({.before = odd, .after = copy}, exitDone), HasSubstr("hold more than a backup"));
  EXPECT_THAT(run({.before = copy, .after = odd}, exitDone), HasSubstr("more ignored"));
  stored[100].setAuxValue2(1);
  EXPECT_THAT(changes(odd, backup("c", linesOf(stored))), HasSubstr("auxValue2: 0 -> 1"));
}

TEST_F(Diff, NeverTakesARecordThatNoLineCarriesForOneThatALineHolds) {
  Records records = recordsOf(fleetOf());
  const std::string zero = backup("b", linesOf(records));
  records[2].setAuxValue1(100000000);
  EXPECT_THAT(changes(database("a", records), zero), HasSubstr("auxValue1: 100000000 -> 0"));
}

TEST_F(Diff, ComparesDatabasesByTheKeysThatRecordsAreStoredUnder) {
  Records records = recordsOf(fleetOf());
  const std::string sound = database("a", records);
  const std::string odd = scratch_.file("b");
  {
    const test::Opened opened(odd, kdb::openAsNew);
    for (DataBuffer record : records) {
      const DataBuffer key = record;
      if (record.recType() == 2) record.setObjectHandle(CMConfigHandle(2, 6));
      ASSERT_EQ(kdb::AddRecord(opened.handle, key.data(), 20, record.data(), 296), 0);
    }
    ASSERT_EQ(opened.close(), "0/0");
  }
  EXPECT_THAT(changes(sound, odd),
              HasSubstr("record 0: the key that it holds: parent <1;1;0;0;0;0;0;> object "
                        "<1;1;2;0;0;0;5;> recn 0 -> parent <1;1;0;0;0;0;0;> object "
                        "<1;1;2;0;0;0;6;> recn 0\n"));
  records[2].setObjectHandle(CMConfigHandle(2, 6));
  run({.before = odd, .after = backup("c", linesOf(records))}, exitDone);
}

TEST_F(Diff, FailsWithACodeThatIsNotOneOfTheResults) {
  const std::string good = database("a", recordsOf(fleetOf()));
  run({.before = good, .after = scratch_.file("none")}, exitNotOpened);
  run({.before = scratch_.path().string(), .after = good}, exitNotOpened);
  run({.before = "/dev/null", .after = good}, exitNotOpened);
  std::string damaged = test::readFile(good);
  damaged.resize(damaged.size() / 2);
  run({.before = good, .after = backup("damaged", damaged)}, exitNotOpened);
  const std::vector<std::vector<const char*>> unusable = {
      {"orxkdb", "diff"},
      {"orxkdb", "diff", "a"},
      {"orxkdb", "diff", "a", "b", "c"},
      {"orxkdb", "--none", "diff", "a", "b"},
      {"orxkdb", "diff", "a", "b", "--limit", "x"},
  };
  for (const auto& arguments : unusable) {
    EXPECT_EQ(orxkdb::run(static_cast<int>(arguments.size()), arguments.data()), 2)
        << testing::PrintToString(arguments);
  }
}

struct ValueCase {
  Values before;
  Values after;
  std::vector<std::size_t> removed;
  std::vector<std::size_t> added;
  bool reordered = false;
};

TEST(CompareValues, FindsTheValuesThatOneSideHas) {
  const std::vector<ValueCase> cases = {
      {{}, {}, {}, {}},
      {{"a"}, {}, {0}, {}},
      {{"a", "b", "c"}, {"a", "c"}, {1}, {}},
      {{"a", "a"}, {"a", "a", "a"}, {}, {2}},
      {{"5", "5", "7"}, {"5", "7", "7"}, {1}, {1}},
      {{"x", "a", "b"}, {"a", "b", "y"}, {0}, {2}},
      {{"k", "a", "b", "z"}, {"k", "b", "a", "z"}, {1, 2}, {1, 2}, true},
      {{"a", "b", "c"}, {"b", "a", "d"}, {2}, {2}, true},
  };
  for (const ValueCase& test : cases) {
    SCOPED_TRACE(testing::PrintToString(test.before) + testing::PrintToString(test.after));
    const ValueChanges changes = compareValues(test.before, test.after);
    EXPECT_EQ(changes.removed, test.removed);
    EXPECT_EQ(changes.added, test.added);
    EXPECT_EQ(changes.reordered, test.reordered);
  }
}

}  // namespace
}  // namespace orx::orxkdb
