// A picture of what flows from a few nodes on the left to a few on the right: bands as wide as the
// counts, within nodes that are never too low for their name.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace orx::orxkdb {

struct Flow {
  std::size_t from = 0;  // number of a node on the left
  std::size_t to = 0;    // and on the right
  std::uint64_t count = 0;
};

// An <svg> element. `left` and `right` are the names of the nodes, any bytes; each flow joins two
// of them and counts at least 1.
[[nodiscard]] std::string flowPicture(std::string_view title, const std::vector<std::string>& left,
                                      const std::vector<std::string>& right,
                                      const std::vector<Flow>& flows);

}  // namespace orx::orxkdb
