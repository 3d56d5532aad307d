#include "messages/trace_unit.h"

namespace orx {

constexpr TraceUnit restoreTraceUnit =
    makeTraceUnit("orxrestore.cpp", "ORXRESTORE", __DATE__, __TIME__);

}  // namespace orx
