#include "orxkdb/words/printable.h"

#include "platform/control_character.h"

namespace orx::orxkdb {

std::string printable(std::string_view text) {
  constexpr char digits[] = "0123456789ABCDEF";
  std::string shown;
  for (std::size_t at = 0; at < text.size(); ++at) {
    if (!isControlAt(text, at)) {
      shown += text[at];
      continue;
    }
    const auto byte = static_cast<unsigned char>(text[at]);
    shown.append("\\x").append(1, digits[byte >> 4]).append(1, digits[byte & 0xF]);
  }
  return shown;
}

}  // namespace orx::orxkdb
