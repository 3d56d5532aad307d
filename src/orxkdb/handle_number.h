// Handles as numbers: the 8 bytes read big-endian. Numbers order as the raw bytes do, and vectors
// of them are cheap to keep, sort and search.
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

// The handle that the exported form of this one brings back: new format for a positive type, not
// temporary.
[[nodiscard]] HandleNumber normalForm(HandleNumber number);

// What bytes 0-3 hold, the identifier of a handle that is not inherited.
[[nodiscard]] inline std::uint32_t identifierOf(HandleNumber number) {
  std::uint8_t bytes[4];
  storeBE32(bytes, static_cast<std::uint32_t>(number >> 32));
  return loadLE32(bytes);
}

// A handle in either of its text forms, complete and with nothing behind it.
[[nodiscard]] std::optional<HandleNumber> readHandleText(std::string_view text);

// Its exported form.
[[nodiscard]] std::string exportedForm(HandleNumber number);

}  // namespace orx::orxkdb
