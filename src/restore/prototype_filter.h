// Which records a prototypes-only restore (-p) adds.
#pragma once

#include "records/data_buffer.h"

namespace orx {

[[nodiscard]] bool belongsToPrototypes(const DataBuffer& record);

}  // namespace orx
