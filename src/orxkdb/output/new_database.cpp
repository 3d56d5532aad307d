#include "orxkdb/output/new_database.h"

#include "platform/kdb_files.h"
#include "platform/taken_name.h"
#include "records/record_calls.h"
#include "terminal/file_words.h"

namespace orx::orxkdb {

Result openNew(const std::string& name, kdb::kdbHandle& database) {
  const std::string previous = kdb::previousName(name);
  if (!isTaken(name) && kdb::looksLikeDatabase(previous.c_str())) {
    return fail(exitNotOpened, "the previous generation of this database is still there",
                absolutePath(previous),
                "bring it back with \"mv " + shellWord(previous) + " " + shellWord(name) +
                    "\", or move it away first");
  }
  const kdb::kdbStatus status = openDatabase(name, kdb::openAsNew, database);
  return status.returnCode == 0 ? Result() : createFailure(name, status);
}

}  // namespace orx::orxkdb
