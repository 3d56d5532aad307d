#include <cstdio>

#include "restore/exit_codes.h"
#include "restore/operations.h"
#include "restore/trace_unit.h"

namespace orx {

int overrideDB() {
  ORX_TRACE("overrideDB");
  (void)std::fputs(
      "orxrestore: the replace restore (-o) is not part of this version yet; nothing was "
      "changed.\n",
      stderr);
  return trace.exit(exitFailed);
}

}  // namespace orx
