#include "tests/faults/power_loss.h"

#include <algorithm>
#include <stdexcept>

namespace orx::faults {

namespace {

bool hasSaidSo(const std::vector<DiskEvent>& events, std::size_t count) {
  return std::any_of(events.begin(), events.begin() + static_cast<std::ptrdiff_t>(count),
                     [](const DiskEvent& event) { return event.kind == DiskEvent::Kind::output; });
}

}  // namespace

PowerLoss::PowerLoss(const Scene& scene) : scene_(scene) {
  const test::TempDir directory;
  scene.copyTo(directory.path());
  start_ = diskOf(directory.path());
  DiskRecorder recorder(directory.path(), start_);
  TracedProgram program = scene.program(directory.path());
  program.onChange = [&recorder](const FinishedCall& call) { recorder.record(call); };
  if (runTraced(program).exitCode != 0) throw std::runtime_error("the recorded run failed");
  events_ = recorder.events();
}

// The run prints once, at its end: by then it has answered for the database.
CaseOutcome PowerLoss::fail(std::uint64_t seed) const {
  std::mt19937_64 random(seed);
  const std::size_t count = std::uniform_int_distribution<std::size_t>(0, events_.size())(random);
  const test::TempDir directory;
  for (const auto& entry : std::filesystem::directory_iterator(scene_.start())) {
    if (!entry.is_directory()) continue;
    std::filesystem::create_directory_symlink(entry.path(),
                                              directory / entry.path().filename().string());
  }
  writeDisk(diskAfterFailure(start_, events_, count, random), directory.path());
  const std::string head = "seed " + std::to_string(seed) + ", failure behind event " +
                           std::to_string(count) + " of " + std::to_string(events_.size()) + ": ";
  const std::optional<bool> isNew = scene_.isNew(directory.path());
  if (!isNew.has_value()) return {.faults = head + "neither old nor new"};
  std::string faults = scene_.faultInFiles(directory.path(), *isNew, true);
  if (!*isNew && hasSaidSo(events_, count)) faults += "old after the run had told its success; ";
  faults += scene_.faultInNextRun(directory.path(), *isNew, seed % 2 == 0);
  if (!faults.empty()) faults.insert(0, head);
  return {.isNew = *isNew, .faults = std::move(faults)};
}

}  // namespace orx::faults
