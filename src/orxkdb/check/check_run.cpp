#include "orxkdb/check/check_run.h"

#include "orxkdb/check/backup_check.h"
#include "orxkdb/check/database_check.h"
#include "orxkdb/check/inventory.h"
#include "platform/kdb.h"
#include "platform/kdb_files.h"
#include "platform/run_progress.h"

namespace orx::orxkdb {

Result runCheck(const std::string& input, Findings& findings, CheckCounts& counts) {
  Inventory inventory;
  counts.isDatabase = kdb::looksLikeDatabase(input.c_str());
  Result result = counts.isDatabase ? checkDatabase(input, findings, inventory, counts)
                                    : checkBackup(input, findings, inventory, counts);
  if (!result.ok()) return result;
  runProgress().enter("checking");
  inventory.check(findings);
  counts.objects = inventory.objectCount();
  counts.models = inventory.modelCount();
  counts.references = inventory.referenceCount();
  return {};
}

}  // namespace orx::orxkdb
