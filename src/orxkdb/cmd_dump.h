// orxkdb dump: every record of a database as text (dump_format.h).
#pragma once

#include <string>

#include "orxkdb/command.h"

namespace orx::orxkdb {

struct DumpOptions {
  std::string database;
  std::string file = "-";  // standard output
  bool json = false;
};

// Carries every record. After a failure there is no file, and on standard output no DATA=END.
Result dump(const DumpOptions& options);

Registration addDump;

}  // namespace orx::orxkdb
