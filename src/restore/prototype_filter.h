// Which records a prototypes-only restore (-p) adds.
#pragma once

#include "records/data_buffer.h"

namespace orx {

// True for models, by the bit 0x08 of the record type; for the system record and any other with a
// null object handle; below a parent whose handle type has it too; and for records without a
// parent, unless their type is 1.
[[nodiscard]] bool belongsToPrototypes(const DataBuffer& record);

}  // namespace orx
