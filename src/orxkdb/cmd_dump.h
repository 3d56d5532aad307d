// orxkdb dump: every record of a database as text (dump_format.h).
#pragma once

#include <string>

#include "orxkdb/command.h"

namespace orx::orxkdb {

struct DumpOptions {
  std::string database;
  std::string file = "-";
  bool json = false;
};

Result dump(const DumpOptions& options);

Registration addDump;

}  // namespace orx::orxkdb
