// The one line that shows the progress of a run:
//   adding   42 %  [########------------]  61234 records/s  0:12 left
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace orx {

struct ProgressView {
  std::string_view phase;
  std::optional<double> share = {};        // 0 to 1; none: without a bar
  std::optional<double> rate = {};         // records in a second
  std::optional<double> secondsLeft = {};  // none: `seconds` are shown
  double seconds = 0;                      // in this phase, so far
};

// At most `width` columns of ASCII. What does not fit is left out, the bar first, then rate, time
// and share; the name of the phase is cut in the end.
[[nodiscard]] std::string progressText(const ProgressView& view, std::size_t width);

}  // namespace orx
