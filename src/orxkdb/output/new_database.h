// Opening a database that does not exist yet.
#pragma once

#include <string>

#include "orxkdb/result.h"
#include "platform/kdb.h"

namespace orx::orxkdb {

// Opens `name` as new (platform/kdb.h); the caller closes or abandons it. Refuses a name that is
// taken, and one that only has a previous generation left: the first change of the new database
// would replace that, the last there is of the old one. `database` is null after a failure.
Result openNew(const std::string& name, kdb::kdbHandle& database);

}  // namespace orx::orxkdb
