// Every disturbed run: orx_fault_runs PART, where PART is calls, power, allocations or, for what
// counts as a call, list.
//   orx_fault_runs PART [--operation NAME] [--shard I/N]
// Prints a line for each operation and kind with the number of its cases, and one for each fault.
#include <cstdio>
#include <map>
#include <stdexcept>

#include "tests/faults/disturbances.h"

namespace {

using namespace orx::faults;

struct Options {
  std::string part = {};
  std::string operation = {};
  std::size_t shard = 0;
  std::size_t shards = 1;
};

Options readOptions(int argc, char* argv[]) {
  if (argc < 2) throw std::runtime_error("name a part: calls, power, allocations, list");
  Options options{.part = argv[1]};
  for (int i = 2; i + 1 < argc; i += 2) {
    const std::string name = argv[i];
    const std::string value = argv[i + 1];
    if (name == "--operation") options.operation = value;
    if (name == "--shard") {
      options.shard = std::stoul(value);
      options.shards = std::stoul(value.substr(value.find('/') + 1));
    }
  }
  return options;
}

Disturbances disturbances(const std::string& part, const Scene& scene) {
  const Operation& operation = scene.operation();
  if (part == "calls") return failedCalls(scene);
  if (part == "power" && operation.survivesPowerLoss) return powerFailures(scene);
  if (part == "allocations" && operation.isRestore()) return failedAllocations(scene);
  return {};
}

struct Count {
  std::size_t cases = 0;
  std::size_t changed = 0;
  std::size_t missed = 0;
  std::size_t faults = 0;
};

std::size_t runPart(const Options& options, const Scene& scene) {
  const char* const operation = scene.operation().name;
  std::map<std::string, Count> counts;
  std::size_t number = 0;
  for (const Disturbance& disturbance : disturbances(options.part, scene)) {
    if (number++ % options.shards != options.shard) continue;
    const CaseOutcome outcome = disturbance.run();
    Count& count = counts[disturbance.kind];
    ++count.cases;
    count.changed += outcome.isNew ? 1 : 0;
    count.missed += outcome.isMissed ? 1 : 0;
    if (outcome.faults.empty()) continue;
    ++count.faults;
    std::printf("FAULT %s %s\n", operation, outcome.faults.c_str());
  }
  std::size_t faults = 0;
  for (const auto& [kind, count] : counts) {
    faults += count.faults;
    std::printf("%s %s %s %zu cases, %zu new, %zu missed, %zu faults\n", options.part.c_str(),
                operation, kind.c_str(), count.cases, count.changed, count.missed, count.faults);
  }
  std::fflush(stdout);
  return faults;
}

void listCalls(const Scene& scene) {
  std::size_t number = 0;
  for (const SystemCall& call : scene.calls()) {
    std::printf("%s %zu %s\n", scene.operation().name, ++number, kindOf(call).name);
  }
}

}  // namespace

int main(int argc, char* argv[]) {
  try {
    const Options options = readOptions(argc, argv);
    std::size_t faults = 0;
    for (const Operation& operation : operations()) {
      if (!options.operation.empty() && options.operation != operation.name) continue;
      const Scene scene(operation);
      if (options.part == "list") listCalls(scene);
      faults += runPart(options, scene);
    }
    return faults == 0 ? 0 : 1;
  } catch (const std::exception& failure) {
    std::fprintf(stderr, "orx_fault_runs: %s\n", failure.what());
    return 2;
  }
}
