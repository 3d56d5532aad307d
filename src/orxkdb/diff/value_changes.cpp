#include "orxkdb/diff/value_changes.h"

#include <algorithm>
#include <iterator>
#include <numeric>
#include <string_view>
#include <unordered_map>

namespace orx::orxkdb {

namespace {

using Counts = std::unordered_map<std::string_view, std::size_t>;

// The places from `first` up to `end` in a list of values.
struct Stretch {
  const Values& values;
  std::size_t first;
  std::size_t end;

  [[nodiscard]] std::vector<std::size_t> places() const {
    std::vector<std::size_t> list(end - first);
    std::iota(list.begin(), list.end(), first);
    return list;
  }
};

// The places of `stretch` whose values go beyond those of `other`; the others go into `common`.
std::vector<std::size_t> placesOnlyIn(const Stretch& stretch, const Stretch& other,
                                      std::vector<std::size_t>& common) {
  Counts counts;
  for (const std::size_t place : other.places()) ++counts[other.values[place]];
  std::vector<std::size_t> only;
  for (const std::size_t place : stretch.places()) {
    const auto found = counts.find(stretch.values[place]);
    const bool isMatched = found != counts.end() && found->second > 0;
    if (isMatched) --found->second;
    (isMatched ? common : only).push_back(place);
  }
  return only;
}

ValueChanges compareStretches(const Stretch& before, const Stretch& after) {
  std::vector<std::size_t> commonBefore;
  std::vector<std::size_t> commonAfter;
  ValueChanges changes{placesOnlyIn(before, after, commonBefore),
                       placesOnlyIn(after, before, commonAfter)};
  changes.reordered = !std::ranges::equal(commonBefore, commonAfter, [&](auto left, auto right) {
    return before.values[left] == after.values[right];
  });
  if (changes.reordered && changes.removed.empty() && changes.added.empty()) {
    changes.removed = before.places();
    changes.added = after.places();
  }
  return changes;
}

}  // namespace

ValueChanges compareValues(const Values& before, const Values& after) {
  const auto start = std::ranges::mismatch(before, after);
  const auto first = static_cast<std::size_t>(start.in1 - before.begin());
  const auto end = std::mismatch(before.rbegin(), std::make_reverse_iterator(start.in1),
                                 after.rbegin(), std::make_reverse_iterator(start.in2));
  const auto tail = static_cast<std::size_t>(end.first - before.rbegin());
  return compareStretches({before, first, before.size() - tail},
                          {after, first, after.size() - tail});
}

}  // namespace orx::orxkdb
