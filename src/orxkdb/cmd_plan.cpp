#include "orxkdb/cmd_plan.h"

#include <memory>

#include "orxkdb/output/json_document.h"
#include "orxkdb/output/output.h"
#include "orxkdb/plan/plan_report.h"
#include "orxkdb/plan/plan_run.h"

namespace orx::orxkdb {

namespace {

Result resultOf(const PlanOptions& options, const MergePlan& plan) {
  if (plan.succeeds()) return {};
  const std::string count = std::to_string(plan.totals().refused);
  return fail(
      exitNotAsExpected, "the merge would fail, taken keys: " + count,
      options.backup + " into " + options.database,
      "read the report; \"orxkdb check\" shows keys that a backup has twice, and counters of "
      "a database that give out what is taken");
}

}  // namespace

Result plan(const PlanOptions& options) {
  MergePlan planned;
  if (Result result = planMerge(options.database, options.backup, options.limit, planned);
      !result.ok()) {
    return result;
  }
  const PlanNames names{options.database, options.backup};
  const auto report = options.json ? planJson : planText;
  if (Result result = writeStandardOutput(report(names, planned, options.limit)); !result.ok()) {
    return result;
  }
  return resultOf(options, planned);
}

void addPlan(CommandLine& line) {
  auto options = std::make_shared<PlanOptions>();
  Command command(line, "plan", "Show what a merge would do, without doing it",
                  [options] { return plan(*options); });
  command.argument("DB", options->database, "Database to merge into; it is not changed");
  command.argument("BACKUP", options->backup, "Backup of the other database");
  command.limit(options->limit, "Entries to show of each list; 0 shows all");
  command.json(options->json);
  command.footer(
      "Does all that \"orxrestore -i BACKUP -m DB\" does but for writing: reads both, renumbers,\n"
      "joins, and looks for every key in the database. Shows first whether the merge would\n"
      "succeed, then the keys that are taken, the records to add, the parameters, the counters\n"
      "before and after, and the identifiers in the backup and in the database.\n\n"
      "The backup may be compressed with gzip, zstd or xz.\n\n"
      "It takes no lock. Free disk space and permissions are not looked at. The exit code is 0\n"
      "when the merge would succeed and 2 when it would not.\n\n"
      "Examples:\n"
      "  orxkdb plan rorxdata other.txt\n"
      "  orxkdb plan --limit 0 rorxdata other.txt | less\n"
      "  orxkdb plan --json rorxdata other.txt > plan.json");
}

}  // namespace orx::orxkdb
