// The trace unit that the source files of this folder share.
#pragma once

#include "platform/trace.h"

namespace orx {

extern const TraceUnit recordTraceUnit;

}  // namespace orx
