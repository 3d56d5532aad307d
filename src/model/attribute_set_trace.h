// The trace unit that attribute sets and their iterators share.
#pragma once

#include "platform/trace.h"

namespace orx {

extern const TraceUnit attributeSetTraceUnit;

}  // namespace orx
