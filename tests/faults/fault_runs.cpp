// Every disturbed run: orx_fault_runs PART [OPERATION|all [I N]], where PART is calls, power,
// allocations or, for what counts as a call, list. Of N shards of the cases, I is run.
// Prints a line for each case, and one for each fault.
#include <cstdio>
#include <stdexcept>

#include "tests/faults/disturbances.h"

namespace {

using namespace orx::faults;

Disturbances disturbances(const std::string& part, const Scene& scene) {
  const Operation& operation = scene.operation();
  if (part == "calls") return failedCalls(scene);
  if (part == "power" && operation.survivesPowerLoss) return powerFailures(scene);
  if (part == "allocations" && operation.isRestore()) return failedAllocations(scene);
  return {};
}

// The number of faults.
int run(const std::string& part, const Scene& scene, std::size_t shard, std::size_t shards) {
  const char* const operation = scene.operation().name;
  const Disturbances all = disturbances(part, scene);
  int faults = 0;
  for (std::size_t i = shard; i < all.size(); i += shards) {
    const CaseOutcome outcome = all[i].run();
    const bool isFault = !outcome.faults.empty();
    std::printf("CASE %s %s %d %d %d\n", operation, all[i].kind.c_str(), outcome.isNew,
                outcome.isMissed, isFault);
    if (isFault) std::printf("FAULT %s %s\n", operation, outcome.faults.c_str());
    faults += isFault ? 1 : 0;
  }
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
    const std::vector<std::string> words(argv, argv + argc);
    if (argc < 2) throw std::runtime_error("name a part: calls, power, allocations, list");
    int faults = 0;
    for (const Operation& operation : operations()) {
      if (argc > 2 && words[2] != "all" && words[2] != operation.name) continue;
      const Scene scene(operation);
      if (words[1] == "list") listCalls(scene);
      faults += argc > 4 ? run(words[1], scene, std::stoul(words[3]), std::stoul(words[4]))
                         : run(words[1], scene, 0, 1);
    }
    return faults == 0 ? 0 : 1;
  } catch (const std::exception& failure) {
    std::fprintf(stderr, "orx_fault_runs: %s\n", failure.what());
    return 2;
  }
}
