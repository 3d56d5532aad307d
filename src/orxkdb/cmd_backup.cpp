#include "orxkdb/cmd_backup.h"

#include <memory>
#include <nlohmann/json.hpp>

#include "orxkdb/input/database_reader.h"
#include "orxkdb/keys/record_name.h"
#include "orxkdb/output/json_document.h"
#include "orxkdb/output/output.h"
#include "records/backup_record.h"
#include "records/carry_check.h"

namespace orx::orxkdb {

namespace {

Result checkRecord(const BackupOptions& options, const DataBuffer& record) {
  const CarryProblem problem = checkCarry(record);
  if (problem == CarryProblem::none) return {};
  return fail(exitNotAsExpected,
              std::string("a backup line cannot carry this record: ") + describe(problem),
              options.database + " " + recordName(record),
              "use \"orxkdb dump\", which carries every record; no backup was made");
}

Result writeBackup(const BackupOptions& options, DatabaseReader& reader, Output& output) {
  const std::string_view lineEnd = options.crlf ? "\r\n" : "\n";
  CMDatabaseBackupRecord line;
  Result written = reader.forEach([&](const DataBuffer& record) {
    if (Result result = checkRecord(options, record); !result.ok()) return result;
    line = record;
    if (Result result = output.write(line.text()); !result.ok()) return result;
    return output.write(lineEnd);
  });
  return written.ok() ? output.publish() : written;
}

nlohmann::ordered_json jsonOf(const BackupOptions& options, std::uint64_t records) {
  return jsonDocument(
      "backup", {{"database", options.database}, {"file", options.file}, {"records", records}});
}

std::string textOf(const BackupOptions& options, std::uint64_t records) {
  return options.file + ": " + std::to_string(records) + " records backed up";
}

}  // namespace

Result backup(const BackupOptions& options) {
  if (options.json && options.file == standardStream) return jsonNeedsFile("backup");
  DatabaseReader reader;
  if (Result result = reader.open(options.database); !result.ok()) return result;
  Output output;
  if (Result result = output.open(options.file, options.database); !result.ok()) return result;
  if (Result result = writeBackup(options, reader, output); !result.ok()) return result;
  if (output.isStandard()) return {};
  return tellOutcome(options.json, jsonOf(options, reader.count()),
                     textOf(options, reader.count()));
}

void addBackup(CommandLine& line) {
  auto options = std::make_shared<BackupOptions>();
  Command command(line, "backup", "Write every record as a line that orxrestore reads",
                  [options] { return backup(*options); });
  command.argument("DB", options->database, "Database to read; it is not changed");
  command.argument("FILE", options->file,
                   "File to write, whole or not at all; \"-\" is standard output");
  command.flag("--crlf", options->crlf, "End each line with CR LF");
  command.json(options->json);
  command.footer(
      "A line has 440 columns. A record that it cannot carry, because a number needs more than 8\n"
      "characters or the data holds a line feed, is named, and then no file is written.\n\n"
      "Examples:\n"
      "  orxkdb backup rorxdata rorxdata.txt\n"
      "  orxkdb backup --json rorxdata rorxdata.txt\n"
      "  orxkdb backup --crlf rorxdata RORXbackup.txt\n"
      "  orxkdb backup rorxdata - | gzip > rorxdata.txt.gz");
}

}  // namespace orx::orxkdb
