// The bytes of a configuration handle: size, the bits of bytes 6 and 7; and the trace unit that the
// sources of CMConfigHandle share.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

#include "platform/trace.h"

namespace orx {

inline constexpr std::size_t handleSize = 8;
using HandleBytes = std::array<std::uint8_t, handleSize>;

extern const TraceUnit configHandleTraceUnit;

namespace handle_layout {

inline constexpr std::uint8_t oldTypeMask = 0x1F;
// The three flags lie side by side: model-inherited, flag 2, flag 3, from this bit of byte 6 (old
// format) or byte 7 (new format) on.
inline constexpr int oldFlagShift = 5;
inline constexpr int newFlagShift = 1;
inline constexpr unsigned modelInherited = 1;
inline constexpr unsigned flag2 = 2;
inline constexpr unsigned flag3 = 4;
inline constexpr unsigned flagMask = 7;

inline constexpr std::uint8_t newFormat = 0x01;  // byte 7
inline constexpr std::uint8_t temporary = 0x10;  // byte 7, new format only

inline bool isNewFormat(const HandleBytes& bytes) {
  return (bytes[7] & newFormat) != 0;
}
inline std::uint8_t type(const HandleBytes& bytes) {
  return isNewFormat(bytes) ? bytes[6] : bytes[6] & oldTypeMask;
}
inline unsigned flags(const HandleBytes& bytes) {
  const unsigned raw =
      isNewFormat(bytes) ? unsigned{bytes[7]} >> newFlagShift : unsigned{bytes[6]} >> oldFlagShift;
  return raw & flagMask;
}

// Bytes 6 and 7 as a little-endian number: new format for a positive type, else old format.
inline std::uint16_t typeAndFlags(std::int32_t type, unsigned flags) {
  const auto low = static_cast<unsigned>(type) & 0xFF;
  if (type > 0) return static_cast<std::uint16_t>(low | (newFormat | flags << newFlagShift) << 8);
  return static_cast<std::uint16_t>((low & oldTypeMask) | flags << oldFlagShift);
}

}  // namespace handle_layout
}  // namespace orx
