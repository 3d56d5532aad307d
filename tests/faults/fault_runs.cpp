// Every disturbed run: orx_fault_runs PART, where PART is calls, power, allocations or, for what
// counts as a call, list.
//   orx_fault_runs PART [--operation NAME] [--shard I/N] [--every K]
// Prints a line for each operation and kind with the number of its cases, and one for each fault.
#include <cstdio>
#include <cstring>
#include <map>
#include <stdexcept>

#include "tests/faults/allocations.h"
#include "tests/faults/power_loss.h"
#include "tests/faults/single_fault.h"

namespace {

using namespace orx::faults;

struct Options {
  std::string part = {};
  std::string operation = {};
  std::size_t shard = 0;
  std::size_t shards = 1;
  std::size_t every = 1;
};

Options readOptions(int argc, char* argv[]) {
  if (argc < 2) throw std::runtime_error("name a part: calls, power, allocations, list");
  Options options{.part = argv[1]};
  for (int i = 2; i + 1 < argc; i += 2) {
    const std::string name = argv[i];
    const std::string value = argv[i + 1];
    if (name == "--operation") options.operation = value;
    if (name == "--every") options.every = std::stoul(value);
    if (name == "--shard") {
      options.shard = std::stoul(value);
      options.shards = std::stoul(value.substr(value.find('/') + 1));
    }
  }
  return options;
}

bool isChosen(const Options& options, std::size_t number) {
  return number % options.every == 0 && number / options.every % options.shards == options.shard;
}

struct Count {
  std::size_t cases = 0;
  std::size_t changed = 0;
  std::size_t missed = 0;
  std::size_t faults = 0;

  void add(const Operation& operation, const CaseOutcome& outcome) {
    ++cases;
    changed += outcome.isNew ? 1 : 0;
    missed += outcome.isMissed ? 1 : 0;
    if (outcome.faults.empty()) return;
    ++faults;
    std::printf("FAULT %s %s\n", operation.name, outcome.faults.c_str());
  }
};

void print(const Options& options, const char* operation, const char* kind, const Count& count) {
  std::printf("%s %s %s %zu cases, %zu new, %zu missed, %zu faults\n", options.part.c_str(),
              operation, kind, count.cases, count.changed, count.missed, count.faults);
  std::fflush(stdout);
}

std::size_t runCalls(const Options& options, const Operation& operation) {
  const Scene scene(operation);
  std::map<Fault, Count> counts;
  std::size_t number = 0;
  std::size_t faults = 0;
  for (const FaultCase& fault : faultCases(scene)) {
    if (!isChosen(options, number++)) continue;
    CaseOutcome outcome = runFaultCase(scene, fault);
    for (int again = 0; outcome.isMissed && again < 3; ++again) {
      outcome = runFaultCase(scene, fault);
    }
    counts[fault.fault].add(operation, outcome);
  }
  for (const auto& [fault, count] : counts) {
    faults += count.faults;
    print(options, operation.name, nameOf(fault), count);
  }
  return faults;
}

std::size_t runAllocations(const Options& options, const Operation& operation) {
  const Scene scene(operation);
  const AllocationFaults allocations(scene);
  Count count;
  for (std::size_t number = 1; number <= allocations.count(); ++number) {
    if (isChosen(options, number)) count.add(operation, allocations.fail(number));
  }
  print(options, operation.name, "allocation", count);
  return count.faults;
}

constexpr std::uint64_t powerSeeds = 2400;

std::size_t runPower(const Options& options, const Operation& operation) {
  const Scene scene(operation);
  const PowerLoss power(scene);
  Count count;
  for (std::uint64_t seed = 0; seed < powerSeeds; ++seed) {
    if (isChosen(options, seed)) count.add(operation, power.fail(seed));
  }
  print(options, operation.name, "power-loss", count);
  return count.faults;
}

std::size_t listCalls(const Operation& operation) {
  const Scene scene(operation);
  std::size_t number = 0;
  for (const SystemCall& call : scene.calls()) {
    std::printf("%s %zu %s\n", operation.name, ++number, nameOf(call).c_str());
  }
  return 0;
}

}  // namespace

int main(int argc, char* argv[]) {
  try {
    const Options options = readOptions(argc, argv);
    std::size_t faults = 0;
    for (const Operation& operation : operations()) {
      if (!options.operation.empty() && options.operation != operation.name) continue;
      if (options.part == "list") faults += listCalls(operation);
      if (options.part == "calls") faults += runCalls(options, operation);
      if (options.part == "allocations" && operation.isRestore())
        faults += runAllocations(options, operation);
      if (options.part == "power" && operation.survivesPowerLoss) {
        faults += runPower(options, operation);
      }
    }
    return faults == 0 ? 0 : 1;
  } catch (const std::exception& failure) {
    std::fprintf(stderr, "orx_fault_runs: %s\n", failure.what());
    return 2;
  }
}
