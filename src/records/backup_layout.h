// The columns of a backup line: 440 characters, one database record.
//
// Handle columns hold the exported form, left-aligned; number columns a decimal number, right-
// aligned; the data column as many bytes as the data length says. Blanks fill the rest.
#pragma once

#include <cstddef>

namespace orx::backup_layout {

struct Column {
  std::size_t offset;
  std::size_t width;

  [[nodiscard]] constexpr std::size_t end() const { return offset + width; }
};

inline constexpr std::size_t handleWidth = 48;
inline constexpr std::size_t numberWidth = 8;
inline constexpr std::size_t dataWidth = 256;
inline constexpr std::size_t recordWidth = 440;

inline constexpr Column parentHandle{0, handleWidth};
inline constexpr Column objectHandle{48, handleWidth};
inline constexpr Column recn{96, numberWidth};
inline constexpr Column recType{104, numberWidth};
inline constexpr Column modelHandle{112, handleWidth};
inline constexpr Column auxValue1{160, numberWidth};
inline constexpr Column dataLength{168, numberWidth};
inline constexpr Column data{176, dataWidth};
inline constexpr Column auxValue2{432, numberWidth};

// The columns lie side by side and fill the line.
static_assert(parentHandle.end() == objectHandle.offset && objectHandle.end() == recn.offset);
static_assert(recn.end() == recType.offset && recType.end() == modelHandle.offset);
static_assert(modelHandle.end() == auxValue1.offset && auxValue1.end() == dataLength.offset);
static_assert(dataLength.end() == data.offset && data.end() == auxValue2.offset);
static_assert(auxValue2.end() == recordWidth);
static_assert(3 * handleWidth + 5 * numberWidth + dataWidth == recordWidth);

// What a number column can hold.
inline constexpr int lowestNumber = -9999999;
inline constexpr int highestNumber = 99999999;

}  // namespace orx::backup_layout
