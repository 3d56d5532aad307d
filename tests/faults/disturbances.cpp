#include "tests/faults/disturbances.h"

#include <sys/syscall.h>

#include <algorithm>
#include <csignal>
#include <stdexcept>

#include "tests/faults/disk_watch.h"

namespace orx::faults {

namespace {

bool contains(const std::string& text, std::string_view words) {
  return text.find(words) != std::string::npos;
}

// What is no reason here.
std::string faultInReason(const test::ProgramResult& result) {
  for (const char* const wrong : {"InUse", "NotFound", "Authority", "Format"}) {
    const bool isTold = contains(result.output + result.errors, wrong);
    if (result.exitCode > 0 && isTold) return "another reason is told; ";
  }
  return "";
}

CaseOutcome withHead(CaseOutcome outcome, const std::string& head, const std::string& errors) {
  if (!outcome.faults.empty()) outcome.faults = head + ": " + outcome.faults + "\n" + errors;
  return outcome;
}

struct FaultCase {
  const FaultKind& kind;
  std::size_t call;  // from 1

  [[nodiscard]] bool kills() const {
    return kind.fault == Fault::killBefore || kind.fault == Fault::killAfter;
  }
  // The call that was disturbed; none when the run took a shorter way.
  [[nodiscard]] const SystemCall* in(const TracedResult& result) const {
    return call <= result.calls.size() ? &result.calls[call - 1] : nullptr;
  }
};

// The successor stays when what should remove it, or find out whose it is, is what failed.
bool mayLeaveSuccessor(const FaultCase& fault, const TracedResult& result) {
  if (fault.kills() || fault.kind.fault == Fault::errorOn) return true;
  const SystemCall* const call = fault.in(result);
  if (call == nullptr) return false;
  return call->number == SYS_unlink || contains(kindOf(*call).name, "stat");
}

// What the system does not or by halves has to be done to its end. The engine gives up.
std::string faultInRetry(const FaultCase& fault, const TracedResult& result) {
  const SystemCall& call = *fault.in(result);
  if (result.exitCode == 0 || isEnginesOwn(call)) return "";
  if (fault.kind.error == EINTR && has(call, trait::waits)) return "it is not repeated; ";
  return fault.kind.fault == Fault::partly ? "the rest is not done; " : "";
}

// The last sync of a replaced database comes behind the change: the next run makes up for it. Where
// names cannot be exchanged, the first rename is the change itself.
bool isBehindChange(const Scene& scene, const TracedResult& result, std::size_t call) {
  std::vector<long> renames;
  for (std::size_t i = 0; i < call; ++i) {
    const long number = result.calls[i].number;
    if (number == SYS_rename || number == SYS_renameat2) renames.push_back(number);
  }
  const std::ptrdiff_t changes = scene.operation().exchangeFails ? 1 : 0;
  return scene.operation().isDatabase && std::ranges::count(renames, SYS_rename) > changes &&
         renames.back() == SYS_rename;
}

// A success means that all of it is on the disk.
std::string faultInSync(const Scene& scene, const FaultCase& fault, const TracedResult& result) {
  if (result.exitCode != 0 || fault.kind.error == EINTR || fault.kills()) return "";
  const bool failed = has(*fault.in(result), trait::syncs);
  return failed && !isBehindChange(scene, result, fault.call) ? "success without a sync; " : "";
}

CaseOutcome runFaultCase(const Scene& scene, const FaultCase& fault) {
  const test::TempDir directory;
  scene.copyTo(directory.path());
  TracedProgram program = scene.program(directory.path());
  program.fault = &fault.kind;
  program.faultAt = fault.call;
  const TracedResult result = runTraced(program);
  const bool wasKilled = fault.kills() && result.signal == SIGKILL;
  CaseOutcome outcome =
      scene.look(directory.path(), wasKilled ? nullptr : &result, mayLeaveSuccessor(fault, result));
  outcome.isMissed = !result.isDisturbed;
  outcome.faults += faultInReason(result);
  if (result.isDisturbed) {
    outcome.faults += faultInRetry(fault, result) + faultInSync(scene, fault, result);
  }
  outcome.faults += scene.faultInNextRun(directory.path(), outcome.isNew, fault.call % 2 == 0);
  const SystemCall* const call = fault.in(result);
  return withHead(outcome,
                  fault.kind.name + (" at call " + std::to_string(fault.call)) + " (" +
                      (call == nullptr ? "not reached" : kindOf(*call).name) + "), exit code " +
                      std::to_string(result.exitCode),
                  result.errors);
}

// The power fails behind a call that may have changed the disk, or behind the run.
CaseOutcome losePower(const Scene& scene, std::uint64_t seed) {
  std::mt19937_64 random(seed);
  std::vector<std::size_t> moments{scene.calls().size() + 1};
  for (std::size_t i = 0; i < scene.calls().size(); ++i) {
    if (has(scene.calls()[i], trait::changes)) moments.push_back(i + 1);
  }
  const test::TempDir directory;
  scene.copyTo(directory.path());
  DiskWatch disk(directory.path());
  TracedProgram program = scene.program(directory.path());
  program.onChange = [&disk](const TracedCall& call) { disk.follow(call); };
  program.fault = std::end(faultKinds) - 1;
  program.faultAt =
      moments[std::uniform_int_distribution<std::size_t>(0, moments.size() - 1)(random)];
  const TracedResult result = runTraced(program);
  disk.losePower(random);
  CaseOutcome outcome = scene.look(directory.path(), nullptr, true);
  // The run prints once, at its end: by then it has answered for the database.
  if (!outcome.isNew && !result.output.empty()) {
    outcome.faults += "old after the run had told its success; ";
  }
  outcome.faults += scene.faultInNextRun(directory.path(), outcome.isNew, seed % 2 == 0);
  return withHead(
      outcome,
      "seed " + std::to_string(seed) + ", failure behind call " + std::to_string(program.faultAt),
      "");
}

// With 0 no allocation fails. Writes into `count` how many there were.
test::ProgramResult runWithoutAllocation(const Scene& scene, const std::filesystem::path& directory,
                                         std::size_t number, const std::string& count) {
  scene.copyTo(directory);
  test::Program program = scene.program(directory).program;
  program.environment = {"LC_ALL=C",
                         "ASAN_OPTIONS=verify_asan_link_order=0:alloc_dealloc_mismatch=0",
                         std::string("LD_PRELOAD=") + ORX_ALLOCATION_SHIM,
                         "ORX_FAULT_AT=" + std::to_string(number), "ORX_FAULT_COUNT=" + count};
  return test::runProgram(program);
}

// The error line and its hint, or the one line of a run that has no memory for more.
std::string faultInMemoryWords(const test::ProgramResult& result) {
  if (result.exitCode == 0) return "";
  if (result.exitCode != 6) return "another exit code; ";
  if (!contains(result.errors, "out of memory") && !contains(result.errors, "memory ran out")) {
    return "no word of memory; ";
  }
  const std::size_t name = result.errors.find("orxrestore: ");
  const bool isOneLine = name != std::string::npos && name == result.errors.rfind("orxrestore: ");
  return isOneLine ? "" : "not one line; ";
}

CaseOutcome failAllocation(const Scene& scene, std::size_t number) {
  const test::TempDir directory;
  const auto result = runWithoutAllocation(scene, directory.path(), number, "");
  // A new thread whose sanitizer gets no memory to look at its stack.
  if (contains(result.errors, "AddressSanitizer: CHECK failed") &&
      contains(result.errors, "GetThreadStackTopAndBottom")) {
    return {};
  }
  CaseOutcome outcome = scene.look(directory.path(), &result, false);
  outcome.faults += faultInReason(result) + faultInMemoryWords(result);
  outcome.faults += scene.faultInNextRun(directory.path(), outcome.isNew, number % 2 == 0);
  return withHead(
      outcome,
      "allocation " + std::to_string(number) + ", exit code " + std::to_string(result.exitCode),
      result.errors);
}

}  // namespace

Disturbances failedCalls(const Scene& scene) {
  Disturbances all;
  for (const FaultKind& kind : faultKinds) {
    for (std::size_t i = 0; i < scene.calls().size(); ++i) {
      const SystemCall& call = scene.calls()[i];
      if (!applies(kind, call)) continue;
      const auto run = [&scene, fault = FaultCase{kind, i + 1}] {
        CaseOutcome outcome = runFaultCase(scene, fault);
        for (int again = 0; outcome.isMissed && again < 3; ++again) {
          outcome = runFaultCase(scene, fault);
        }
        return outcome;
      };
      all.push_back({kind.name, run,
                     (kind.error == EIO && kind.fault == Fault::error && has(call, trait::syncs)) ||
                         (kind.fault == Fault::killAfter && has(call, trait::steps))});
    }
  }
  return all;
}

Disturbances powerFailures(const Scene& scene) {
  constexpr std::uint64_t seeds = 2400;
  Disturbances all;
  for (std::uint64_t seed = 0; seed < seeds; ++seed) {
    all.push_back({"power-loss", [&scene, seed] { return losePower(scene, seed); }});
  }
  return all;
}

Disturbances failedAllocations(const Scene& scene) {
  const test::TempDir directory, other;
  const auto counted = runWithoutAllocation(scene, directory.path(), 0, other.file("count"));
  if (counted.exitCode != 0) throw std::runtime_error("the counted run failed: " + counted.errors);
  const std::size_t count = std::stoul(test::readFile(other / "count"));
  Disturbances all;
  for (std::size_t number = 1; number <= count; ++number) {
    all.push_back({"allocation", [&scene, number] { return failAllocation(scene, number); }});
  }
  return all;
}

}  // namespace orx::faults
