// A line of a backup, column by column.
#pragma once

#include <cstdint>
#include <nlohmann/json_fwd.hpp>
#include <string>
#include <string_view>

#include "orxkdb/result.h"

namespace orx::orxkdb {

struct LinePlace {
  std::string file;
  std::uint64_t line = 0;  // from 1 on
};

// Reads "FILE:N"; exitUsage for any other text. Looks at no file.
Result readLinePlace(std::string_view text, LinePlace& place);

// `line` gets the text of the line without its line end; of a long line only what a restore takes
// for its first record. exitNotAsExpected when there is no such line, or the file is a database.
// Reads the file up to it.
Result findLine(const LinePlace& place, std::string& line);

// Each column with what a restore makes of it, and the faults of the line. `line` may be of any
// length and hold any bytes.
[[nodiscard]] std::string lineText(const LinePlace& place, std::string_view line);
[[nodiscard]] nlohmann::ordered_json lineJson(const LinePlace& place, std::string_view line);

}  // namespace orx::orxkdb
