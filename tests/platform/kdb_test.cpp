// The operations of the keyed database, in one process.
#include "platform/kdb.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <sys/xattr.h>

#include <cerrno>
#include <functional>
#include <random>
#include <ranges>

#include "platform/file.h"
#include "platform/kdb/sorted_runs.h"
#include "tests/support/kdb_records.h"

namespace orx {
namespace {

using test::addRecords, test::createDatabase, test::makeRecord, test::objectOf, test::Opened,
    test::Record, test::TempDir, testing::ElementsAre, testing::IsEmpty, testing::SizeIs;

class Kdb : public testing::Test {
 protected:
  // Reads the scan to its end; deletes the records that `choose` picks.
  static std::int32_t scan(const Opened& database, const Record& start,
                           const std::function<bool(std::uint32_t)>& choose) {
    kdb::kdbHandle scan;
    EXPECT_EQ(kdb::StartUpdate(database.handle, start.data(), 20, scan), 0);
    for (;;) {
      Record record{};
      std::int32_t length = 0;
      kdb::kdbHandle held;
      const auto code = kdb::ReadNextForUpdate(scan, 0, record.data(), 296, length, held);
      if (code != 0) return code;
      EXPECT_EQ(choose(objectOf(record)) ? kdb::DeleteHeldRecord(held) : 0, 0);
    }
  }

  std::string undo() const {
    kdb::kdbStatus status;
    (void)kdb::exchangeWithPrevious(name_.c_str(), status);
    return test::text(status);
  }

  TempDir scratch_;
  std::string name_ = scratch_.file("db");
};

TEST_F(Kdb, ReadingSeesChangesAndSizesAndKeysAreChecked) {
  createDatabase(name_, 3);
  const Opened database(name_);
  EXPECT_EQ(database.add(makeRecord(4)), "0/0");
  EXPECT_EQ(database.erase(makeRecord(3)), "0/0");
  Record record = makeRecord(3);
  EXPECT_EQ(database.readNext(record), "0/0");
  EXPECT_EQ(objectOf(record), 4u);
  record = makeRecord(5);
  EXPECT_EQ(database.readNext(record), "5/14");
  for (const auto& [key, size] : {std::pair(19, 296), std::pair(20, 295)}) {
    const auto code = kdb::AddRecord(database.handle, record.data(), key, record.data(), size);
    EXPECT_EQ(database.status(code), "1/22") << key;
  }
  const Record low = makeRecord(6), high = makeRecord(9);
  ASSERT_EQ(kdb::AddRecord(database.handle, high.data(), 20, low.data(), 296), 0);
  record = makeRecord(7);
  EXPECT_EQ(database.readNext(record), "8/17") << "a record under a higher key than its own";
}

TEST_F(Kdb, TheOrderIsThatOfHandleBytesThenRecordNumber) {
  createDatabase(name_);
  addRecords(name_,
             {makeRecord(1, 300), makeRecord(1, 1), makeRecord(1, 0xFFFFFFFF), makeRecord(1, 256),
              makeRecord(1, 255), makeRecord(1, 2), makeRecord(1, 0), makeRecord(0, 9)});
  std::vector<std::uint32_t> order;
  for (const Record& record : Opened(name_).all()) order.push_back(loadLE32(record.data() + 16));
  EXPECT_THAT(order, ElementsAre(9, 0, 1, 2, 255, 256, 300, 0xFFFFFFFF));
}

// One of the records has a key whose follower carries into the identifier of the object.
TEST_F(Kdb, ReadingKeyByKeyMeetsEveryRecordAndEnds) {
  createDatabase(name_, 2000);
  Record last{}, full = makeRecord(0xFF, 0xFFFFFFFF);
  last.fill(0xFF);
  std::memset(full.data() + 12, 0xFF, 4);
  addRecords(name_, {makeRecord(7, 0xFFFFFFFF), full, last});
  for (const bool changed : {false, true}) {
    const Opened database(name_);
    EXPECT_EQ(changed ? database.update(makeRecord(1)) : "0/0", "0/0");
    Record record{};
    int count = 0;
    do {
      ASSERT_EQ(database.readNext(record), "0/0") << "the last key of all has no follower";
      ++count;
    } while (kdb::advanceKey(record.data()));
    EXPECT_EQ(count, 2003) << changed;
  }
}

TEST_F(Kdb, StaleAndForeignHandlesAreFoundNotFollowed) {
  createDatabase(name_, 3);
  const Record zero{};
  Record buffer{};
  std::int32_t length = 0;
  kdb::kdbHandle scan, first, second;
  const Opened database(name_);
  ASSERT_EQ(kdb::StartUpdate(database.handle, zero.data(), 20, scan), 0);
  ASSERT_EQ(kdb::ReadNextForUpdate(scan, 0, buffer.data(), 296, length, first), 0);
  ASSERT_EQ(kdb::ReadNextForUpdate(scan, 0, buffer.data(), 296, length, second), 0);
  const kdb::kdbHandle cursor = database.cursor();
  EXPECT_EQ(kdb::DeleteHeldRecord(first), 2) << "let go by the next read";
  EXPECT_EQ(kdb::DeleteHeldRecord(scan), 2) << "of another kind";
  EXPECT_EQ(kdb::DeleteHeldRecord(second), 0);
  EXPECT_EQ(kdb::DeleteHeldRecord(second), 2) << "deleted already";
  EXPECT_EQ(database.close(), "0/0");
  EXPECT_EQ(database.close(), "2/0");
  EXPECT_EQ(kdb::ReadNextForUpdate(scan, 0, buffer.data(), 296, length, second), 2);
  EXPECT_EQ(kdb::ReadNextFromCursor(cursor, 0, buffer.data(), 296, length), 2);
  EXPECT_THAT(test::objects(name_), ElementsAre(1, 3));
}

TEST_F(Kdb, CursorsSeeTheDatabaseAsItWasWhenTheyWereOpened) {
  createDatabase(name_, 3);
  const Opened database(name_);
  const auto before = database.cursor();
  EXPECT_EQ(scan(database, makeRecord(2), [](auto object) { return object == 2; }), 5);
  const auto afterDelete = database.cursor();
  EXPECT_EQ(database.add(makeRecord(8)), "0/0");
  const auto afterAdd = database.cursor();
  EXPECT_EQ(database.add(makeRecord(9)), "0/0");
  EXPECT_EQ(database.erase(makeRecord(1)), "0/0");
  EXPECT_THAT(database.all(before), SizeIs(3));
  EXPECT_THAT(database.all(afterDelete), SizeIs(2));
  EXPECT_THAT(database.all(afterAdd), SizeIs(3));
  EXPECT_THAT(database.all(), SizeIs(3));
  EXPECT_THAT(test::objects(name_), ElementsAre(1, 2, 3)) << "nothing shows before the close";
}

TEST_F(Kdb, ToStoreARecordAsItIsIsNoChange) {
  createDatabase(name_, 3);
  for (const bool isChanged : {false, true}) {
    const Opened database(name_);
    Record last = makeRecord(3);
    if (isChanged) last.back() ^= 1;
    EXPECT_EQ(database.update(makeRecord(2)), "0/0");
    EXPECT_EQ(database.update(last), "0/0");
    EXPECT_EQ(database.update(makeRecord(4)), "5/28");
    EXPECT_EQ(database.close(), "0/0");
    EXPECT_EQ(std::filesystem::exists(name_ + ".orx-previous"), isChanged);
  }
}

unsigned modeOf(const std::string& file) {
  return static_cast<unsigned>(std::filesystem::status(file).permissions()) & 0777u;
}

TEST_F(Kdb, PublishingKeepsOneGenerationTheModeAndTheLink) {
  createDatabase(name_, 1);
  ASSERT_EQ(::chmod(name_.c_str(), 0604), 0);
  std::filesystem::create_symlink("db", scratch_.file("link"));
  for (std::uint32_t object = 2; object <= 4; ++object) {
    const Opened database(scratch_.file("link"));
    EXPECT_EQ(database.add(makeRecord(object)), "0/0");
    EXPECT_EQ(modeOf(name_ + ".orx-new"), 0600u);
    // Locked before it gets the name, so that nobody changes it while it is published.
    EXPECT_EQ(lockFile(openFile(name_ + ".orx-new", O_RDONLY).get()), EWOULDBLOCK);
    EXPECT_EQ(database.close(), "0/0");
  }
  EXPECT_THAT(scratch_.names(), ElementsAre("db", "db.orx-previous", "link"));
  EXPECT_TRUE(std::filesystem::is_symlink(scratch_.file("link")));
  EXPECT_THAT(test::objects(name_), SizeIs(4));
  EXPECT_THAT(test::objects(name_ + ".orx-previous"), SizeIs(3));
  EXPECT_EQ(modeOf(name_), 0604u);
  ASSERT_EQ(::chmod(name_.c_str(), 0640), 0);
  EXPECT_EQ(undo(), "0/0");
  EXPECT_EQ(modeOf(name_), 0640u) << "not those of the generation";
}

// An access list as the system stores it: a version, then tag, permissions and identifier, here of
// the owner, the user 12345, the group, the mask and the others.
std::string accessList(char userBits) {
  constexpr std::string_view none = "\xFF\xFF\xFF\xFF";
  std::string list{2, 0, 0, 0, 1, 0, 6, 0};
  list.append(none).append({2, 0, userBits, 0, '\x39', '\x30', 0, 0});
  list.append({4, 0, 0, 0}).append(none).append({'\x10', 0, userBits, 0}).append(none);
  return list.append({'\x20', 0, 0, 0}).append(none);
}

// "" for none.
std::string attributeOf(const std::string& file, const char* name) {
  std::array<char, 256> value{};
  const ssize_t size = ::getxattr(file.c_str(), name, value.data(), value.size());
  return {value.data(), static_cast<std::size_t>(std::max<ssize_t>(size, 0))};
}

bool setAttribute(const std::string& file, const char* name, const std::string& value) {
  return ::setxattr(file.c_str(), name, value.data(), value.size(), 0) == 0;
}

TEST_F(Kdb, PublishingKeepsTheAccessListAndTakesNoneFromTheDirectory) {
  constexpr const char* own = "system.posix_acl_access";
  const std::string list = accessList(4);
  createDatabase(name_, 1);
  if (!setAttribute(scratch_.path(), "system.posix_acl_default", accessList(6))) {
    GTEST_SKIP() << "a file system without access lists";
  }
  addRecords(name_, {makeRecord(2)});
  EXPECT_EQ(attributeOf(name_, own), "") << "the database had none";
  ASSERT_TRUE(setAttribute(name_, own, list));
  const bool hasLabels = setAttribute(name_, "user.note", "kept");
  {
    const Opened database(name_);
    EXPECT_EQ(database.add(makeRecord(3)), "0/0");
    const std::string successor = attributeOf(name_ + ".orx-new", own);
    ASSERT_EQ(successor.size(), list.size());
    EXPECT_EQ(successor[30], 0) << "the mask lets nobody in yet";
    EXPECT_EQ(database.close(), "0/0");
  }
  EXPECT_EQ(attributeOf(name_, "user.note"), hasLabels ? "kept" : "");
  EXPECT_EQ(undo(), "0/0");
  EXPECT_EQ(attributeOf(name_, own), list);
}

TEST_F(Kdb, UndoExchangesSoundGenerationsThatNobodyHas) {
  const std::string previous = name_ + ".orx-previous";
  createDatabase(name_, 1);
  EXPECT_EQ(undo(), "5/28");
  addRecords(name_, {makeRecord(2)});
  {
    const UniqueFd other = openFile(previous, O_RDONLY);
    ASSERT_EQ(lockFile(other.get()), 0);
    EXPECT_EQ(undo(), "3/19");
  }
  EXPECT_EQ(undo(), "0/0");
  EXPECT_THAT(test::objects(name_), SizeIs(1));
  std::filesystem::rename(previous, scratch_.file("elsewhere"));
  std::filesystem::create_symlink("elsewhere", previous);
  EXPECT_EQ(undo(), "8/17");
}

TEST_F(Kdb, ARunThatChangesNothingPublishesNothing) {
  createDatabase(name_, 2);
  std::filesystem::create_hard_link(name_, scratch_.file("same file"));
  const Opened database(name_);
  EXPECT_EQ(scan(database, Record{}, [](auto) { return false; }), 5);
  EXPECT_EQ(database.close(), "0/0");
  const Opened abandoned(name_);
  EXPECT_EQ(abandoned.add(makeRecord(7)), "0/0");
  EXPECT_EQ(kdb::AbandonDatabase(abandoned.handle), 0);
  EXPECT_TRUE(std::filesystem::equivalent(name_, scratch_.file("same file")));
  EXPECT_THAT(scratch_.names(), ElementsAre("db", "same file"));
}

TEST_F(Kdb, NewDatabasesNeverReplaceAnything) {
  createDatabase(name_, 2);
  EXPECT_EQ(Opened(name_, kdb::openAsNew).opened, "4/46");
  std::filesystem::create_symlink("nowhere", scratch_.file("dangling"));
  EXPECT_EQ(Opened(scratch_.file("dangling"), kdb::openAsNew).opened, "4/46");
  const std::string other = scratch_.file("other");
  const Opened database(other, kdb::openAsNew);
  EXPECT_EQ(database.opened, "0/0");
  EXPECT_EQ(Opened(other, kdb::openAsNew).opened, "3/19") << "somebody is making it";
  test::writeFile(other, "came meanwhile");
  EXPECT_EQ(database.close(), "4/46");
  EXPECT_EQ(test::readFile(other), "came meanwhile");
  EXPECT_THAT(scratch_.names(), ElementsAre("dangling", "db", "other"));
}

// Whoever looks for a key goes by the keys of a branch: of the leaves alone, this one is sound.
TEST_F(Kdb, AKeyBetweenTwoLeavesIsDamageWhereItDoesNotLieBetweenThem) {
  createDatabase(name_, 100);
  const std::string sound = test::readFile(name_);
  const auto keyOf = [](std::uint32_t object) {
    const Record record = makeRecord(object);
    return std::string(record.begin(), record.begin() + 20);
  };
  std::size_t branch = 2 * std::size_t{4096};
  while ((sound[branch + 10] & 1) == 0) branch += 4096;
  std::uint32_t first = 2;  // of a leaf
  while (sound.find(keyOf(first), branch) >= branch + 4096) ++first;
  const std::string before = keyOf(first - 1), behind = keyOf(first + 1);
  for (const std::string& other : {before, behind}) {
    std::string damaged = sound;
    damaged.replace(sound.find(keyOf(first), branch), 20, other);
    test::writeFile(name_, damaged);
    std::string end;
    const Opened reading(name_, kdb::openForReading);
    (void)reading.all(reading.cursor(), &end);
    EXPECT_EQ(end, "8/17");
    const Opened database(name_);
    (void)database.update(makeRecord(1, 0, 9));
    (void)database.add(makeRecord(first - 1, 0, 9));
    EXPECT_EQ(database.close(), "8/17");
    EXPECT_TRUE(test::readFile(name_) == damaged);
  }
}

// Any sequence of changes and look-ups, against a map. One run adds far more than waits in memory,
// so that repeated keys lie in the file, in runs and in the buffer; the last one changes so much
// that a part of the database is copied and another waits for it.
TEST_F(Kdb, AgreesWithAMapOverManyRandomRuns) {
  std::mt19937 generator(20261);
  const auto random = [&] { return static_cast<std::uint32_t>(generator()); };
  createDatabase(name_);
  std::map<std::pair<std::uint32_t, std::uint32_t>, Record> expected;
  const auto holds = [](const Opened& database, const auto& map) {
    return std::ranges::equal(database.all(), std::views::values(map));
  };
  for (int run = 0; run < 14; ++run) {
    const Opened database(name_);
    auto working = expected;
    const bool ascending = run % 3 == 0 && run < 12;
    const std::uint32_t steps = run < 12 ? 1500 : run == 12 ? 120'000 : 60'000;
    std::uint32_t object = 0;
    for (std::uint32_t step = 0; step < steps; ++step) {
      const bool again = step > 0 && random() % 8 == 0;
      if (!again) object = ascending ? step : random() % (2 * steps);
      // Scans: of everything, from somewhere on, of single records and of blocks; several before
      // the first change, which are kept as ranges until then.
      for (int scans = step == 0 ? 3 : step % 300 == 0 ? 1 : 0; scans > 0 && run < 12; --scans) {
        const std::uint32_t from = scans == 2 ? object : 0, every = 1 + random() % 20;
        const auto chosen = [&](std::uint32_t at) { return at >= from && at * 7 % 20 < every; };
        EXPECT_EQ(scan(database, makeRecord(from), chosen), 5);
        std::erase_if(working, [&](const auto& entry) { return chosen(entry.first.first); });
        if (scans > 1) continue;
        Record next{};
        EXPECT_EQ(database.readNext(next), working.empty() ? "5/14" : "0/0");
        ASSERT_TRUE(holds(database, working)) << run << ", " << step;
      }
      if (run == 5) break;  // nothing else
      Record record = makeRecord(object, random() % 3, static_cast<std::uint8_t>(random()));
      const std::pair key(object, loadLE32(record.data() + 16));
      const bool known = working.contains(key);
      switch (run == 12 ? 9 : random() % (run == 13 ? 20 : 5)) {
        case 0:
          EXPECT_EQ(database.update(record), known ? "0/0" : "5/28");
          if (known) working[key] = record;
          break;
        case 1:
          EXPECT_EQ(database.erase(record), known ? "0/0" : "5/28");
          working.erase(key);
          break;
        case 2: {
          const auto next = working.lower_bound(key);
          const bool isLast = next == working.end();
          EXPECT_EQ(database.readNext(record), isLast ? "5/14" : "0/0");
          EXPECT_TRUE(isLast || record == next->second);
          break;
        }
        default:
          EXPECT_EQ(database.add(record), known ? "4/46" : "0/0");
          working.emplace(key, record);
      }
      if (run == 12 && step == 90'000) {
        EXPECT_EQ(database.update(working.begin()->second), "0/0");
      }
    }
    if (run % 4 == 3) continue;  // abandoned
    ASSERT_EQ(database.close(), "0/0");
    expected = working;
    ASSERT_TRUE(holds(Opened(name_, kdb::openForReading), expected)) << run;
  }
}

// Runs of 10 records: in memory, in the file, on both sides of the limit between them, and merged
// on several levels.
TEST_F(Kdb, AddedAndSortedRecordsComeBackTogetherHoweverManyThereAre) {
  using namespace kdb;
  const auto recordOf = [](std::uint32_t object) {
    return makeRecord(object, 0, static_cast<std::uint8_t>(object));
  };
  for (std::uint32_t number = 0; number <= 22 * 22; ++number) {
    const std::uint32_t added = number == 22 * 22 ? 60'000 : number / 22, sorted = number % 22;
    std::unique_ptr<SortedRuns> runs;
    ASSERT_EQ(SortedRuns::create(scratch_.path().string(), runs, 10), 0);
    const auto put = [&](std::uint32_t object, auto call) {
      const Record record = recordOf(object);
      return std::invoke(call, *runs, Key::ofRecord(record.data()), record.data());
    };
    for (std::uint32_t i = 0; i < added; ++i) {  // 7919 is a prime: every even object once
      ASSERT_EQ(put(i * 7919 % added * 2, &SortedRuns::add), succeeded);
      ASSERT_EQ(put(i / 2 * 7919 % added * 2, &SortedRuns::add), duplicateKey);
    }
    for (std::uint32_t i = 0; i < sorted; ++i) {
      ASSERT_EQ(put(2 * i + 1, &SortedRuns::appendSorted), succeeded);
    }
    ASSERT_EQ(runs->startReading(), succeeded);
    Key key, before;
    const std::uint8_t* bytes = nullptr;
    std::uint32_t count = 0;
    for (; runs->next(key, bytes).ok(); before = key, ++count) {
      const Record wanted = recordOf(loadBE32(bytes + 8));
      ASSERT_TRUE(count == 0 || before < key);
      ASSERT_TRUE(key == Key::ofRecord(bytes) && std::equal(wanted.begin(), wanted.end(), bytes));
    }
    EXPECT_EQ(count, added + sorted);
    EXPECT_EQ(runs->next(key, bytes), endOfData);
  }
}

// As after a failure elsewhere: whoever gets the file must not close it under the writing thread.
TEST_F(Kdb, TheFileOfSortedRunsIsGivenAwayWhenNobodyWritesToItAnyMore) {
  std::unique_ptr<kdb::SortedRuns> runs;
  ASSERT_EQ(kdb::SortedRuns::create(scratch_.path().string(), runs, 5000), 0);
  for (std::uint32_t object = 5000; object > 0; --object) {
    const Record record = makeRecord(object);
    ASSERT_EQ(runs->add(kdb::Key::ofRecord(record.data()), record.data()), kdb::succeeded);
  }
  EXPECT_EQ(::lseek(runs->takeFile().get(), 0, SEEK_END), 5000 * kdb::entrySize);
}

}  // namespace
}  // namespace orx
