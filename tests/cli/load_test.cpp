// Many runs on one database at once, and runs beside a reader; scripts/load_runs.sh does the same
// with more.
#include <gmock/gmock.h>

#include <algorithm>

#include "restore/exit_codes.h"
#include "tests/support/program_runs.h"
#include "tests/support/small_fleet.h"
#include "tests/support/test_bundle.h"

namespace orx::test {
namespace {

using testing::AllOf;
using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::SizeIs;

class Load : public testing::Test {
 protected:
  Load() {
    writeEchoBundle(directory_.path());
    createDatabase(directory_.file("db"), 3);
  }
  ProgramResult run(const std::string& script) {
    return runProgram(shellScript(directory_, script));
  }

  TempDir directory_;
};

constexpr const char* refused = "RC=3(BusyObject), RSN=19(InUse)\n";

// A run that waits for the end of its backup holds the database until all others have ended.
TEST_F(Load, RunsBesideAnotherAreRefusedAndChangeNothing) {
  writeFile(directory_ / "lines", resourceLines(3000));
  writeFile(directory_ / "other", backupText({plainLine(7)}));
  const auto result = run(R"(mkfifo first
orxrestore -i first -o db > first.out 2>&1 & winner=$!
exec 3> first; cat lines >&3; until [ -e db.orx-new ]; do sleep 0.02; done
for id in $(seq 100); do { orxrestore -i other -o db; echo "exit code $?"; } > out$id 2>&1 & done
for job in $(jobs -p); do [ $job = $winner ] || wait $job; done
exec 3>&-; wait $winner)");
  EXPECT_EQ(result.exitCode, exitSuccess);
  for (int id = 1; id <= 100; ++id) {
    const std::string output = readFile(directory_ / ("out" + std::to_string(id)));
    EXPECT_THAT(output, AllOf(HasSubstr(refused), HasSubstr("\nexit code 5\n"))) << id;
  }
  EXPECT_THAT(objects(directory_.file("db")), SizeIs(3000));
  EXPECT_THAT(objects(directory_.file("db.orx-previous")), ElementsAre(1, 2, 3));
}

// Each has a backup of its own, so that the database tells whose it is.
TEST_F(Load, OfRunsThatStartAtOnceEachHasTheDatabaseForItselfOrIsRefused) {
  constexpr std::uint32_t runs = 100;
  for (std::uint32_t id = 1; id <= runs; ++id) {
    writeFile(directory_ / ("b" + std::to_string(id)), backupText({plainLine(1000 + id)}));
  }
  (void)run(R"(for id in $(seq 100); do
  { orxrestore -i b$id -o db; echo "exit code $?"; } > out$id 2>&1 &
done; wait)");
  std::vector<std::string> winners;
  for (std::uint32_t id = 1; id <= runs; ++id) {
    const std::string output = readFile(directory_ / ("out" + std::to_string(id)));
    if (output.ends_with("\nexit code 0\n")) {
      winners.push_back(handleText(2, 1000 + id));
    } else {
      EXPECT_THAT(output, AllOf(HasSubstr(refused), HasSubstr("\nexit code 5\n"))) << id;
    }
  }
  EXPECT_FALSE(winners.empty());
  const auto backup = runIn(directory_, "orxkdb", {"backup", "db", "-"}).output;
  EXPECT_THAT(winners, Contains(backup.substr(48, backup.find(' ', 48) - 48)));
  EXPECT_FALSE(std::filesystem::exists(directory_ / "db.orx-new"));
}

// The dump waits in the middle of the old database while that is replaced.
TEST_F(Load, AReaderKeepsTheDatabaseThatItHasOpened) {
  createDatabase(directory_.file("big"), 3000);
  writeFile(directory_ / "backup", resourceLines(5));
  const std::string before = runIn(directory_, "orxkdb", {"dump", "big"}).output;
  const auto result = run(R"(mkfifo slow; orxkdb dump big > slow & reader=$!; exec 3< slow
head -c 1000 <&3 > dumped; orxrestore -i backup -o big > restored; echo $?
cat <&3 >> dumped; wait $reader; echo $?)");
  EXPECT_EQ(result.output, "0\n0\n") << result.errors;
  EXPECT_TRUE(readFile(directory_ / "dumped") == before);
  EXPECT_THAT(objects(directory_.file("big")), SizeIs(5));
}

}  // namespace
}  // namespace orx::test
