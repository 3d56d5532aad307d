// Result: what came of a step of a subcommand, and the texts that tell the operator of a failure.
//
// A text has three parts, "what, where, what to do next", without the program's name before them
// and without a line end. What the database and the system answer is put into plain sentences; the
// numbers and names of their codes follow in brackets.
#pragma once

#include <string>
#include <string_view>

#include "orxkdb/exit_codes.h"
#include "platform/kdb.h"

namespace orx::orxkdb {

struct [[nodiscard]] Result {
  ExitCode code = exitDone;
  std::string text;  // empty when done
  std::string hint;  // what to do next: the last part of the text

  // Adds "; more" to what to do next, in the text and the hint.
  void addHint(std::string_view more);
  // "what, where" without what to do next.
  [[nodiscard]] std::string_view textWithoutHint() const;
  [[nodiscard]] bool ok() const { return code == exitDone; }
};

// A failure in the words of the caller.
Result fail(ExitCode code, std::string_view what, std::string_view where, std::string_view next);

// These look at the database and the files beside it to say what is wrong, so they are to be called
// right after the call that failed; `status` is what that call gave.

// A database that could not be opened: exitNotOpened, or exitFailed for want of disk or memory.
Result openFailure(const std::string& database, const kdb::kdbStatus& status);
// The same for one that was to be made.
Result createFailure(const std::string& database, const kdb::kdbStatus& status);
// One that could not be closed.
Result closeFailure(const std::string& database, const kdb::kdbStatus& status);
// The last failed call on `handle`: exitNotAsExpected for a damaged database, else exitFailed.
// `record` says where in the database, " behind its record 7".
Result lastFailure(const std::string& database, kdb::kdbHandle handle,
                   const std::string& record = "");

// For the end of a hint when nothing was published: that the database is as it was, that none was
// made, or both where it cannot be looked at.
std::string_view unchangedState(const std::string& database);

// A call that failed with the errno value `error`, at a place or with a file.
Result systemFailure(ExitCode code, std::string_view what, std::string where, int error);
Result fileFailure(ExitCode code, std::string_view what, const std::string& file, int error);
// exitFailed: somebody wrote to `file` while it was read, and what was read need not be what it
// holds.
Result changedFailure(const std::string& file);

}  // namespace orx::orxkdb
