// Handles as numbers: the 8 bytes read big-endian. Numbers order as the raw bytes do, which is the
// order of a database, and vectors of them are cheap to keep, sort and search.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "model/config_handle.h"
#include "platform/bytes.h"

namespace orx::orxkdb {

using HandleNumber = std::uint64_t;

inline constexpr HandleNumber nullHandle = 0;

[[nodiscard]] inline HandleNumber numberOf(const std::uint8_t* bytes) {
  return HandleNumber{loadBE32(bytes)} << 32 | loadBE32(bytes + 4);
}
[[nodiscard]] inline HandleNumber numberOf(const HandleBytes& bytes) {
  return numberOf(bytes.data());
}
[[nodiscard]] CMConfigHandle handleOf(HandleNumber number);

[[nodiscard]] inline std::uint8_t typeOf(HandleNumber number) {
  const auto byte6 = static_cast<std::uint8_t>(number >> 8);
  const bool isNewFormat = (number & handle_layout::newFormat) != 0;
  return isNewFormat ? byte6 : byte6 & handle_layout::oldTypeMask;
}

// A permanent handle in the new format that is not inherited and has no flags, as nearly all are.
[[nodiscard]] inline bool isPlain(HandleNumber number) {
  constexpr HandleNumber flagsAndBytes4And5 = 0xFFFF00FF;
  return (number & flagsAndBytes4And5) == handle_layout::newFormat && typeOf(number) != 0;
}

// The handle that the exported form of this one brings back: new format for a positive type, not
// temporary. normalForm() is the same, and fast for the handles that come back as they are.
[[nodiscard]] HandleNumber readBack(HandleNumber number);
[[nodiscard]] inline HandleNumber normalForm(HandleNumber number) {
  return isPlain(number) || number == nullHandle ? number : readBack(number);
}

// What bytes 0-3 hold, the identifier of a handle that is not inherited.
[[nodiscard]] inline std::uint32_t identifierOf(HandleNumber number) {
  std::uint8_t bytes[4];
  storeBE32(bytes, static_cast<std::uint32_t>(number >> 32));
  return loadLE32(bytes);
}

// A handle in either of its text forms (hexadecimal digits in upper case), complete and with
// nothing behind it; none for any other text.
[[nodiscard]] std::optional<HandleNumber> readHandleText(std::string_view text);

// Its exported form.
[[nodiscard]] std::string exportedForm(HandleNumber number);

}  // namespace orx::orxkdb
