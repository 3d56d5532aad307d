#include <gmock/gmock.h>

#include "orxkdb/cmd_plan.h"
#include "orxkdb/plan/plan_run.h"
#include "orxkdb/plan/plan_words.h"
#include "tests/restore/merge_records.h"
#include "tests/support/program_runs.h"
#include "tests/support/sample_text.h"
#include "tests/support/small_fleet.h"

namespace orx::orxkdb {
namespace {

using test::attribute, test::backupOf, test::build, test::handle, test::operator+;
using testing::HasSubstr;
using Records = std::vector<DataBuffer>;

Records system(const std::string& parameters, const std::map<int, std::string>& counters) {
  return test::chain({}, attribute(1, {parameters}) + test::counters(counters));
}

Records object(int type, std::uint32_t id, const std::string& text = "<2;0;1;x;>") {
  return test::chain({.object = handle(type, id), .recType = type}, text);
}

// Below a parent, though a merge into the database reads it as part of the system record.
Records stray(int parentType, std::uint32_t parentId, const std::string& text = "<60;0;1;y;>") {
  return test::chain({.parent = handle(parentType, parentId)}, text);
}

// "TYPE:ID#RECN WHY; ", as they are in the backup.
std::string refusedIn(const MergePlan& plan) {
  std::ostringstream shown;
  for (const auto& [key, why] : plan.refused) {
    shown << nameInBackup(plan, key.object) << '#' << key.recn << ' ' << wordsOf(why) << "; ";
  }
  return shown.str();
}

// "TYPE FIRST-LAST+SHIFT ...; "
std::string identifiersIn(const std::vector<TypeIdentifiers>& types) {
  std::ostringstream shown;
  for (const TypeIdentifiers& type : types) {
    shown << int{type.type};
    for (const auto& [first, last] : type.ranges) {
      shown << ' ' << first << '-' << last << '+' << type.shift;
    }
    shown << "; ";
  }
  return shown.str();
}

class Plan : public testing::Test {
 protected:
  // A plan of these, which must leave both files, and nothing beside them.
  [[nodiscard]] MergePlan planOf(const Records& current, const std::string& backup) const {
    std::filesystem::remove("db.orx-previous");
    test::createDatabase(current);
    test::writeFile("backup", backup);
    const std::string before = test::readFile("db");
    MergePlan plan;
    EXPECT_EQ(planMerge("db", "backup", 0, plan).text, "");
    EXPECT_EQ(test::readFile("db"), before);
    EXPECT_THAT(scratch_.names(), testing::ElementsAre("backup", "db"));
    return plan;
  }

  // Runs the merge, which must do what was planned.
  void expectMergeDoes(const MergePlan& plan) const {
    const auto run = test::runIn(scratch_, "orxrestore", {"-i", "backup", "-m", "db"});
    EXPECT_EQ(run.exitCode, plan.exitCode()) << run.output;
    MergePlan after;
    test::writeFile("backup", "");
    ASSERT_EQ(planMerge("db", "backup", 0, after).text, "");
    const std::uint64_t system = plan.systemAfter.records - plan.systemBefore.records;
    EXPECT_EQ(after.databaseRecords,
              plan.databaseRecords + plan.addedRecords() + system - plan.replaced);
    EXPECT_EQ(after.systemBefore.records, plan.systemAfter.records);
    EXPECT_EQ(after.systemBefore.textBytes, plan.systemAfter.textBytes);
    EXPECT_EQ(after.strays.records, plan.strays.records + plan.addedStrays);
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
  const Records otherOfItsKey = {build({.recn = 3, .auxValue2 = 1})};
  const Records othersInItsPlace = test::chain({.auxValue2 = 1}, "") +
                                   test::chain({.recn = 1}, test::counters({{5, "100"}})) +
                                   otherOfItsKey;
  const Records noObject = {build({.recType = -1})};
  const struct {
    const char* name;
    Records current;
    std::string backup;
    const char *refused, *identifiers;
  } cases[] = {
      {"everything new", current,
       backupOf(alien + object(5, 3, two) + object(5, 4) + object(5, 9) + object(2, 1) +
                object(26, 1) + noObject),
       "", "2 1-1+9; 5 3-4+99 9-9+99; "},
      {"a type without a counter", current, backupOf(object(7, 8, two) + object(7, 9)),
       "7:8#0 in the database; ", "7 8-9+0; "},
      {"an identifier of 0 meets the last one given out", current + object(2, 9, two),
       backupOf(object(2, 0)), "2:0#0 in the database; ", "2 0-0+9; "},
      {"an object twice, the second time longer", current,
       backupOf(object(5, 1) + object(5, 1) + continuation + object(5, 2)),
       "5:1#0 twice in the backup; ", "5 1-2+99; "},
      {"a system record that grows, and an empty line", current,
       backupOf(system("L=" + std::string(300, 'v'), {})) + "\n", "0:0#0 in the database; ", ""},
      {"a system record that shrinks, and another of its key", longSystem + otherOfItsKey,
       backupOf(alien + test::chain({.auxValue2 = 1}, attribute(3, {std::string(900, 'x')}))),
       "0:0#0 in the database; 0:0#3 in the database; ", ""},
      {"a fleet in random order", current,
       test::sampleText({.objects = 500, .seed = 8}, SampleOrder::random), "",
       "1 1-5+0; 2 1-5+9; 3 1-45+0; 4 1-394+0; 5 1-10+99; 6 1-10+0; 10 1-20+0; 11 1-4+0; "
       "12 1-1+0; "},
      {"identifiers that pass the highest", system("A=1", {{2, "4294967294"}}),
       backupOf(object(2, 1) + object(2, 3) + object(2, 2) + object(2, 5) + object(2, 4) +
                object(7, 4294967295) + object(7, 0)),
       "", "2 1-2+4294967293 3-5+4294967293; 7 0-0+0 4294967295-4294967295+0; "},
      {"a stray of the system record", current + stray(5, 3),
       backupOf(alien + stray(2, 1) + object(2, 1)), "", "2 1-1+9; "},
      {"nothing but a stray of the system record", stray(5, 3, test::counters({{5, "100"}})),
       backupOf(alien + object(5, 1)), "", "5 1-1+99; "},
      {"others in the place of the system record", othersInItsPlace, backupOf(object(5, 1)), "",
       "5 1-1+99; "},
  };
  for (const auto& row : cases) {
    SCOPED_TRACE(row.name);
    const MergePlan plan = planOf(row.current, row.backup);
    EXPECT_EQ(identifiersIn(plan.identifiers), row.identifiers);
    EXPECT_EQ(refusedIn(plan), row.refused);
    expectMergeDoes(plan);
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
               backupOf(system("A=1,B=2,C=x,,y", {}) + object(7, 8) + object(7, 9) + object(2, 1) +
                        object(2, 2) + object(2, 4) + object(26, 1)));
  PlanOptions options{.database = "db", .backup = "backup", .limit = 1};
  Result result;
  EXPECT_EQ(test::printed([&] { result = plan(options); }), reportOfTheWorst);
  EXPECT_EQ(result.code, exitNotAsExpected);
  EXPECT_THAT(result.text, HasSubstr("the merge would fail, taken keys: 2, backup into db, "));
  options.json = true;
  test::expectJson(test::printed([&] { result = plan(options); }), R"({
      "/succeeds": false, "/exitCode": 6, "/recordsAdded": 3, "/refused/count": 2,
      "/refused/shown#": 1, "/warnings#": 2, "/parameters/kept/shown/0/name": "D",
      "/parameters/differing/shown/0": {"name": "A", "database": "9", "backup": "1"},
      "/identifiers/0/ranges/shown/0": {"first": 1, "last": 2, "newFirst": 10, "newLast": 11}})");
}

TEST_F(Plan, WarnsOfWhatTheMergeDoesNotMind) {
  const Records counters = test::chain({}, test::counters({{2, "4294967290"}}));
  const struct {
    Records current;
    std::string backup, warning;
  } cases[] = {
      {counters, "", "the backup holds no records"},
      {counters, backupOf(object(2, 1)), "the backup has no system record"},
      {counters, backupOf(object(2, 9)), "identifiers of type 2 pass 4294967295"},
      {counters, backupOf(object(5, 1)), "objects of type 5 keep their identifiers: the dat"},
      {counters, backupOf(test::chain({.object = handle(28, 1), .recType = 5}, "")),
       "objects of type 28 keep their identifiers: a merge does not"},
      {counters, backupOf(system("A=1", {})), "no parameters are added"},
      {system("A=1", {}), backupOf(system("B=1==2,C=3", {})), "written once: B"},
      {counters + stray(2, 1) + stray(2, 2), "",
       "read as part of the system record: 2, with 22 bytes of text"},
      {stray(2, 1, test::counters({})), "",
       "read as the system record: 1; the merge writes a new one beside them, of 1 record"},
      {counters, backupOf(counters + stray(2, 1)),
       "that the next merge reads as part of the system record: 1"},
      {test::chain({.auxValue2 = 1}, "") + stray(2, 1, test::counters({})), "",
       "records of the database that are lost, because the system record is written in their "
       "place (null handles, but an auxValue2 other than 0): 1"},
  };
  for (const auto& row : cases) {
    EXPECT_THAT(warningsOf(planOf(row.current, row.backup)),
                testing::Contains(HasSubstr(row.warning)));
  }
}

}  // namespace
}  // namespace orx::orxkdb
