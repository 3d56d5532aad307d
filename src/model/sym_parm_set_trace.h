// The trace unit that the files of symbolic parameter sets share.
#pragma once

#include "platform/trace.h"

namespace orx {

extern const TraceUnit symParmSetTraceUnit;

}  // namespace orx
