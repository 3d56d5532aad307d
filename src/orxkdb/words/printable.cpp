#include "orxkdb/words/printable.h"

#include "platform/control_character.h"

namespace orx::orxkdb {

std::string printable(std::string_view text) {
  constexpr char digits[] = "0123456789ABCDEF";
  std::string shown;
  for (const char c : text) {
    if (!isControlCharacter(c)) {
      shown += c;
      continue;
    }
    const auto byte = static_cast<unsigned char>(c);
    shown.append("\\x").append(1, digits[byte >> 4]).append(1, digits[byte & 0xF]);
  }
  return shown;
}

}  // namespace orx::orxkdb
