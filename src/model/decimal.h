// The decimal conversion of exported handles and of the number columns of backup lines.
//
// Leading blanks (0x20 and nothing else) are skipped, then an optional sign, then the digits up to
// the first other character. The digits count modulo 2^32 and are taken as a signed 32-bit number,
// so that unsigned identifiers of 2^31 and more survive. No digits are worth 0.
#pragma once

#include <cstdint>
#include <string_view>

namespace orx {

// Converts the text that starts at `p` and leaves `p` behind the last character that it used;
// never looks at `end` or beyond.
[[nodiscard]] constexpr std::int32_t readDecimal(const char*& p, const char* end) {
  while (p != end && *p == ' ') ++p;
  const bool negative = p != end && *p == '-';
  if (p != end && (*p == '-' || *p == '+')) ++p;
  std::uint32_t value = 0;
  for (; p != end && *p >= '0' && *p <= '9'; ++p) {
    value = value * 10 + static_cast<std::uint32_t>(*p - '0');
  }
  return static_cast<std::int32_t>(negative ? 0 - value : value);
}

// The same for a whole text; what follows the digits does not count.
[[nodiscard]] constexpr std::int32_t parseDecimal(std::string_view text) {
  const char* p = text.data();
  return readDecimal(p, p + text.size());
}

}  // namespace orx
