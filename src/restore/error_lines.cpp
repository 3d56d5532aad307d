#include "restore/error_lines.h"

#include "messages/error_msg.h"
#include "restore/run_report.h"

namespace orx {

void printErrorLine(const kdb::kdbStatus& failure, const char* text) {
  runReport().noteFailure(failure.returnCode, failure.reason);
  ErrorMsg(failure.returnCode, failure.reason, text);
}

void reportBackupReadError() {
  runReport().backupFailed = runReport().failure.returnCode == 0;
  printErrorLine(kdb::statusOf(kdb::inputOutputError), "*Error: reading the backup file");
}

void reportMissingCounters() {
  printErrorLine(kdb::statusOf(kdb::recordNotFound),
                 "*Error: no handler counters in the system record");
}

}  // namespace orx
