// The fields of a record that its whole object shares, by name. Those of the first record of a
// chain count.
#pragma once

#include <vector>

#include "records/data_buffer.h"

namespace orx::orxkdb {

enum class HeadField { recType, modelHandle, auxValue1, auxValue2 };

struct HeadFieldName {
  HeadField field;
  const char* name;
};

// Those that differ between two records, in the order above.
[[nodiscard]] std::vector<HeadFieldName> differingFields(const DataBuffer& a, const DataBuffer& b);

}  // namespace orx::orxkdb
