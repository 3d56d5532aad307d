#include "orxkdb/words/printable.h"

namespace orx::orxkdb {

std::string printable(std::string_view text) {
  constexpr char digits[] = "0123456789ABCDEF";
  std::string shown;
  for (const char c : text) {
    const auto byte = static_cast<unsigned char>(c);
    if (byte >= 0x20 && byte != 0x7F) {
      shown += c;
    } else {
      shown.append("\\x").append(1, digits[byte >> 4]).append(1, digits[byte & 0xF]);
    }
  }
  return shown;
}

}  // namespace orx::orxkdb
