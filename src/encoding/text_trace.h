// The trace unit that code pages and description attributes share.
#pragma once

#include "platform/trace.h"

namespace orx {

extern const TraceUnit textTraceUnit;

}  // namespace orx
