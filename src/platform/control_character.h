// Which bytes of a text control a terminal instead of showing something.
#pragma once

#include <cstddef>
#include <string_view>

namespace orx {

// Whether the byte at `at` is a control character of ASCII, or one of the two bytes of U+0080 to
// U+009F in UTF-8, which terminals obey like ESC and a letter. Bytes of other scripts are none.
[[nodiscard]] constexpr bool isControlAt(std::string_view text, std::size_t at) {
  constexpr unsigned char lead = 0xC2;
  const auto byteAt = [text](std::size_t place) {
    return place < text.size() ? static_cast<unsigned char>(text[place]) : 0;
  };
  const auto continues = [](int byte) { return byte >= 0x80 && byte < 0xA0; };
  const int byte = byteAt(at);
  if (byte < 0x20 || byte == 0x7F) return true;
  return byte == lead ? continues(byteAt(at + 1))
                      : continues(byte) && at > 0 && byteAt(at - 1) == lead;
}

}  // namespace orx
