// The keyed database among damaged files, other processes, missing rights and full disks.
#include <gmock/gmock.h>
#include <sched.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include "platform/kdb_obstacle.h"
#include "tests/support/kdb_records.h"

namespace orx {
namespace {

using test::addRecords, test::createDatabase, test::makeRecord, test::Opened, test::Record,
    test::TempDir, testing::ElementsAre, testing::SizeIs;

// Runs `body` in a process of its own; its wait status.
int inChild(const std::function<int()>& body) {
  const pid_t child = ::fork();
  if (child == 0) ::_exit(body());
  int status = 0;
  EXPECT_EQ(::waitpid(child, &status, 0), child);
  return status;
}

std::string openResult(const std::string& name, std::int32_t mode = kdb::openForUpdate) {
  return Opened(name, mode).opened;
}

// Gives a database of the engine records with integer keys, in both of its heads.
void useIntegerKeys(const std::string& name) {
  createDatabase(name, 20);
  std::string bytes = test::readFile(name);
  bytes[88 + 4] = bytes[4096 + 88 + 4] = 0x08;
  test::writeFile(name, bytes);
}

void cutPage(const std::string& name) {
  createDatabase(name, 60);
  std::filesystem::resize_file(name, std::filesystem::file_size(name) - 4096);
}

class KdbSurroundings : public testing::Test {
 protected:
  TempDir scratch_;
  std::string name_ = scratch_.file("db");
};

TEST_F(KdbSurroundings, WhatIsNoDatabaseIsRefusedAndLeftAlone) {
  using std::filesystem::create_symlink;
  using Name = const std::string&;
  const std::tuple<const char*, void (*)(Name), const char*> cases[] = {
      {"missing", [](Name) {}, "5/28"},
      {"empty", [](Name name) { test::writeFile(name, ""); }, "8/17"},
      {"text", [](Name name) { test::writeFile(name, std::string(9000, 'x')); }, "8/17"},
      {"directory", [](Name name) { std::filesystem::create_directory(name); }, "8/17"},
      {"pipe", [](Name name) { (void)::mkfifo(name.c_str(), 0600); }, "8/17"},
      {"dangling link", [](Name name) { create_symlink("nowhere", name); }, "5/28"},
      {"link to itself", [](Name name) { create_symlink(name, name); }, "5/28"},
      {"records of another kind", useIntegerKeys, "8/17"},
      {"cut by a page", cutPage, "8/17"}};
  for (const auto& [what, make, expected] : cases) {
    const TempDir scratch;
    const std::string name = scratch.file("db");
    make(name);
    const auto before = scratch.names();
    EXPECT_EQ(openResult(name), expected) << what;
    EXPECT_EQ(scratch.names(), before) << what;
  }
  EXPECT_EQ(openResult(scratch_.file(std::string(300, 'n'))), "1/22");
  const std::string longName = scratch_.file(std::string(250, 'n'));
  EXPECT_EQ(openResult(longName, kdb::openAsNew), "1/22") << "no room for the successor's name";
}

TEST_F(KdbSurroundings, WhatCannotBeReadToItsEndIsNotReplaced) {
  createDatabase(name_, 5000);
  const Opened database(name_);
  const auto cursor = database.cursor();
  Record record{};
  std::int32_t length = 0;
  ASSERT_EQ(kdb::ReadNextFromCursor(cursor, 0, record.data(), 296, length), 0);
  std::filesystem::resize_file(name_, 20000);  // while it is read
  std::string end;
  (void)database.all(cursor, &end);
  EXPECT_EQ(end, "8/17");
  EXPECT_EQ(database.add(makeRecord(9999)), "8/17");
  EXPECT_EQ(database.close(), "8/17");
  EXPECT_EQ(std::filesystem::file_size(name_), 20000);
  EXPECT_THAT(scratch_.names(), ElementsAre("db"));
}

TEST_F(KdbSurroundings, ASecondOpenForUpdateIsRefusedAtOnceAndReadersAreNot) {
  createDatabase(name_, 2);
  const Opened database(name_);
  ASSERT_EQ(database.add(makeRecord(3)), "0/0");
  EXPECT_EQ(inChild([&] { return openResult(name_) == "3/19" ? 0 : 1; }), 0);
  EXPECT_EQ(inChild([&] { return openResult(name_, kdb::openForReading) == "0/0" ? 0 : 1; }), 0);
  EXPECT_EQ(database.close(), "0/0");
  EXPECT_EQ(openResult(name_), "0/0");
}

TEST_F(KdbSurroundings, AReaderKeepsItsStateWhileRunsPublish) {
  createDatabase(name_, 3000);
  const Opened reader(name_, kdb::openForReading);
  const auto cursor = reader.cursor();
  Record record{};
  std::int32_t length = 0;
  ASSERT_EQ(kdb::ReadNextFromCursor(cursor, 0, record.data(), 296, length), 0);
  for (std::uint32_t run = 0; run < 3; ++run) addRecords(name_, {makeRecord(4000 + run)});
  EXPECT_THAT(reader.all(cursor), SizeIs(2999));
  EXPECT_EQ(reader.add(makeRecord(1)), "11/3") << "opened for reading";
}

// A process may die right behind the step that changes the database: its successor has the name
// then, the replaced database that of the successor or, where names cannot be exchanged, one of its
// own for an instant, and neither generation may get lost. The sticky bit marks which is which.
TEST_F(KdbSurroundings, TheLastStepsOfADeadRunAreMadeUpFor) {
  const std::string left = name_ + ".orx-new", linked = name_ + ".orx-old";
  const std::string previous = name_ + ".orx-previous";
  const auto mark = [](const std::string& file) {
    using namespace std::filesystem;
    permissions(file, perms::sticky_bit, perm_options::add);
  };
  createDatabase(name_, 3);
  createDatabase(previous, 1);
  const auto expectNextRun = [&](std::size_t countOfPrevious) {
    EXPECT_EQ(Opened(name_).close(), "0/0");
    EXPECT_THAT(test::objects(name_), SizeIs(3));
    EXPECT_THAT(test::objects(previous), SizeIs(countOfPrevious));
    EXPECT_THAT(scratch_.names(), ElementsAre("db", "db.orx-previous"));
  };
  std::filesystem::create_hard_link(name_, linked);
  expectNextRun(1);
  createDatabase(linked, 2);
  expectNextRun(2);
  createDatabase(left, 5);
  mark(name_);
  expectNextRun(5);
  createDatabase(left, 4);  // a complete successor that was never published
  mark(left);
  expectNextRun(5);

  createDatabase(left, 4);  // somebody changed the modes: nobody can tell which of the two it is
  EXPECT_EQ(openResult(name_), "4/46");
  std::filesystem::rename(name_, scratch_.file("moved"));
  EXPECT_EQ(openResult(name_, kdb::openAsNew), "4/46");
  std::filesystem::rename(left, linked);
  EXPECT_EQ(openResult(name_, kdb::openAsNew), "4/46") << "all that is left of a database";
  EXPECT_THAT(test::objects(linked), SizeIs(4));
  EXPECT_THAT(test::objects(previous), SizeIs(5));
}

TEST_F(KdbSurroundings, NamesThatBelongToAnotherDatabaseAreReadOnly) {
  for (const char* const ending : {".orx-new", ".orx-old", ".orx-previous"}) {
    const std::string name = name_ + ending, link = scratch_.file("link");
    EXPECT_EQ(openResult(name, kdb::openAsNew), "1/1");
    createDatabase(name, 1);
    std::filesystem::create_symlink(name, link);
    EXPECT_EQ(openResult(link), "1/1");
    EXPECT_EQ(openResult(name, kdb::openForReading), "0/0");
    std::filesystem::remove(link);
  }
}

// What somebody does to the files of a run that is under way: the database is as it was.
TEST_F(KdbSurroundings, FilesThatSomebodyChangesDuringARunAreNotPublished) {
  using Name = const std::string&;
  const auto move = [](Name name) { std::filesystem::rename(name, name + ".moved"); };
  const std::tuple<void (*)(Name), const char*, const char*> cases[] = {
      {[](Name name) { std::filesystem::resize_file(name + ".orx-new", 0); }, "8/20", ""},
      {[](Name name) {
         std::filesystem::remove(name + ".orx-new");
         test::writeFile(name + ".orx-new", "somebody else's");
       },
       "8/20", ""},
      {move, "3/19", ".moved"},
      {[](Name name) {
         std::filesystem::rename(name, name + ".moved");
         createDatabase(name, 3);
       },
       "3/19", ""}};
  for (const auto& [change, expected, ending] : cases) {
    const TempDir scratch;
    const std::string name = scratch.file("db");
    createDatabase(name, 3);
    const Opened database(name);
    // More than a transaction, so that some of it is in the file, and then a part of another.
    for (std::uint32_t i = 0; i < 12000; ++i) ASSERT_EQ(database.add(makeRecord(10 + i)), "0/0");
    change(name);
    EXPECT_EQ(database.close(), expected);
    EXPECT_THAT(test::objects(name + ending), SizeIs(3)) << expected;
    EXPECT_FALSE(std::filesystem::exists(name + ".orx-previous")) << expected;
  }
}

TEST_F(KdbSurroundings, AFileThatCannotBeRenamedIsFoundAtTheOpenAndNamed) {
  createDatabase(name_, 1);
  for (const char* const ending : {"", ".orx-previous"}) {
    const int status = inChild([&] {
      const std::string file = name_ + ending;
      if (*ending != '\0') createDatabase(file, 1);
      const bool isMounted = ::unshare(CLONE_NEWNS) == 0 &&
                             ::mount("none", "/", nullptr, MS_REC | MS_PRIVATE, "") == 0 &&
                             ::mount(file.c_str(), file.c_str(), nullptr, MS_BIND, nullptr) == 0;
      if (!isMounted) return 77;
      return openResult(name_) == "3/19" && kdb::obstacleOf(name_).path == file ? 0 : 1;
    });
    if (WEXITSTATUS(status) == 77) GTEST_SKIP() << "no right to mount";
    EXPECT_EQ(status, 0) << ending;
  }
}

TEST_F(KdbSurroundings, WhatStandsInTheWayOfAGenerationIsFoundAtTheOpenAndNotOverwritten) {
  createDatabase(name_, 1);
  for (const char* generation : {".orx-previous", ".orx-old", ".orx-new"}) {
    std::filesystem::create_directory(name_ + generation);
    EXPECT_EQ(openResult(name_), "4/46") << generation;
    std::filesystem::remove(name_ + generation);
  }
  test::writeFile(name_ + ".orx-new", "somebody else's");
  EXPECT_EQ(openResult(name_), "4/46");
  EXPECT_EQ(test::readFile(name_ + ".orx-new"), "somebody else's");
  std::filesystem::remove(name_ + ".orx-new");
  std::filesystem::create_hard_link(name_, name_ + ".orx-new");
  EXPECT_EQ(openResult(name_), "0/0");
  test::writeFile(scratch_.file("precious"), "kept");
  std::filesystem::create_symlink("precious", name_ + ".orx-new");
  addRecords(name_, {makeRecord(2)});
  EXPECT_EQ(test::readFile(scratch_.file("precious")), "kept");
}

// An operator may have made the database of a copy's second name.
TEST_F(KdbSurroundings, ADatabaseThatIsItsOwnPreviousGenerationIsReplaced) {
  createDatabase(name_, 3);
  std::filesystem::create_hard_link(name_, name_ + ".orx-previous");
  addRecords(name_, {makeRecord(9)});
  EXPECT_THAT(test::objects(name_), SizeIs(4));
  EXPECT_THAT(test::objects(name_ + ".orx-previous"), SizeIs(3));
  EXPECT_THAT(scratch_.names(), ElementsAre("db", "db.orx-previous"));
}

TEST_F(KdbSurroundings, MissingRightsAreFoundAtTheOpen) {
  if (::geteuid() != 0) GTEST_SKIP() << "needs a second user";
  createDatabase(name_, 1);
  const std::string directory = std::filesystem::path(name_).parent_path();
  const std::tuple<const char*, mode_t, mode_t, uid_t, const char*> cases[] = {
      {"all there", 0600, 0700, 65534, "0/0"},      {"unreadable", 0000, 0700, 65534, "11/3"},
      {"read-only", 0400, 0700, 65534, "11/3"},     {"closed directory", 0600, 0500, 65534, "11/3"},
      {"hidden directory", 0600, 0, 65534, "11/3"}, {"somebody else's", 0666, 0777, 0, "11/3"},
  };
  for (const auto& [what, fileMode, directoryMode, owner, expected] : cases) {
    for (const auto& [file, mode] : {std::pair(name_, fileMode), {directory, directoryMode}}) {
      ASSERT_EQ(::chown(file.c_str(), owner, owner), 0);
      ASSERT_EQ(::chmod(file.c_str(), mode), 0);
    }
    const int status = inChild([&, result = expected] {
      if (::setgid(65534) != 0 || ::setuid(65534) != 0) return 2;
      return openResult(name_) == result ? 0 : 1;
    });
    EXPECT_EQ(status, 0) << what;
  }
}

}  // namespace
}  // namespace orx
