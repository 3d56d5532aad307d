// How findings show a text of the input.
#pragma once

#include <string>
#include <string_view>

namespace orx::orxkdb {

// The text between quotation marks, cut when it is long.
[[nodiscard]] inline std::string quote(std::string_view text) {
  constexpr std::size_t longestQuote = 60;
  const bool whole = text.size() <= longestQuote;
  return "\"" + std::string(text.substr(0, longestQuote)) + (whole ? "\"" : "...\"");
}

}  // namespace orx::orxkdb
