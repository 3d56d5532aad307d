// Owners of the storage engine's handles, and its errors as outcomes. The only header that includes
// the engine's own; only the sources of this folder include it.
#pragma once

#include <lmdb.h>

#include <memory>

#include "platform/kdb_codes.h"

namespace orx::kdb::engine {

struct CloseEnvironment {
  void operator()(MDB_env* environment) const { mdb_env_close(environment); }
};
struct AbortTransaction {
  void operator()(MDB_txn* transaction) const { mdb_txn_abort(transaction); }
};
struct CloseCursor {
  void operator()(MDB_cursor* cursor) const { mdb_cursor_close(cursor); }
};

// A cursor of a write transaction goes before its transaction, that before its environment.
using Environment = std::unique_ptr<MDB_env, CloseEnvironment>;
using Transaction = std::unique_ptr<MDB_txn, AbortTransaction>;
using Cursor = std::unique_ptr<MDB_cursor, CloseCursor>;

// 0 is success; a negative number that is not the engine's for "not found", "exists" or "full"
// means damage. `fd` is the file that was written, looked at when the engine reports an I/O error.
[[nodiscard]] Outcome outcomeOf(int engineError, int fd);

}  // namespace orx::kdb::engine
