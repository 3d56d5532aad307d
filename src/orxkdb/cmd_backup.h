// orxkdb backup: every record of a database as a line that orxrestore reads.
#pragma once

#include <string>

#include "orxkdb/command.h"

namespace orx::orxkdb {

struct BackupOptions {
  std::string database;
  std::string file;  // or "-"
  bool json = false;
  bool crlf = false;  // "\r\n" ends a line, not "\n"
};

// exitNotAsExpected, and no file, when a line cannot carry a record (records/carry_check.h); what
// goes to standard output ends before it.
Result backup(const BackupOptions& options);

Registration addBackup;

}  // namespace orx::orxkdb
