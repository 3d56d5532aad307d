#include "orxkdb/report/bar_chart.h"

#include <algorithm>

#include "orxkdb/report/html_text.h"
#include "orxkdb/report/svg.h"

namespace orx::orxkdb {

namespace {

constexpr double chartWidth = 720;
constexpr double rowHeight = 22;
constexpr double barHeight = 14;
constexpr double labelWidth = 260;
constexpr double gap = 8;
constexpr double numberWidth = 110;
constexpr double longestBar = chartWidth - labelWidth - gap - numberWidth;
constexpr double thinnestBar = 1.5;
constexpr std::size_t longestLabel = 36;

std::string className(std::size_t number) {
  if (number <= 1) return std::to_string(number);
  const std::uint64_t first = std::uint64_t{1} << (number - 1);
  return grouped(first) + "-" + grouped(first + (first - 1));
}

void drawBar(const Bar& bar, std::uint64_t largest, double y, Svg& picture) {
  const double share =
      largest == 0 ? 0 : static_cast<double>(bar.count) / static_cast<double>(largest);
  const double width = bar.count == 0 ? 0 : std::max(thinnestBar, share * longestBar);
  const double baseline = y + barHeight - 2;
  const std::string number = grouped(bar.count);
  picture.text(labelWidth, baseline, "end", shortened(bar.label, longestLabel));
  picture.rect({labelWidth + gap, y, width, barHeight}, "bar", bar.label + ": " + number);
  picture.text(labelWidth + gap + width + gap, baseline, "number", number);
}

}  // namespace

std::string barChart(std::string_view title, const std::vector<Bar>& bars) {
  if (bars.empty()) return "";
  const std::uint64_t largest = std::ranges::max(bars, {}, &Bar::count).count;
  Svg picture(chartWidth, rowHeight * static_cast<double>(bars.size()) + gap, title);
  double y = gap / 2;
  for (const Bar& bar : bars) {
    drawBar(bar, largest, y, picture);
    y += rowHeight;
  }
  return figure(title, picture.take());
}

std::vector<Bar> SizeClasses::bars() const {
  const auto isUsed = [](std::uint64_t count) { return count > 0; };
  const auto first = std::ranges::find_if(counts_, isUsed);
  const auto last = std::ranges::find_if(counts_.rbegin(), counts_.rend(), isUsed).base();
  std::vector<Bar> bars;
  for (auto count = first; count < last; ++count) {
    bars.push_back({className(static_cast<std::size_t>(count - counts_.begin())), *count});
  }
  return bars;
}

}  // namespace orx::orxkdb
