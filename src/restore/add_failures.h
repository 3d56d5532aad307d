// AddFailures: the records of a merge that could not be added, each under the number that the
// operator counts it by.
//
// The number of a record is one more than the records added before it, lists being gone through one
// after the other. Objects may be added in another order, so numbers are known only when everything
// up to a failure has been tried. A merge that ends early has no such order: records count as they
// were tried then.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <vector>

#include "platform/kdb_codes.h"
#include "restore/record_lists.h"

namespace orx {

class AddFailures {
 public:
  using Print = std::function<void(const kdb::kdbStatus& failure, std::int32_t number)>;

  // An attempt to add the next record of an object from `list`, and how it ended: return code 0
  // when it was added. To be called for every attempt.
  void count(std::size_t list, const kdb::kdbStatus& outcome);
  // Hands over outcome and number of the failures since the last call, in the order of their
  // numbers. To be called when no attempt with a record before one of these can follow: at the end,
  // or at any time where objects are added list after list.
  void report(const Print& print);
  // The same in the order in which they came, for the end of a merge that leaves records untried.
  void reportAsTried(const Print& print);

 private:
  struct Failure {
    std::uint32_t list;
    std::uint32_t attempt;      // attempts with records of this list before it
    std::uint32_t addedBefore;  // of all lists
    kdb::kdbStatus outcome;
  };

  std::array<std::uint32_t, RecordLists::count> attempts_{};
  std::vector<Failure> failures_;
  std::uint32_t added_ = 0;
  std::uint32_t reported_ = 0;
};

}  // namespace orx
