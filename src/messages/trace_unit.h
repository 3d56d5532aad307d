// The source unit that the driver, the operations and their error lines belong to in the trace.
#pragma once

#include "platform/trace.h"

namespace orx {

extern const TraceUnit restoreTraceUnit;

// The name that ORX_TRACE looks for: a source of namespace orx that includes this belongs to the
// unit.
[[maybe_unused]] static constexpr const TraceUnit& traceUnit = restoreTraceUnit;

}  // namespace orx
