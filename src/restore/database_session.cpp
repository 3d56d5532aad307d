#include "restore/database_session.h"

#include <array>
#include <cstdio>

#include "messages/error_msg.h"
#include "messages/trace_unit.h"
#include "records/record_calls.h"
#include "restore/run_report.h"

namespace orx {

namespace {
// Error texts are formed in an area of this size; a name too long for it is cut at the end.
constexpr std::size_t errorTextSize = 256;
using ErrorText = std::array<char, errorTextSize>;

void printFailure(std::int32_t code, std::int32_t reason, const char* text) {
  runReport().noteFailure(code, reason);
  ErrorMsg(code, reason, text);
}
}  // namespace

DatabaseSession::~DatabaseSession() {
  abandon();
}

bool DatabaseSession::open(const std::string& name) {
  ORX_TRACE("DatabaseSession::open");
  const kdb::kdbStatus status = openDatabase(name, kdb::openForUpdate, handle_);
  if (status.returnCode == 0) return trace.exit(true);
  ErrorText text{};
  (void)std::snprintf(text.data(), text.size(), "*Error: Unable to open key1 database %s",
                      name.c_str());
  printFailure(status.returnCode, status.reason, text.data());
  return trace.exit(false);
}

// A stale handle has no last status.
kdb::kdbStatus DatabaseSession::statusOf(std::int32_t code) const {
  kdb::kdbStatus status;
  const bool isStale = code == static_cast<std::int32_t>(kdb::Code::badObject);
  if (code != 0 && !isStale) (void)kdb::GetLastStatus(handle_, status);
  status.returnCode = code;
  return status;
}

void DatabaseSession::report(const kdb::kdbStatus& failure, const char* text) {
  ORX_TRACE("DatabaseSession::report");
  printFailure(failure.returnCode, failure.reason, text);
  if (kdb::isStorageFailure(static_cast<kdb::Code>(failure.returnCode))) lossReported_ = true;
}

bool DatabaseSession::close() {
  ORX_TRACE("DatabaseSession::close");
  kdb::kdbStatus status;
  const std::int32_t code = kdb::CloseDatabase(handle_, status);
  if (code == 0) return trace.exit(true);
  if (!lossReported_) printFailure(code, status.reason, "*Error: in CloseDatabase");
  return trace.exit(false);
}

void DatabaseSession::abandon() {
  (void)kdb::AbandonDatabase(handle_);
  lossReported_ = true;
}

void reportBackupReadError() {
  runReport().backupFailed = runReport().failure.returnCode == 0;
  printFailure(static_cast<std::int32_t>(kdb::inputOutputError.code),
               static_cast<std::int32_t>(kdb::inputOutputError.reason),
               "*Error: reading the backup file");
}

void reportMissingCounters() {
  printFailure(static_cast<std::int32_t>(kdb::recordNotFound.code),
               static_cast<std::int32_t>(kdb::recordNotFound.reason),
               "*Error: no handler counters in the system record");
}

void reportAddFailure(DatabaseSession& database, const kdb::kdbStatus& failure,
                      std::int32_t recordNumber) {
  ErrorText text{};
  (void)std::snprintf(text.data(), text.size(), "*Error: Failure adding record %d to data base",
                      recordNumber);
  database.report(failure, text.data());
}

}  // namespace orx
