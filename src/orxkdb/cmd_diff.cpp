#include "orxkdb/cmd_diff.h"

#include <memory>

#include "orxkdb/diff/diff_run.h"
#include "orxkdb/diff/diff_summary.h"
#include "orxkdb/output/json_document.h"

namespace orx::orxkdb {

namespace {

// Of an input that is damaged somewhere: the other code stands for an unusable command line here.
Result notOpened(Result result) {
  if (result.code == exitNotAsExpected) result.code = exitNotOpened;
  return result;
}

}  // namespace

Result diff(const DiffOptions& options) {
  DiffCounts counts;
  if (Result result = runDiff(options, counts); !result.ok()) return notOpened(std::move(result));
  if (counts.isSame()) return {};
  return fail(exitDifferent, "the two differ: " + countsInShort(counts),
              options.before + " and " + options.after,
              "read the report; \"orxkdb explain\" shows an object or a line");
}

void addDiff(CommandLine& line) {
  auto options = std::make_shared<DiffOptions>();
  Command command(line, diffCommand,
                  "Compare two databases or backups, object by object and attribute by attribute",
                  [options] { return diff(*options); });
  command.argument("A", options->before, "The old database, or backup file; it is not changed");
  command.argument("B", options->after, "The new database, or backup file; it is not changed");
  command.limit(options->limit, "Objects to show as added, as removed and as changed; 0 shows all");
  command.flag("--records", options->records, "Show the records of changed objects as well");
  command.json(options->json);
  command.footer(
      "What only B has is added, what only A has is removed. An object is known by its handle and\n"
      "its parent's; one that got another parent is removed and added. Records whose text does "
      "not\n"
      "parse are compared byte by byte.\n\n"
      "A backup carries less than a database: when either is a backup, a database is compared as "
      "a\n"
      "backup and a restore would bring it back. The lines of a backup may stand in any order; of\n"
      "lines with one key the first counts. A line without a key is a difference of its own. A\n"
      "backup may be compressed with gzip, zstd or xz.\n\n"
      "All objects are counted, also those that are not shown. The exit code is 0 when the two "
      "are\n"
      "the same and 1 when they differ. Any other is a failure: 2 the command line is unusable, 5\n"
      "an input could not be opened or is damaged, 6 a failure on the way.\n\n"
      "Examples:\n"
      "  orxkdb diff rorxdata.orx-previous rorxdata\n"
      "  orxkdb diff RORXbackup.txt rorxdata\n"
      "  orxkdb diff --json --limit 0 old.txt new.txt > changes.json");
}

}  // namespace orx::orxkdb
