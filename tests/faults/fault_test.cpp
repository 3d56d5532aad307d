// A sample of the disturbed runs; scripts/fault_runs.sh takes them all.
#include <gtest/gtest.h>
#include <sys/syscall.h>

#include "tests/faults/disturbances.h"
#include "tests/support/kdb_records.h"

namespace orx::faults {
namespace {

class FaultSample : public testing::TestWithParam<Operation> {};
class AllocationSample : public testing::TestWithParam<Operation> {};

std::string nameOfTest(const testing::TestParamInfo<Operation>& operation) {
  std::string name = operation.param.name;
  std::erase(name, '-');
  return name;
}

std::vector<Operation> restores() {
  std::vector<Operation> chosen = operations();
  std::erase_if(chosen, [](const Operation& operation) { return !operation.isRestore(); });
  return chosen;
}

INSTANTIATE_TEST_SUITE_P(Operations, FaultSample, testing::ValuesIn(operations()), nameOfTest);
INSTANTIATE_TEST_SUITE_P(Operations, AllocationSample, testing::ValuesIn(restores()), nameOfTest);

// Each `every`-th, a prime, so that the samples do not fall on the same calls of every loop; and
// those that decide.
void sample(const Disturbances& all, std::size_t every) {
  ASSERT_GT(all.size(), every);
  for (std::size_t i = 0; i < all.size(); ++i) {
    if (i % every == 0 || all[i].isDecisive) {
      EXPECT_EQ(all[i].run().faults, "");
    }
  }
}

TEST_P(FaultSample, LeavesTheOldOrTheNewAndSaysWhich) {
  const Scene scene(GetParam());
  sample(failedCalls(scene), 97);
  if (GetParam().survivesPowerLoss) sample(powerFailures(scene), 211);
}

// A sanitizer looks for what is not released, in the build that has one.
TEST_P(AllocationSample, EndsInOrderWithoutMemory) {
  const Scene scene(GetParam());
  sample(failedAllocations(scene), 101);
}

// Another run replaces the database between the opening and the lock: what was opened is no longer
// the database.
TEST(LockFaultSample, IsTakenOnTheFileThatHasTheName) {
  const Scene scene(operations().front());
  const std::string other = "orxrestore -i backup.txt -m db", own = "orxrestore -u db";
  const auto run = [](const test::TempDir& directory, const std::string& command) {
    EXPECT_EQ(test::runProgram(programIn(directory.path(), command)).exitCode, 0);
  };
  const test::TempDir expected, directory;
  scene.copyTo(expected.path());
  scene.copyTo(directory.path());
  run(expected, other);
  run(expected, own);
  bool hasLocked = false;
  const auto replaceBeforeLock = [&](const TracedCall& call) {
    if (call.call.number == SYS_flock && !std::exchange(hasLocked, true)) run(directory, other);
    return false;
  };
  EXPECT_EQ(runTraced({.program = programIn(directory.path(), own), .onCall = replaceBeforeLock})
                .exitCode,
            0);
  EXPECT_TRUE(test::recordBytes(directory / "db") == test::recordBytes(expected / "db"));
}

}  // namespace
}  // namespace orx::faults
