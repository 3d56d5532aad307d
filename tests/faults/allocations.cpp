#include "tests/faults/allocations.h"

#include <stdexcept>
#include <string_view>

#include "tests/support/run_program.h"

namespace orx::faults {

namespace {

// The error line and its hint, or the one line of a run that has no memory for more.
bool tellsOfMemory(const std::string& errors) {
  return errors.find("out of memory") != std::string::npos ||
         errors.find("memory ran out") != std::string::npos;
}

std::size_t countOf(std::string_view word, const std::string& text) {
  std::size_t count = 0;
  for (auto at = text.find(word); at != std::string::npos; at = text.find(word, at + 1)) ++count;
  return count;
}

// A new thread whose sanitizer gets no memory to look at its stack.
bool isSanitizersOwn(const std::string& errors) {
  return errors.find("AddressSanitizer: CHECK failed") != std::string::npos &&
         errors.find("GetThreadStackTopAndBottom") != std::string::npos;
}

}  // namespace

AllocationFaults::AllocationFaults(const Scene& scene) : scene_(scene) {
  const test::TempDir directory;
  const test::TempDir other;
  scene.copyTo(directory.path());
  const TracedResult result = run(directory.path(), 0, other / "count");
  if (result.exitCode != 0) throw std::runtime_error("the counted run failed: " + result.errors);
  count_ = std::stoul(test::readFile(other / "count"));
}

TracedResult AllocationFaults::run(const std::filesystem::path& directory, std::size_t number,
                                   const std::filesystem::path& count) const {
  const TracedProgram program = scene_.program(directory);
  const test::ProgramResult result = test::runProgram(
      {.file = program.file,
       .arguments = program.arguments,
       .directory = directory,
       .environment = {"LC_ALL=C", "ASAN_OPTIONS=verify_asan_link_order=0",
                       "LD_PRELOAD=" ORX_ALLOCATION_SHIM, "ORX_FAULT_AT=" + std::to_string(number),
                       "ORX_FAULT_COUNT=" + count.string()}});
  return {result.exitCode, result.signal, result.output, result.errors};
}

CaseOutcome AllocationFaults::fail(std::size_t number) const {
  const test::TempDir directory;
  scene_.copyTo(directory.path());
  const TracedResult result = run(directory.path(), number, {});
  if (isSanitizersOwn(result.errors)) return {};
  const std::string head = "allocation " + std::to_string(number) + " of " +
                           std::to_string(count_) + ", exit code " +
                           std::to_string(result.exitCode) + ": ";
  const std::optional<bool> isNew = scene_.isNew(directory.path());
  if (!isNew.has_value()) return {.faults = head + "neither old nor new\n" + result.errors};
  std::string faults = scene_.faultInFiles(directory.path(), *isNew, false);
  faults += scene_.faultInWords(result, *isNew);
  if (result.exitCode != 0 && result.exitCode != 6) faults += "another exit code; ";
  if (result.exitCode == 6 && !tellsOfMemory(result.errors)) faults += "no word of memory; ";
  if (result.exitCode == 6 && countOf("orxrestore: ", result.errors) != 1)
    faults += "not one line; ";
  faults += scene_.faultInNextRun(directory.path(), *isNew, number % 2 == 0);
  if (!faults.empty()) faults = head + faults + "\n" + result.errors;
  return {.isNew = *isNew, .faults = std::move(faults)};
}

}  // namespace orx::faults
