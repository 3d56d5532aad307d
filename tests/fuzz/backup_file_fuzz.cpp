// A whole backup file of any bytes: line by line, to the commands that read one, and restored.
#include "platform/compression/compression.h"
#include "platform/kdb.h"
#include "platform/kdb_files.h"
#include "records/backup_reader.h"
#include "tests/fuzz/commands.h"
#include "tests/fuzz/fuzz_target.h"
#include "tests/support/backup_lines.h"

namespace orx::fuzz {
namespace {

void checkLines(const std::string& file) {
  BackupReader reader;
  require(reader.open(file.c_str()), "a backup file can be opened");
  std::vector<std::string> lines;
  for (BackupLine line; reader.next(line) == ReadOutcome::line;) {
    lines.emplace_back(line.chars.begin(), line.chars.end());
  }
  require(lines == test::plainLines(file), "lines are read by the plain rules");
}

// A comparison unpacks a compressed file, and reads a database as one; a restore does neither.
bool isPlainBackup(const std::string& file) {
  return compressionOfFile(file) == Compression::none && !kdb::looksLikeDatabase(file.c_str());
}

const Registration target("backup_file", [](Input& input) {
  static const Workplace place;
  const std::size_t first = input.byte();
  const auto wording = first < 128 ? Wording::text : Wording::json;
  place.fill(place.soundBytes, input.rest());
  checkLines(place.backup);
  const std::size_t command = first % 128 % (backupCommands() + 3);
  if (command < backupCommands()) {
    readBackup(place, command, wording);
  } else if (command == backupCommands()) {
    (void)changeDatabase(place, Change::merge, place.soundBytes);
  } else if (command == backupCommands() + 1) {
    (void)changeDatabase(place, Change::restore, place.soundBytes);
  } else if (apply(place, Change::restore) == 0 && isPlainBackup(place.backup)) {
    require(areSame(place.database, place.backup), "a restored database is the same as its backup");
  }
});

}  // namespace
}  // namespace orx::fuzz
