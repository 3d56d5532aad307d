// How findings show a text of the input.
#pragma once

#include <string>
#include <string_view>

namespace orx::orxkdb {

// The text between quotation marks, its first 60 bytes with "..." behind them when it is longer.
// What is in it stays: whoever shows it makes it printable.
[[nodiscard]] inline std::string quote(std::string_view text) {
  constexpr std::size_t longestQuote = 60;
  const bool whole = text.size() <= longestQuote;
  return "\"" + std::string(text.substr(0, longestQuote)) + (whole ? "\"" : "...\"");
}

}  // namespace orx::orxkdb
