#include "tests/faults/single_fault.h"

#include <sys/syscall.h>

#include <algorithm>
#include <csignal>
#include <string_view>

#include "tests/faults/system_calls.h"

namespace orx::faults {

namespace {

bool kills(Fault fault) {
  return fault == Fault::killBefore || fault == Fault::killAfter;
}

// The successor stays when what should remove it, or find out whose it is, is what failed.
bool mayLeaveSuccessor(const FaultCase& fault, const TracedResult& result) {
  if (kills(fault.fault) || fault.fault == Fault::ioErrorOn) return true;
  if (fault.call > result.calls.size()) return false;
  const std::string name = nameOf(result.calls[fault.call - 1]);
  return name == "unlink" || name.find("stat") != std::string::npos;
}

// What the system does not or by halves has to be done to its end. The engine gives up.
std::string faultInRetry(const FaultCase& fault, const TracedResult& result) {
  if (!result.isDisturbed || result.exitCode == 0) return "";
  const SystemCall& call = result.calls[fault.call - 1];
  if (isEnginesOwn(call)) return "";
  if (fault.fault == Fault::interrupted && mayBeInterrupted(call)) return "it is not repeated; ";
  if (fault.fault == Fault::partly) return "the rest is not done; ";
  return "";
}

// The last sync of a replaced database comes behind the change: the next run makes up for it. Where
// names cannot be exchanged, the first rename is the change itself.
bool isBehindChange(const Scene& scene, const TracedResult& result, std::size_t call) {
  const Operation& operation = scene.operation();
  std::vector<long> renames;
  for (std::size_t i = 0; i < call; ++i) {
    const long number = result.calls[i].number;
    if (number == SYS_rename || number == SYS_renameat2) renames.push_back(number);
  }
  const auto plain = std::ranges::count(renames, SYS_rename);
  return operation.isDatabase && plain > (operation.exchangeFails ? 1 : 0) &&
         renames.back() == SYS_rename;
}

// A success means that all of it is on the disk.
std::string faultInSync(const Scene& scene, const FaultCase& fault, const TracedResult& result) {
  if (!result.isDisturbed || result.exitCode != 0 || fault.fault == Fault::interrupted) return "";
  const bool failed = syncs(result.calls[fault.call - 1]) && !kills(fault.fault);
  return failed && !isBehindChange(scene, result, fault.call) ? "success without a sync; " : "";
}

std::string describe(const FaultCase& fault, const TracedResult& result) {
  const bool reached = fault.call <= result.calls.size();
  return std::string(nameOf(fault.fault)) + " at call " + std::to_string(fault.call) + " (" +
         (reached ? nameOf(result.calls[fault.call - 1]) : "not reached") + "), exit code " +
         std::to_string(result.exitCode) + ": ";
}

}  // namespace

std::vector<FaultCase> faultCases(const Scene& scene) {
  std::vector<FaultCase> cases;
  for (const Fault fault : allFaults) {
    for (std::size_t call = 0; call < scene.calls().size(); ++call) {
      if (applies(fault, scene.calls()[call])) cases.push_back({fault, call + 1});
    }
  }
  return cases;
}

CaseOutcome runFaultCase(const Scene& scene, const FaultCase& fault) {
  const test::TempDir directory;
  scene.copyTo(directory.path());
  TracedProgram program = scene.program(directory.path());
  program.fault = fault.fault;
  program.faultAt = fault.call;
  const TracedResult result = runTraced(program);
  const std::optional<bool> isNew = scene.isNew(directory.path());
  if (!isNew.has_value()) {
    return {.faults = describe(fault, result) + "neither old nor new\n" + result.errors};
  }
  std::string faults =
      scene.faultInFiles(directory.path(), *isNew, mayLeaveSuccessor(fault, result));
  const bool wasKilled = kills(fault.fault) && result.signal == SIGKILL;
  if (!wasKilled) faults += scene.faultInWords(result, *isNew);
  faults += faultInRetry(fault, result);
  faults += faultInSync(scene, fault, result);
  faults += scene.faultInNextRun(directory.path(), *isNew, fault.call % 2 == 0);
  if (!faults.empty()) faults = describe(fault, result) + faults + "\n" + result.errors;
  return {.isNew = *isNew, .faults = std::move(faults), .isMissed = !result.isDisturbed};
}

}  // namespace orx::faults
