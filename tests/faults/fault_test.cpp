// A sample of the disturbed runs; scripts/fault_runs.sh takes them all.
#include <gtest/gtest.h>
#include <sys/syscall.h>

#include <cstdio>
#include <cstdlib>

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
// those that decide. With ORX_FAULT_SHARD=I/N all of the I-th of N shards, and a line for each.
void sample(const Scene& scene, const Disturbances& all, std::size_t every) {
  const char* const shard = std::getenv("ORX_FAULT_SHARD");
  const std::string share = shard == nullptr ? "0/" + std::to_string(every) : shard;
  const std::size_t first = std::stoul(share), step = std::stoul(share.substr(share.find('/') + 1));
  ASSERT_GT(all.size(), every);
  for (std::size_t i = 0; i < all.size(); ++i) {
    if (i % step != first && (shard != nullptr || !all[i].isDecisive)) continue;
    const CaseOutcome outcome = all[i].run();
    EXPECT_EQ(outcome.faults, "");
    if (shard == nullptr) continue;
    std::printf("CASE %s %s %d %d %d\n", scene.operation().name, all[i].kind.c_str(), outcome.isNew,
                outcome.isMissed, !outcome.faults.empty());
  }
}

TEST_P(FaultSample, OfCallsLeavesTheOldOrTheNewAndSaysWhich) {
  const Scene scene(GetParam());
  sample(scene, failedCalls(scene), 97);
}

TEST_P(FaultSample, OfPowerLeavesTheOldOrTheNew) {
  if (!GetParam().survivesPowerLoss) return;
  const Scene scene(GetParam());
  sample(scene, powerFailures(scene), 211);
}

// A sanitizer looks for what is not released, in the build that has one.
TEST_P(AllocationSample, EndsInOrderWithoutMemory) {
  const Scene scene(GetParam());
  sample(scene, failedAllocations(scene), 101);
}

// Another run replaces the database between the opening and the lock: what was opened is no longer
// the database.
TEST(LockFaultSample, IsTakenOnTheFileThatHasTheName) {
  const Scene scene(operations().front());
  const std::string other = "orxrestore -i backup.txt -m db", own = "orxrestore -u db";
  const test::TempDir expected, directory;
  scene.copyTo(expected.path());
  scene.copyTo(directory.path());
  for (const std::string& command : {other, own}) {
    EXPECT_EQ(test::runProgram(programIn(expected.path(), command)).exitCode, 0);
  }
  bool hasLocked = false;
  const auto replaceBeforeLock = [&](const TracedCall& call) {
    if (call.call.number == SYS_flock && !std::exchange(hasLocked, true)) {
      EXPECT_EQ(test::runProgram(programIn(directory.path(), other)).exitCode, 0);
    }
    return false;
  };
  const TracedProgram program{.program = programIn(directory.path(), own),
                              .onCall = replaceBeforeLock};
  EXPECT_EQ(runTraced(program).exitCode, 0);
  EXPECT_TRUE(test::recordBytes(directory / "db") == test::recordBytes(expected / "db"));
}

}  // namespace
}  // namespace orx::faults
