// The trace unit that symbolic parameters and the resolution of symbols share.
#pragma once

#include "platform/trace.h"

namespace orx {

extern const TraceUnit symParmTraceUnit;

}  // namespace orx
