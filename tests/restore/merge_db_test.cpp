#include <gmock/gmock.h>
#include <sys/resource.h>

#include "restore/exit_codes.h"
#include "restore/operations.h"
#include "restore/restore_settings.h"
#include "tests/restore/merge_records.h"
#include "tests/support/child_conditions.h"
#include "tests/support/program_runs.h"
#include "tests/support/test_bundle.h"

namespace orx {
namespace {

using test::build, test::chain, test::counters, test::describe, test::element, test::handle,
    test::operator+, testing::ElementsAre, testing::ElementsAreArray, testing::HasSubstr;
using Records = std::vector<DataBuffer>;

std::string addFailure(int number) {
  return "*Error: Failure adding record " + std::to_string(number) +
         " to data base, RC=4(Duplicate), RSN=46(Unique)\n";
}

Records system(const std::string& text) {
  return chain({}, text);
}

Records object(int type, std::uint32_t id, const std::string& text = "") {
  return chain({.object = handle(type, id), .recType = type}, text);
}

class MergeDb : public testing::Test {
 protected:
  MergeDb() { test::writeEchoBundle(directory_.path()); }
  ~MergeDb() override { restoreSettings() = {}; }

  // Merges `backup` into a new database of `current`; leaves output and records behind.
  int merge(const Records& current, const std::string& backup, bool verbose = false) {
    std::filesystem::remove("db");
    test::createDatabase(current);
    test::writeFile("backup", backup);
    const int result = mergeInto("db", "backup", verbose);
    after_ = describe(test::databaseRecords());
    return result;
  }

  int mergeInto(const std::string& database, const std::string& backup, bool verbose = false) {
    restoreSettings() = {modeMerge, verbose ? 1 : 0, 0, database, backup};
    int result = -1;
    output_ = test::printed([&] { result = mergeDB(); });
    return result;
  }

  static std::string done(std::size_t count) {
    return "IDS_MAIN_EIGHTH(" + std::to_string(count) + ")\n";
  }

  test::TempDir directory_;
  test::WorkingDirectory inDirectory_{directory_.path()};
  std::string output_;
  std::vector<std::string> after_;
};

TEST_F(MergeDb, ObjectsGetIdentifiersBehindThoseInUse) {
  const auto text = [](const char* object, const char* system, const char* none) {
    return element(84, 0, {object, system, none}) + element(85, 0, {"<1;1;5;0;0;0;3;>"}) +
           element(7059, 1, {"<1;1;66;0;0;0;9;>"});
  };
  const Records current =
      system(counters({{2, "10"}, {5, "100"}, {7, "0"}, {3, "50"}})) + object(5, 3, "own");
  const std::string before =
      text("<1;1;5;0;0;0;3;>", handle(2, 4).externText().c_str(), "no handle");
  const Records below = {build({handle(2, 4), handle(5, 3), 0, 5, handle(3, 7), 0, before, 0})};
  EXPECT_EQ(merge(current, test::backupOf(below + object(7, 8) + object(28, 1))), exitSuccess);
  EXPECT_EQ(output_, done(2));
  const std::string after = text("<1;1;5;0;0;0;102;>", "<1;1;2;0;0;0;13;>", "<1;1;0;0;0;0;0;>");
  EXPECT_THAT(after_, ElementsAre("0:0 0:0#0 t0 m0:0 '" +
                                      counters({{2, "14"}, {5, "103"}, {3, "57"}}) + "'",
                                  "0:0 5:3#0 t5 m0:0 'own'", "0:0 7:8#0 t7 m0:0 ''",
                                  "2:13 5:102#0 t5 m3:56 '" + after + "'"));
}

// Of two attributes of one key an object keeps the first.
TEST_F(MergeDb, OnlyHandleAttributesAreRenumberedAndTheFirstOfTwoIsKept) {
  const std::string before = "<1;1;5;0;0;0;3;>";
  const std::string moved = "<1;1;5;0;0;0;102;>";
  const std::tuple<short, short, bool> cases[] = {
      {84, 0, true},    {94, 0, true},    {6897, 0, true}, {3262, 1, true}, {3276, 1, true},
      {3811, 1, true},  {7050, 1, true},  {7059, 1, true}, {84, 1, false},  {85, 0, false},
      {3262, 0, false}, {6897, 1, false}, {7059, 0, false}};
  for (const auto& [attrId, attrGroup, isMoved] : cases) {
    const std::string text =
        element(attrId, attrGroup, {before}) + element(attrId, attrGroup, {"second"});
    const std::string backup = test::backupOf(object(5, 3, text));
    EXPECT_EQ(merge(system(counters({{5, "100"}})), backup), exitSuccess);
    EXPECT_EQ(after_.back(), "0:0 5:102#0 t5 m0:0 '" +
                                 element(attrId, attrGroup, {isMoved ? moved : before}) + "'");
  }
}

// Both line ends, the end of the file in the middle of a line end, a backup that lacks a system
// record or has it anywhere.
TEST_F(MergeDb, TheBackupIsReadInAnyOrderAndForm) {
  const Records one = object(5, 1, "<2;0;1;x;>");
  const Records alien = system("<1;0;1;A=1,C=3;>" + counters({{5, "77"}}));
  const Records unmerged = object(26, 1) + Records{build({.recType = 255}),
                                                   build({.object = handle(5, 9), .recType = -1})};
  const std::string whole = "<1;0;1;A=9,C=3;>";
  const std::string own = "<1;0;1;A=9;>";
  const std::tuple<const char*, std::string, std::string, std::size_t> cases[] = {
      {"system record first", test::backupOf(alien + one), whole, 1},
      {"system record last", test::backupOf(one + alien, "\r\n"), whole, 1},
      {"no last line end", test::backupOf(alien) + test::backupOf(one, ""), whole, 1},
      {"no system record", test::backupOf(one), own, 1},
      {"other types", test::backupOf(alien + unmerged), whole, 0},
      {"zero byte at a line", test::backupOf(one) + '\0' + test::backupOf(alien), own, 1},
      {"empty", "", own, 0},
  };
  for (const auto& [what, backup, parameters, added] : cases) {
    const Records current = system("<1;0;1;A=9;>" + counters({{5, "100"}}));
    EXPECT_EQ(merge(current, backup), exitSuccess) << what;
    EXPECT_EQ(output_, done(added)) << what;
    auto expected = describe(system(parameters + counters({{5, std::to_string(100 + added)}})));
    if (added == 1) expected.push_back("0:0 5:100#0 t5 m0:0 '<2;0;1;x;>'");
    EXPECT_EQ(after_, expected) << what;
  }
}

// A text and its end take up 9 bytes more than the text, as CMAttributeSet counts them.
TEST_F(MergeDb, TextsAreCutIntoChains) {
  for (const auto& [size, length] : {std::pair(21U, 1U), {246U, 1U}, {247U, 2U}, {69991U, 274U}}) {
    const std::string text = "<2;0;1;" + std::string(size - 9, 'x') + ";>";
    const std::string backup = test::backupOf(object(5, 1, text));
    EXPECT_EQ(merge(system(counters({{5, "10"}})), backup), exitSuccess) << size;
    EXPECT_EQ(output_, done(length));
    const Records all = test::databaseRecords();
    ASSERT_EQ(all.size(), 1 + length);
    std::string joined;
    for (std::size_t i = 1; i < all.size(); ++i) {
      EXPECT_EQ(all[i].recn(), i - 1);
      joined += all[i].text();
    }
    EXPECT_EQ(joined, text);
  }
}

TEST_F(MergeDb, AShorterSystemRecordLeavesNothingOfTheLongerOne) {
  const Records longer =
      system("<1;0;1;A=1=" + std::string(600, ' ') + ";>" + counters({{5, "7"}}));
  ASSERT_EQ(longer.size(), 3U);
  const Records other = {build({.recn = 3, .text = "kept", .auxValue2 = 1})};
  EXPECT_EQ(merge(longer + other + object(5, 1), ""), exitSuccess);
  EXPECT_THAT(after_, ElementsAre("0:0 0:0#0 t0 m0:0 '<1;0;1;A=1;>" + counters({{5, "7"}}) + "'",
                                  "0:0 0:0#3 t0 m0:0 'kept'", "0:0 5:1#0 t5 m0:0 ''"));
}

// Records are counted list by list, whatever the order in which they are added: the new object
// comes first, although its key comes last.
TEST_F(MergeDb, ExistingKeysAreNamedAndLoseNothing) {
  const Records objects = object(5, 1, element(2, 0, {std::string(300, 'x')})) + object(7, 2, "y");
  const Records own = system(counters({})) + objects;
  const Records fresh = object(5, 30);
  for (const bool verbose : {false, true}) {
    EXPECT_EQ(merge(own, test::backupOf(own + fresh), verbose), exitFailed);
    std::string failures;
    for (auto at = output_.find("*Error"); at < output_.size();
         at = output_.find("*Error", at + 1)) {
      failures += output_.substr(at, output_.find('\n', at) + 1 - at);
    }
    EXPECT_EQ(failures, addFailure(2) + addFailure(2) + addFailure(2));
    EXPECT_THAT(after_, ElementsAreArray(describe(own + fresh)));
  }
  // A second system record of the backup is an object, whose key exists.
  const Records twice = system("<2;0;0;>") + system("<3;0;0;>");
  EXPECT_EQ(merge(system(counters({})), test::backupOf(twice)), exitFailed);
  EXPECT_EQ(output_, addFailure(1));
  EXPECT_THAT(after_, ElementsAreArray(describe(system(counters({})))));
}

TEST_F(MergeDb, WhatCannotBeReadEndsTheMergeBeforeAnythingIsWritten) {
  const std::string noStart = "*Error: in StartUpdate, RC=5(NotThere), RSN=14(EndOfFile)\n";
  const std::string noCounters =
      "*Error: no handler counters in the system record, RC=5(NotThere), RSN=28(NotFound)\n";
  const Records one = object(5, 1, "<9;0;1;1;>");
  EXPECT_EQ(merge({}, ""), exitFailed);
  EXPECT_EQ(output_, noStart);
  for (const Records& current : {one, system("<1;0;1;A=1;>") + one}) {
    EXPECT_EQ(merge(current, test::backupOf(one)), exitFailed);
    EXPECT_EQ(output_, noCounters);
    EXPECT_EQ(after_, describe(current));
  }
  EXPECT_EQ(merge(system(counters({})), ""), exitSuccess);
  const std::string before = test::readFile("db");
  EXPECT_EQ(mergeInto("db", "/proc/self/mem"), exitFailed);
  EXPECT_EQ(output_, "*Error: reading the backup file, RC=8(SystemError), RSN=20(IOError)\n");
  EXPECT_EQ(mergeInto("missing", "backup"), exitDatabaseNotOpened);
  EXPECT_THAT(output_, HasSubstr("*Error: Unable to open key1 database missing, RC=5(NotThere)"));
  EXPECT_TRUE(test::readFile("db") == before);
}

TEST_F(MergeDb, WithoutABackupTheSystemRecordIsRewritten) {
  test::createDatabase(system("<1;0;1;A= ;><9;0;3;4;5;6;>"));
  EXPECT_EQ(mergeInto("db", "missing"), exitBackupNotOpened);
  EXPECT_EQ(output_, "IDS_MAIN_SECOND(missing)\n");
  EXPECT_THAT(describe(test::databaseRecords()),
              ElementsAre("0:0 0:0#0 t0 m0:0 '<1;0;1;A=;>" +
                          counters({{1, "4"}, {2, "5"}, {3, "6"}}) + "'"));
}

TEST_F(MergeDb, AVerboseRunTellsEverything) {
  const Records alien = system("<1;0;1;C=3;>");
  const std::string text = element(94, 0, {"<1;1;3;0;0;0;2;>"});
  const Records one = {build({handle(1, 1), handle(3, 2), 0, 3, {}, -1, text, 12})};
  EXPECT_EQ(merge(system("<1;0;1;A=9;><9;0;3;10;x;5;>"), test::backupOf(alien + one), true),
            exitSuccess);
  EXPECT_EQ(output_, test::verboseLines("verbose_merge.txt"));
}

// The storage fails for the first change, or in the middle of adding, behind a record whose key is
// taken (156 identifiers sort before its).
TEST_F(MergeDb, AStorageFailureIsOneLineAndPublishesNothing) {
  const std::string noSpace = ".*, RC=7\\(Shortage\\), RSN=40\\(Space\\)\n";
  const std::string notAdded = "\\*Error: Failure adding record ";
  const std::tuple<rlim_t, Records, std::string> cases[] = {
      {rlim_t{4} << 10, {}, "\\*Error:" + noSpace},
      {rlim_t{1} << 20, object(5, 1),
       notAdded + "157 .*RC=4.*\n" + notAdded + "[0-9]{4,5}" + noSpace}};
  Records many;
  for (std::uint32_t id = 1; id <= 40000; ++id) many.push_back(object(5, id).front());
  test::writeFile("backup", test::backupOf(many));
  for (const auto& [limit, own, lines] : cases) {
    std::filesystem::remove("db");
    test::createDatabase(system(counters({{5, "1"}})) + own);
    const std::string before = test::readFile("db");
    const auto result = test::runIn(directory_, "orxrestore", {"-i", "backup", "-m", "db"}, "",
                                    test::fileLimit(limit));
    EXPECT_EQ(result.exitCode, exitFailed);
    EXPECT_THAT(result.output.substr(result.output.find("*Error")), testing::MatchesRegex(lines));
    EXPECT_TRUE(test::readFile("db") == before);
  }
}

}  // namespace
}  // namespace orx
