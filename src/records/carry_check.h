// Which database records a backup line cannot carry.
#pragma once

#include <cstdint>

namespace orx {

class DataBuffer;

// The first field of a record that its backup line would lose or garble.
enum class CarryProblem : std::int32_t {
  none,
  recordNumber,  // recn, recType, auxValue1, auxValue2: more than 8 characters in decimal
  recordType,
  firstAuxiliary,
  secondAuxiliary,
  lineFeed,  // in the data, before its first zero byte
};

[[nodiscard]] CarryProblem checkCarry(const DataBuffer& buffer);

// The problem in words that follow the name of a record, "the record number needs ..."; a literal.
[[nodiscard]] const char* describe(CarryProblem problem);

}  // namespace orx
