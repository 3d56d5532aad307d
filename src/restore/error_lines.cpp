#include "restore/error_lines.h"

#include <cstdint>

#include "messages/error_msg.h"
#include "restore/run_report.h"

namespace orx {

namespace {

kdb::kdbStatus statusOf(const kdb::Outcome& outcome) {
  return {.reason = static_cast<std::int32_t>(outcome.reason),
          .returnCode = static_cast<std::int32_t>(outcome.code)};
}

}  // namespace

void printErrorLine(const kdb::kdbStatus& failure, const char* text) {
  runReport().noteFailure(failure.returnCode, failure.reason);
  ErrorMsg(failure.returnCode, failure.reason, text);
}

void reportBackupReadError() {
  runReport().backupFailed = runReport().failure.returnCode == 0;
  printErrorLine(statusOf(kdb::inputOutputError), "*Error: reading the backup file");
}

void reportMissingCounters() {
  printErrorLine(statusOf(kdb::recordNotFound), "*Error: no handler counters in the system record");
}

}  // namespace orx
