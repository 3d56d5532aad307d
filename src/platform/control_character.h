// Which bytes of a text control a terminal instead of showing something.
#pragma once

namespace orx {

// Those of ASCII. Bytes of other scripts, UTF-8 included, are none.
[[nodiscard]] constexpr bool isControlCharacter(char character) {
  const auto code = static_cast<unsigned char>(character);
  return code < 0x20 || code == 0x7F;
}

}  // namespace orx
