// Everything that a page is made of.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <utility>

#include "orxkdb/check/check_counts.h"
#include "orxkdb/check/findings.h"
#include "orxkdb/plan/merge_plan.h"
#include "orxkdb/report/census.h"
#include "orxkdb/stat/database_statistics.h"

namespace orx::orxkdb {

struct ReportData {
  // `entries` are shown of each list, 0: all.
  ReportData(std::string databaseName, std::optional<std::string> backupName, std::size_t entries)
      : database(std::move(databaseName)),
        backup(std::move(backupName)),
        limit(entries),
        findings(entries) {}

  std::string database;
  std::optional<std::string> backup;  // to plan the merge of
  std::size_t limit;

  DatabaseStatistics statistics;
  Findings findings;
  CheckCounts counts;
  Census census;
  std::optional<MergePlan> plan;
};

// Reads the database several times, and the backup when one is named, and fills in the rest of
// `data`. exitFailed when another program replaces the database meanwhile: the parts of the page
// would not belong together. After a failure `data` is of no use.
Result gather(ReportData& data);

}  // namespace orx::orxkdb
