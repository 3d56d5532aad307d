#include "orxkdb/output/new_database.h"

#include <sys/stat.h>

#include "terminal/file_words.h"

namespace orx::orxkdb {

namespace {

bool isTaken(const std::string& name) {
  struct stat file {};
  return ::lstat(name.c_str(), &file) == 0;
}

}  // namespace

Result openNew(const std::string& name, kdb::kdbHandle& database) {
  const std::string previous = kdb::previousName(name);
  if (!isTaken(name) && kdb::looksLikeDatabase(previous.c_str())) {
    return fail(exitNotOpened, "the previous generation of this database is still there",
                absolutePath(previous),
                "bring it back with \"mv " + shellWord(previous) + " " + shellWord(name) +
                    "\", or move it away first");
  }
  kdb::kdbStatus status;
  const std::int32_t code = kdb::kdbOpen(name.c_str(), static_cast<std::int32_t>(name.size()),
                                         kdb::openAsNew, database, status);
  return code == 0 ? Result() : createFailure(name, status);
}

}  // namespace orx::orxkdb
