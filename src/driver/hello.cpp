#include "driver/hello.h"

#include "messages/message_print.h"
#include "messages/trace_unit.h"

namespace orx {

void HelloFn() {
  ORX_TRACE("HelloFn");
  printMessage("IDS_HELLOFN_FIRST", traceUnit.buildDate, traceUnit.buildTime);
}

}  // namespace orx
