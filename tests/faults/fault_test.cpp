// A sample of the disturbed runs; scripts/fault_runs.sh takes them all.
#include <gtest/gtest.h>

#include "tests/faults/allocations.h"
#include "tests/faults/power_loss.h"
#include "tests/faults/single_fault.h"
#include "tests/faults/system_calls.h"
#include "tests/support/places.h"
#include "tests/support/run_program.h"

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

// Failed syncs and the ends of the steps that a change is made of are always among the sample.
bool isDecisive(const Scene& scene, const FaultCase& fault) {
  const SystemCall& call = scene.calls()[fault.call - 1];
  return (fault.fault == Fault::ioError && syncs(call)) ||
         (fault.fault == Fault::killAfter && isStep(call));
}

// Primes, so that the samples do not fall on the same calls of every loop.
constexpr std::size_t everyCall = 97;
constexpr std::uint64_t powerSeeds = 12;
constexpr std::size_t everyAllocation = 101;

TEST_P(FaultSample, LeavesTheOldOrTheNewAndSaysWhich) {
  const Scene scene(GetParam());
  const std::vector<FaultCase> cases = faultCases(scene);
  ASSERT_GT(cases.size(), everyCall);
  for (std::size_t i = 0; i < cases.size(); ++i) {
    if (i % everyCall != 0 && !isDecisive(scene, cases[i])) continue;
    EXPECT_EQ(runFaultCase(scene, cases[i]).faults, "");
  }
  if (!GetParam().survivesPowerLoss) return;
  const PowerLoss power(scene);
  for (std::uint64_t seed = 0; seed < powerSeeds; ++seed) EXPECT_EQ(power.fail(seed).faults, "");
}

// A sanitizer looks for what is not released, in the build that has one.
TEST_P(AllocationSample, EndsInOrderWithoutMemory) {
  const Scene scene(GetParam());
  const AllocationFaults allocations(scene);
  ASSERT_GT(allocations.count(), everyAllocation);
  for (std::size_t number = 1; number <= allocations.count(); number += everyAllocation) {
    EXPECT_EQ(allocations.fail(number).faults, "");
  }
}

// Another run replaces the database between the opening and the lock: what was opened is no longer
// the database.
TEST(LockFaultSample, IsTakenOnTheFileThatHasTheName) {
  const Scene scene(operations().front());
  const auto run = [](const test::TempDir& directory, std::vector<std::string> arguments) {
    EXPECT_EQ(test::runProgram({.file = test::builtProgram("orxrestore"),
                                .arguments = std::move(arguments),
                                .directory = directory.path()})
                  .exitCode,
              0);
  };
  const std::vector<std::string> other{"-i", "backup.txt", "-m", "db"}, own{"-u", "db"};
  const test::TempDir expected, directory;
  scene.copyTo(expected.path());
  scene.copyTo(directory.path());
  run(expected, other);
  run(expected, own);
  TracedProgram program = scene.program(directory.path());
  program.arguments = own;
  program.beforeLock = [&] { run(directory, other); };
  EXPECT_EQ(runTraced(program).exitCode, 0);
  EXPECT_TRUE(contentOf(directory / "db", true) == contentOf(expected / "db", true));
}

}  // namespace
}  // namespace orx::faults
