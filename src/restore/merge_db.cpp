#include <cstdio>

#include "restore/exit_codes.h"
#include "restore/operations.h"
#include "restore/trace_unit.h"

namespace orx {

int mergeDB() {
  ORX_TRACE("mergeDB");
  (void)std::fputs(
      "orxrestore: the merge restore (-m) is not part of this version yet; nothing was changed.\n",
      stderr);
  return trace.exit(exitFailed);
}

}  // namespace orx
