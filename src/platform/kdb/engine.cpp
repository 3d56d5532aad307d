#include "platform/kdb/engine.h"

#include <cerrno>

#include "platform/kdb/failure.h"

namespace orx::kdb::engine {

Outcome outcomeOf(int engineError, int fd) {
  switch (engineError) {
    case MDB_SUCCESS:
      return succeeded;
    case MDB_KEYEXIST:
      return duplicateKey;
    case MDB_NOTFOUND:
      return recordNotFound;
    case MDB_MAP_FULL:
    case MDB_TXN_FULL:
      return noSpace;
    case EIO:
      return isOutOfSpace(fd) ? noSpace : inputOutputError;
    default:
      break;
  }
  return engineError > 0 ? outcomeOfErrno(engineError) : notADatabase;
}

}  // namespace orx::kdb::engine
