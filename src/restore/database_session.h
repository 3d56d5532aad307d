// The database of one operation, and the error lines of its failures: on standard output, by
// ErrorMsg (messages/error_msg.h). The first of them is noted in runReport().
#pragma once

#include <cstdint>
#include <string>

#include "platform/kdb.h"

namespace orx {

class DatabaseSession {
 public:
  DatabaseSession() = default;
  DatabaseSession(const DatabaseSession&) = delete;
  DatabaseSession& operator=(const DatabaseSession&) = delete;
  // A database that was not closed stays as it was before the run.
  ~DatabaseSession();

  // For update, once for a session. False, after the error line, when it cannot be opened; it is
  // then untouched.
  [[nodiscard]] bool open(const std::string& name);

  // `code`, which a call on handle() has just returned, with its reason.
  [[nodiscard]] kdb::kdbStatus statusOf(std::int32_t code) const;
  // Prints the error line of a failed call: `text` with the code and the reason of the last status,
  // or of an earlier one.
  void report(std::int32_t code, const char* text) { report(statusOf(code), text); }
  void report(const kdb::kdbStatus& failure, const char* text);
  // The same as "*Error: Failure adding record %d to data base".
  void reportAddFailure(const kdb::kdbStatus& failure, std::int32_t recordNumber);

  // Publishes what the run changed; the last call. False when that failed, after an error line
  // unless the storage failure behind it has been reported: the database is then as
  // kdb::CloseDatabase says, as a rule as it was before the run.
  [[nodiscard]] bool close();

  // Closes without publishing; close() then fails without another line.
  void abandon();

  [[nodiscard]] kdb::kdbHandle handle() const { return handle_; }

 private:
  kdb::kdbHandle handle_;
  bool lossReported_ = false;  // the operator has been told that nothing will be published
};

}  // namespace orx
