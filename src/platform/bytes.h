// Loads and stores of fixed-width integers in byte buffers, independent of the host's byte order
// and alignment. Callers guarantee that the bytes exist; nothing here looks at a length.
#pragma once

#include <cstdint>
#include <cstring>

namespace orx {

[[nodiscard]] inline std::uint16_t loadLE16(const std::uint8_t* p) {
  return static_cast<std::uint16_t>(p[0] | (p[1] << 8));
}

[[nodiscard]] inline std::uint32_t loadLE32(const std::uint8_t* p) {
  return std::uint32_t{p[0]} | std::uint32_t{p[1]} << 8 | std::uint32_t{p[2]} << 16 |
         std::uint32_t{p[3]} << 24;
}

[[nodiscard]] inline std::uint64_t loadLE64(const std::uint8_t* p) {
  return std::uint64_t{loadLE32(p)} | std::uint64_t{loadLE32(p + 4)} << 32;
}

[[nodiscard]] inline std::uint32_t loadBE32(const std::uint8_t* p) {
  return std::uint32_t{p[0]} << 24 | std::uint32_t{p[1]} << 16 | std::uint32_t{p[2]} << 8 |
         std::uint32_t{p[3]};
}

[[nodiscard]] inline std::uint64_t loadBE64(const std::uint8_t* p) {
  return std::uint64_t{loadBE32(p)} << 32 | loadBE32(p + 4);
}

inline void storeLE16(std::uint8_t* p, std::uint16_t value) {
  p[0] = static_cast<std::uint8_t>(value);
  p[1] = static_cast<std::uint8_t>(value >> 8);
}

inline void storeLE32(std::uint8_t* p, std::uint32_t value) {
  p[0] = static_cast<std::uint8_t>(value);
  p[1] = static_cast<std::uint8_t>(value >> 8);
  p[2] = static_cast<std::uint8_t>(value >> 16);
  p[3] = static_cast<std::uint8_t>(value >> 24);
}

inline void storeLE64(std::uint8_t* p, std::uint64_t value) {
  storeLE32(p, static_cast<std::uint32_t>(value));
  storeLE32(p + 4, static_cast<std::uint32_t>(value >> 32));
}

inline void storeBE32(std::uint8_t* p, std::uint32_t value) {
  p[0] = static_cast<std::uint8_t>(value >> 24);
  p[1] = static_cast<std::uint8_t>(value >> 16);
  p[2] = static_cast<std::uint8_t>(value >> 8);
  p[3] = static_cast<std::uint8_t>(value);
}

}  // namespace orx
