#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "orxkdb/cmd_plan.h"
#include "orxkdb/plan/identifier_list.h"
#include "orxkdb/plan/plan_run.h"
#include "orxkdb/plan/plan_words.h"
#include "orxkdb/sample_writer.h"
#include "tests/restore/merge_records.h"
#include "tests/support/places.h"
#include "tests/support/run_program.h"
#include "tests/support/small_fleet.h"

namespace orx::orxkdb {
namespace {

using test::attribute;
using test::build;
using test::handle;
using test::operator+;
using testing::ElementsAre;
using testing::HasSubstr;
using Records = std::vector<DataBuffer>;
using Shown = std::vector<std::string>;

Records system(const std::string& parameters, const std::map<int, std::string>& counters) {
  return test::chain({}, attribute(1, {parameters}) + test::counters(counters));
}

Records object(int type, std::uint32_t id, const std::string& text = "<2;0;1;x;>") {
  return test::chain({.object = handle(type, id), .recType = type}, text);
}

std::string sample() {
  std::string lines;
  EXPECT_TRUE(writeSample({.objects = 500, .seed = 8}, SampleOrder::random, [&](auto piece) {
    lines += piece;
    return true;
  }));
  return lines;
}

// "TYPE:ID#RECN FORMER WHY"
Shown refusedIn(const MergePlan& plan) {
  Shown shown;
  for (const RefusedRecord& record : plan.refused) {
    const HandleNumber object = record.key.object;
    shown.push_back(std::to_string(typeOf(object)) + ":" + std::to_string(identifierOf(object)) +
                    "#" + std::to_string(record.key.recn) + " " + nameInBackup(plan, object) + " " +
                    std::string(wordsOf(record.why)));
  }
  return shown;
}

// "TYPE FIRST-LAST+SHIFT ..."
Shown identifiersIn(const std::vector<TypeIdentifiers>& types) {
  Shown shown;
  for (const TypeIdentifiers& type : types) {
    std::string text = std::to_string(type.type);
    for (const auto& [first, last] : type.ranges) {
      text += " " + std::to_string(first) + "-" + std::to_string(last) + "+" +
              std::to_string(type.shift);
    }
    shown.push_back(text);
  }
  return shown;
}

class Plan : public testing::Test {
 protected:
  [[nodiscard]] MergePlan planned(std::size_t limit = 0, const std::string& failure = "") const {
    MergePlan plan;
    EXPECT_THAT(planMerge("db", "backup", limit, plan).text, testing::StartsWith(failure));
    return plan;
  }

  // A plan of these, which must leave both files, and nothing beside them.
  [[nodiscard]] MergePlan planOf(const Records& current, const std::string& backup) const {
    std::filesystem::remove("db.orx-previous");
    std::filesystem::remove("db");
    test::createDatabase(current);
    test::writeFile("backup", backup);
    const std::string before = test::readFile("db");
    MergePlan plan = planned();
    EXPECT_EQ(test::readFile("db"), before);
    EXPECT_THAT(scratch_.names(), ElementsAre("backup", "db"));
    return plan;
  }

  // Runs the merge, which must do what was planned.
  void expectMergeDoes(const MergePlan& plan) const {
    const auto run = test::runProgram({.file = test::builtProgram("orxrestore"),
                                       .arguments = {"-i", "backup", "-m", "db"},
                                       .directory = scratch_.path()});
    EXPECT_EQ(run.exitCode, plan.exitCode()) << run.output;
    MergePlan after;
    test::writeFile("backup", "");
    ASSERT_EQ(planMerge("db", "backup", 0, after).text, "");
    const std::uint64_t system = plan.systemAfter.records - plan.systemBefore.records;
    EXPECT_EQ(after.databaseRecords, plan.databaseRecords + plan.addedRecords() + system);
    EXPECT_EQ(after.systemBefore.records, plan.systemAfter.records);
    EXPECT_EQ(after.systemBefore.textBytes, plan.systemAfter.textBytes);
    for (std::size_t i = 0; i < plan.counters.size(); ++i) {
      EXPECT_EQ(after.counters[i].before, plan.counters[i].after) << i;
    }
  }

  test::TempDir scratch_;
  test::WorkingDirectory inScratch_{scratch_.path()};
};

TEST_F(Plan, IsWhatTheMergeDoes) {
  const std::string two = attribute(2, {std::string(300, 'x')});
  const Records current = system("A=9,B=2", {{2, "10"}, {5, "100"}}) + object(5, 3) + object(7, 8);
  const Records alien = system("A=1,B=2,C=3", {});
  const Records longSystem = system(std::string(600, 'p') + "=1", {{5, "100"}});
  const Records continuation = {build({.object = handle(5, 1),
                                       .recn = 1,
                                       .recType = 5,
                                       .text = attribute(3, {std::string(240, 'y')})})};
  const std::string longParameter = "L=" + std::string(300, 'v');
  const struct {
    std::string name;
    Records current;
    std::string backup;
    Shown refused;
    Shown identifiers;
  } cases[] = {
      {"everything new",
       current,
       test::backupOf(alien + object(5, 3, two) + object(5, 4) + object(5, 9) + object(2, 1) +
                      object(26, 1) + Records{build({.recType = -1})}),
       {},
       {"2 1-1+9", "5 3-4+99 9-9+99"}},
      {"a type without a counter",
       current,
       test::backupOf(object(7, 8, two) + object(7, 9)),
       {"7:8#0 7:8 in the database"},
       {"7 8-9+0"}},
      {"an identifier of 0 meets the last one given out",
       current + object(2, 9, two),
       test::backupOf(object(2, 0)),
       {"2:9#0 2:0 in the database"},
       {"2 0-0+9"}},
      {"an object twice, the second time longer",
       current,
       test::backupOf(object(5, 1) + object(5, 1) + continuation + object(5, 2)),
       {"5:100#0 5:1 twice in the backup"},
       {"5 1-2+99"}},
      {"an empty line is a second system record",
       current,
       test::backupOf(alien) + "\n" + test::backupOf(object(5, 1)),
       {"0:0#0 0:0 in the database"},
       {"5 1-1+99"}},
      {"a system record that grows", current, test::backupOf(system(longParameter, {})), {}, {}},
      {"a system record that shrinks, and another of its key",
       longSystem + Records{build({.recn = 3, .auxValue2 = 1})},
       test::backupOf(alien + test::chain({.auxValue2 = 1}, attribute(3, {std::string(900, 'x')}))),
       {"0:0#0 0:0 in the database", "0:0#3 0:0 in the database"},
       {}},
      {"a fleet in random order",
       current,
       sample(),
       {},
       {"1 1-5+0", "2 1-5+9", "3 1-45+0", "4 1-394+0", "5 1-10+99", "6 1-10+0", "10 1-20+0",
        "11 1-4+0", "12 1-1+0"}},
      {"no line", current, "", {}, {}},
  };
  for (const auto& row : cases) {
    SCOPED_TRACE(row.name);
    const MergePlan plan = planOf(row.current, row.backup);
    EXPECT_EQ(identifiersIn(plan.identifiers), row.identifiers);
    EXPECT_EQ(refusedIn(plan), row.refused);
    expectMergeDoes(plan);
  }
}

TEST_F(Plan, RefusesWhatNoMergeCanWorkWith) {
  std::filesystem::create_directory("directory");
  test::createDatabase(Records{});
  std::filesystem::rename("db", "empty");
  test::createDatabase(object(5, 1));
  std::filesystem::rename("db", "plain");
  test::createDatabase(system("A=1", {}));
  test::writeFile("backup", "");
  const struct {
    PlanOptions options;
    ExitCode code;
    const char* text;
  } cases[] = {
      {{"db", "none"}, exitNotOpened, "the backup cannot be opened, none (No such file"},
      {{"db", "directory"}, exitNotOpened, "the backup cannot be opened, directory (Is a direct"},
      {{"db", "db"}, exitNotAsExpected, "this is a database, not a backup, db, "},
      {{"none", "backup"}, exitNotOpened, "there is no such database, none "},
      {{"backup", "backup"}, exitNotOpened, "this is no database"},
      {{"empty", "backup"}, exitNotAsExpected, "the database is empty"},
      {{"plain", "backup"}, exitNotAsExpected, "a merge would fail: there are no identifier count"},
  };
  for (const auto& row : cases) {
    testing::internal::CaptureStdout();
    const Result result = plan(row.options);
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
    EXPECT_EQ(result.code, row.code) << result.text;
    EXPECT_THAT(result.text, HasSubstr(row.text));
  }
}

constexpr const char* reportOfTheWorst = R"(The merge of backup into db would FAIL with exit code 6:
2 of 5 records cannot be added, their keys are taken. The others would be added all the same.

Keys that are taken
  in the database: parent <1;1;0;0;0;0;0;> object <1;1;7;0;0;0;8;> recn 0, object 7:8 of the backup
  and 1 more, which "--limit 0" shows

Mind
  objects of type 7 keep their identifiers: the database has no counter for them
  parameters do not read back as they are, because their "," and "=" are written once: C

To add, by record type       objects     records       taken
  type 2                           3           3           0
  type 7                           2           2           2
  all                              5           5           2

Parameters
  differ; the database's value stays: 1
    A = "9", in the backup "1"
  added: 1
    C = "x,y"
  kept, only in the database: 1
    D = "4"
  equal in both: 1
    B = "2"

Counters                      before       after
  type 2                          10          14
  25 unchanged

Identifiers                    count  in the backup -> in the database
  type 2                           3  1-2 -> 10-11
                                      and 1 more, which "--limit 0" shows
  type 7                           2  8-9 kept

System record                 before       after
  records                          1           1
  bytes of text                   82          88

Read                         records
  database                         3
  backup                           7
    type 26, not merged            1
    its system record              1
)";

TEST_F(Plan, ReportsTheWorstFirst) {
  (void)planOf(system("A=9,B=2,D=4", {{2, "10"}}) + object(7, 8) + object(7, 9),
               test::backupOf(system("A=1,B=2,C=x,,y", {}) + object(7, 8) + object(7, 9) +
                              object(2, 1) + object(2, 2) + object(2, 4) + object(26, 1)));
  testing::internal::CaptureStdout();
  const Result result = plan({.database = "db", .backup = "backup", .limit = 1});
  EXPECT_EQ(result.code, exitNotAsExpected);
  EXPECT_THAT(result.text, HasSubstr("the merge would fail, taken keys: 2, backup into db, "));
  EXPECT_EQ(testing::internal::GetCapturedStdout(), reportOfTheWorst);

  testing::internal::CaptureStdout();
  EXPECT_EQ(plan({.database = "db", .backup = "backup", .limit = 1, .json = true}).code,
            exitNotAsExpected);
  const auto json = nlohmann::json::parse(testing::internal::GetCapturedStdout());
  EXPECT_EQ(json["version"], 1);
  EXPECT_EQ(json["succeeds"], false);
  EXPECT_EQ(json["exitCode"], 6);
  EXPECT_EQ(json["recordsAdded"], 3);
  EXPECT_EQ(json["refused"]["count"], 2);
  ASSERT_EQ(json["refused"]["shown"].size(), 1U);
  EXPECT_EQ(json["refused"]["shown"][0]["objectHandle"], test::handleText(7, 8));
  EXPECT_EQ(json["types"][1],
            nlohmann::json({{"recType", 7}, {"objects", 2}, {"records", 2}, {"refused", 2}}));
  EXPECT_EQ(json["parameters"]["differing"]["shown"][0],
            nlohmann::json({{"name", "A"}, {"database", "9"}, {"backup", "1"}}));
  EXPECT_EQ(json["parameters"]["added"]["shown"][0]["backup"], "x,y");
  EXPECT_EQ(json["parameters"]["kept"]["shown"][0]["name"], "D");
  EXPECT_EQ(json["parameters"]["equal"]["count"], 1);
  EXPECT_EQ(json["counters"][1], nlohmann::json({{"type", 2}, {"before", 10}, {"after", 14}}));
  EXPECT_EQ(json["identifiers"][0]["ranges"]["count"], 2);
  EXPECT_EQ(json["identifiers"][0]["ranges"]["shown"][0],
            nlohmann::json({{"first", 1}, {"last", 2}, {"newFirst", 10}, {"newLast", 11}}));
  EXPECT_EQ(json["read"]["backup"]["notMerged"][0]["recType"], 26);
  EXPECT_EQ(json["warnings"].size(), 2U);
}

TEST_F(Plan, WarnsOfWhatTheMergeDoesNotMind) {
  const Records counters = test::chain({}, test::counters({{2, "4294967290"}}));
  const struct {
    Records current;
    std::string backup;
    std::string warning;
  } cases[] = {
      {counters, "", "the backup holds no records"},
      {counters, test::backupOf(object(2, 1)), "the backup has no system record"},
      {counters, test::backupOf(object(2, 9)), "identifiers of type 2 pass 4294967295"},
      {counters, test::backupOf(object(5, 1)), "objects of type 5 keep their identifiers: the dat"},
      {counters, test::backupOf(test::chain({.object = handle(28, 1), .recType = 5}, "")),
       "objects of type 28 keep their identifiers: a merge does not"},
      {counters, test::backupOf(system("A=1", {})), "no parameters are added"},
      {system("A=1", {}), test::backupOf(system("B=1==2,C=3", {})), "written once: B"},
  };
  for (const auto& row : cases) {
    EXPECT_THAT(warningsOf(planOf(row.current, row.backup)),
                testing::Contains(HasSubstr(row.warning)));
  }
}

TEST(IdentifierList, BreaksRangesWhereASumPassesTheHighest) {
  MergeTables tables;
  tables.mergeTypes = mergedTypes;
  tables.idBase[2] = 0xFFFFFFFE;
  IdentifierList list;
  for (const std::uint32_t id : {1, 3, 2, 2, 5, 4}) list.add(tables.renumbered(handle(2, id)));
  list.add(handle(40, 0xFFFFFFFF));
  list.add(handle(40, 0));
  list.add(CMConfigHandle());
  EXPECT_THAT(identifiersIn(list.take(tables)),
              ElementsAre("2 1-2+4294967293 3-5+4294967293", "40 0-0+0 4294967295-4294967295+0"));
}

}  // namespace
}  // namespace orx::orxkdb
