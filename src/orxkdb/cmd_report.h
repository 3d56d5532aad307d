// orxkdb report: a page about a database, for people who would rather look than read tables.
#pragma once

#include <cstddef>
#include <optional>
#include <string>

#include "orxkdb/command.h"

namespace orx::orxkdb {

struct ReportOptions {
  std::string database;
  std::string page;                   // the file to write, or "-"
  std::optional<std::string> backup;  // to plan the merge of
  std::size_t limit = 20;             // findings of each kind and entries of the plan; 0: all
  bool json = false;                  // tell what was written as JSON
};

// Writes the page, whole or not at all. Findings and a merge that would fail are no failure.
Result report(const ReportOptions& options);

Registration addReport;

}  // namespace orx::orxkdb
