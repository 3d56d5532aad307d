#include <cstdio>

#include "restore/exit_codes.h"
#include "restore/operations.h"
#include "restore/trace_unit.h"

namespace orx {

int useCount() {
  ORX_TRACE("useCount");
  (void)std::fputs(
      "orxrestore: the use-count rebuild (-u) is not part of this version yet; nothing was "
      "changed.\n",
      stderr);
  return trace.exit(exitFailed);
}

}  // namespace orx
