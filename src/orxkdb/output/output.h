// Output: where a subcommand writes its product, standard output or a file that appears whole or
// not at all.
//
//   Output output;
//   output.open(name, database); output.write(bytes); ...; output.publish();
//
// open() and publish() once, and nothing after a failure. A file that was not published is as it
// was before (platform/atomic_file.h); of standard output the end is missing then. Nothing that is
// read is overwritten, nor any database: open() refuses the database and the backup that are being
// read under any of their names, every other file that is a database, and the names that belong to
// databases, with exitNotAsExpected. exitNotOpened when the file cannot be made, exitFailed when it
// cannot be written.
#pragma once

#include <string>
#include <string_view>

#include "orxkdb/result.h"
#include "orxkdb/standard_stream.h"
#include "platform/atomic_file.h"

namespace orx::orxkdb {

class Output {
 public:
  // `name` is a file or "-"; the others are the names of what is read, or empty. Without open() it
  // is standard output.
  Result open(const std::string& name, const std::string& database, const std::string& backup = "");
  // Keeps up to 256 KiB, so a failure may be that of an earlier call.
  Result write(std::string_view bytes);
  // The last call: writes the rest, and gives a file its name.
  Result publish();

  [[nodiscard]] bool isStandard() const { return isStandard_; }

 private:
  [[nodiscard]] int flush();
  [[nodiscard]] Result writeFailure(int error) const;

  std::string name_;
  bool isStandard_ = true;
  AtomicFile file_;
  std::string buffer_;  // for standard output
};

// Whether anything was written on standard output by what is declared here, in the whole run.
[[nodiscard]] bool hasWrittenStandardOutput();

// Writes all of `text` on standard output as the product of a subcommand. exitFailed when it
// cannot.
Result writeStandardOutput(std::string_view text);

// Tells the operator on standard output what was done, line end included; whether it can be written
// does not matter.
void say(std::string_view text);

}  // namespace orx::orxkdb
