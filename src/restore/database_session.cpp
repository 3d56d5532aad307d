#include "restore/database_session.h"

#include <array>
#include <cstdio>

#include "messages/trace_unit.h"
#include "records/record_calls.h"
#include "restore/error_lines.h"

namespace orx {

namespace {
// Error texts are formed in an area of this size; a name too long for it is cut at the end.
constexpr std::size_t errorTextSize = 256;
using ErrorText = std::array<char, errorTextSize>;
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
  printErrorLine(status, text.data());
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
  printErrorLine(failure, text);
  if (kdb::isStorageFailure(static_cast<kdb::Code>(failure.returnCode))) lossReported_ = true;
}

bool DatabaseSession::close() {
  ORX_TRACE("DatabaseSession::close");
  kdb::kdbStatus status;
  status.returnCode = kdb::CloseDatabase(handle_, status);
  if (status.returnCode == 0) return trace.exit(true);
  if (!lossReported_) printErrorLine(status, "*Error: in CloseDatabase");
  return trace.exit(false);
}

void DatabaseSession::abandon() {
  (void)kdb::AbandonDatabase(handle_);
  lossReported_ = true;
}

void DatabaseSession::reportAddFailure(const kdb::kdbStatus& failure, std::int32_t recordNumber) {
  ErrorText text{};
  (void)std::snprintf(text.data(), text.size(), "*Error: Failure adding record %d to data base",
                      recordNumber);
  report(failure, text.data());
}

}  // namespace orx
