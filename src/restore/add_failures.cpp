#include "restore/add_failures.h"

#include <algorithm>
#include <numeric>
#include <tuple>

#include "messages/trace_unit.h"

namespace orx {

void AddFailures::count(std::size_t list, const kdb::kdbStatus& outcome) {
  ORX_TRACE("AddFailures::count");
  const std::uint32_t attempt = attempts_[list]++;
  if (outcome.returnCode == 0) {
    ++added_;
  } else {
    failures_.push_back({static_cast<std::uint32_t>(list), attempt, added_, outcome});
  }
}

void AddFailures::report(const Print& print) {
  ORX_TRACE("AddFailures::report");
  if (failures_.empty()) return;
  const auto place = [](const Failure& f) { return std::tie(f.list, f.attempt); };
  std::ranges::sort(failures_, {}, place);
  std::array<std::uint32_t, RecordLists::count> before{};  // attempts with the lists before each
  std::exclusive_scan(attempts_.begin(), attempts_.end(), before.begin(), std::uint32_t{0});
  for (const Failure& failure : failures_) {
    const std::uint32_t added = before[failure.list] + failure.attempt - reported_++;
    print(failure.outcome, static_cast<std::int32_t>(added + 1));
  }
  failures_.clear();
}

void AddFailures::reportAsTried(const Print& print) {
  ORX_TRACE("AddFailures::reportAsTried");
  for (const Failure& failure : failures_) {
    print(failure.outcome, static_cast<std::int32_t>(failure.addedBefore + 1));
  }
  reported_ += static_cast<std::uint32_t>(failures_.size());
  failures_.clear();
}

}  // namespace orx
