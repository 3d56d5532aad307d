// What became of the values of an attribute.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace orx::orxkdb {

using Values = std::vector<std::string>;

// The indices of values that only one side has, ascending. `reordered` when the values that both
// have stand in another order; when there are no others, the indices are those of all between the
// first and the last place where the sides differ.
struct ValueChanges {
  std::vector<std::size_t> removed;
  std::vector<std::size_t> added;
  bool reordered = false;
};

// Linear: values are matched behind the common beginning and before the common end, wherever they
// stand.
[[nodiscard]] ValueChanges compareValues(const Values& before, const Values& after);

}  // namespace orx::orxkdb
