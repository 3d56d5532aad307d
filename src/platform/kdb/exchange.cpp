// Going back to the previous generation.
#include <cerrno>
#include <memory>

#include "platform/file.h"
#include "platform/kdb.h"
#include "platform/kdb/database.h"
#include "platform/kdb/failure.h"
#include "platform/kdb/publish.h"
#include "platform/run_progress.h"

namespace orx::kdb {

namespace {

// Every page of it and every record, so that no damaged generation is made the current one.
Outcome readThrough(Database& database) {
  runProgress().enter("reading", database.entries());
  std::unique_ptr<Snapshot> snapshot;
  Outcome outcome = database.snapshot(snapshot);
  Key key;
  const std::uint8_t* record = nullptr;
  while (outcome.ok()) {
    outcome = snapshot->next(key, record);
    runProgress().countRecord();
  }
  return outcome == endOfData ? succeeded : outcome;
}

}  // namespace

std::int32_t exchangeWithPrevious(const char* name, kdbStatus& status) {
  std::unique_ptr<Database> current;
  Outcome outcome = Database::open(name, OpenMode::update, current);
  if (outcome.ok()) {
    std::unique_ptr<Database> previous;
    outcome = Database::open(current->paths().previous, OpenMode::read, previous);
    // A run that died while it published leaves the database as its own previous generation.
    const DatabasePaths& paths = current->paths();
    if (outcome.ok() && isSameFile(paths.database, paths.previous)) outcome = recordNotFound;
    // Behind a link lies a file that the exchange would not move.
    if (outcome.ok()) {
      outcome = outcomeOfErrno(checkLeadsTo(paths.previous, previous->fd(), EISDIR));
    }
    // Until the exchange is on the disk, nobody else may build upon what has the name by then.
    if (outcome.ok()) outcome = previous->hold();
    if (outcome.ok()) outcome = readThrough(*previous);
    if (outcome.ok()) outcome = exchangeGenerations(paths, current->fd(), previous->fd());
  }
  status = statusOf(outcome);
  return status.returnCode;
}

}  // namespace orx::kdb
