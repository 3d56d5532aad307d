// What is wrong with a backup line, column by column.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "orxkdb/check/findings.h"

namespace orx::orxkdb {

struct LineFault {
  FindingKind kind;
  std::string text;
};

// `line` is without its line end. A line that is too short or holds a zero byte has that one fault.
// A text may hold bytes of the line.
[[nodiscard]] std::vector<LineFault> lineFaults(std::string_view line);

}  // namespace orx::orxkdb
