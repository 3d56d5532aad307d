#include "orxkdb/cmd_check.h"

#include <unistd.h>

#include <memory>

#include "orxkdb/check/check_report.h"
#include "orxkdb/check/check_run.h"
#include "orxkdb/output/json_document.h"
#include "orxkdb/output/output.h"
#include "orxkdb/words/counted.h"
#include "terminal/color.h"

namespace orx::orxkdb {

namespace {

Result resultOf(const CheckOptions& options, const Findings& findings) {
  if (findings.total() == 0) return {};
  return fail(exitNotAsExpected, counted(findings.total(), "finding"), options.input,
              "read the report; \"orxkdb explain\" shows an object or a line");
}

}  // namespace

Result check(const CheckOptions& options) {
  Findings findings(options.limit);
  CheckCounts counts;
  if (Result result = runCheck(options.input, findings, counts); !result.ok()) return result;
  const std::string report = options.json
                                 ? reportJson(options.input, counts, findings)
                                 : withPaintedLines(reportText(options.input, counts, findings),
                                                    "- ", Paint::yellow, STDOUT_FILENO);
  if (Result result = writeStandardOutput(report); !result.ok()) return result;
  return resultOf(options, findings);
}

void addCheck(CommandLine& line) {
  auto options = std::make_shared<CheckOptions>();
  Command command(line, "check",
                  "Find what is wrong with a database or a backup, before or after a restore",
                  [options] { return check(*options); });
  command.argument("INPUT", options->input, "Database to read, or backup file; neither is changed");
  command.limit(options->limit, "Findings to show of each kind; 0 shows all");
  command.json(options->json);
  command.footer(
      "Looks at the lines of a backup (length, columns, zero bytes, keys that occur twice), at "
      "the\n"
      "keys and chains of records, at the attribute texts, and at what objects say of each other:\n"
      "parents, models, use counts and signatures, handles in attributes, identifier counters and\n"
      "system parameters. What comes back as something else from the next merge or rebuild is a\n"
      "finding as well: attribute keys, values and parameters that do not read back, references\n"
      "that are not counted, parents that lead back to their child, identifiers near 2^32, and\n"
      "records with a parent that a merge reads as part of the system record. An inherited handle\n"
      "need not have a record of its own and is not looked for. Lines may stand in any order; how\n"
      "many are out of key order is told, but is no finding.\n\n"
      "A backup may be compressed with gzip, zstd or xz.\n\n"
      "All findings are counted, also those that are not shown. The exit code is 0 without and 2\n"
      "with findings.\n\n"
      "Examples:\n"
      "  orxkdb check rorxdata\n"
      "  orxkdb check --limit 0 RORXbackup.txt | less\n"
      "  orxkdb check --json rorxdata > findings.json");
}

}  // namespace orx::orxkdb
