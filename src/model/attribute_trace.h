// The trace unit that attributes, their keys and their iterators share.
#pragma once

#include "platform/trace.h"

namespace orx {

extern const TraceUnit attributeTraceUnit;

}  // namespace orx
