// Bars with a label and a number each, and the size classes that make a histogram of many numbers.
#pragma once

#include <array>
#include <bit>
#include <cstdint>
#include <limits>
#include <string>
#include <string_view>
#include <vector>

namespace orx::orxkdb {

struct Bar {
  std::string label;
  std::uint64_t count = 0;
};

// A figure of lying bars, one below the other, as HTML; labels may be any bytes, and are cut to
// fit. Empty without bars.
[[nodiscard]] std::string barChart(std::string_view title, const std::vector<Bar>& bars);

// Counts numbers by size: 0, 1, 2-3, 4-7, 8-15 and so on.
class SizeClasses {
 public:
  void add(std::uint64_t number) { ++counts_[static_cast<std::size_t>(std::bit_width(number))]; }
  // From the first class that has any to the last, each with its range as the label, "4-7".
  [[nodiscard]] std::vector<Bar> bars() const;

 private:
  std::array<std::uint64_t, std::numeric_limits<std::uint64_t>::digits + 1> counts_{};
};

}  // namespace orx::orxkdb
