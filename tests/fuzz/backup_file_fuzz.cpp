// A whole backup file of any bytes: line by line, to the commands that read one, and restored.
#include <cstring>
#include <string>

#include "platform/compression/compression.h"
#include "platform/kdb.h"
#include "records/backup_reader.h"
#include "tests/fuzz/commands.h"
#include "tests/fuzz/fuzz_target.h"

namespace {

using namespace orx;

// Lines that hold no zero byte and are not too long are those between the line feeds.
void checkLines(const std::string& file, std::string_view text) {
  BackupReader reader;
  fuzz::require(reader.open(file.c_str()), "a backup file can be opened");
  BackupLine line;
  std::uint64_t number = 0;
  while (!text.empty()) {
    const std::size_t end = std::min(text.find('\n'), text.size());
    if (end >= BackupLine::longest || text.substr(0, end).find('\0') != std::string_view::npos) {
      break;
    }
    std::string_view expected = text.substr(0, end);
    if (end < text.size() && expected.ends_with('\r')) expected.remove_suffix(1);
    if (end == text.size() && expected.ends_with('\r')) break;
    fuzz::require(reader.next(line) == ReadOutcome::line, "every line is read");
    fuzz::require(line.text() == expected, "a line comes without its end");
    fuzz::require(reader.lineNumber() == ++number, "lines are counted");
    text.remove_prefix(std::min(end + 1, text.size()));
  }
  std::size_t more = 0;
  while (reader.next(line) == ReadOutcome::line) ++more;
  fuzz::require(more <= text.size(), "reading ends");
  fuzz::require(!text.empty() || more == 0, "it ends with the text");
}

// A comparison unpacks a compressed file, and reads a database as one; a restore does neither.
bool isPlainBackup(const std::string& file) {
  return compressionOfFile(file) == Compression::none && !kdb::looksLikeDatabase(file.c_str());
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const fuzz::Scratch scratch;
  static const fuzz::Workplace place{scratch};
  static const std::string sound = fuzz::soundDatabase(scratch);
  fuzz::Input input(data, size);
  const std::size_t first = input.byte();
  const auto wording = first < 128 ? fuzz::Wording::text : fuzz::Wording::json;
  const std::string text(input.rest());
  place.fill(text, sound);
  checkLines(place.backup, text);
  const std::size_t command = first % 128 % (fuzz::backupCommands() + 3);
  if (command < fuzz::backupCommands()) {
    (void)fuzz::readBackup(place, command, wording);
  } else if (command == fuzz::backupCommands()) {
    (void)fuzz::changeDatabase(place, fuzz::Change::merge, sound);
  } else if (command == fuzz::backupCommands() + 1) {
    (void)fuzz::changeDatabase(place, fuzz::Change::restore, sound);
  } else if (fuzz::restore(place) == 0 && isPlainBackup(place.backup)) {
    fuzz::require(fuzz::areSame(place.database, place.backup),
                  "a restored database is the same as its backup");
  }
  return 0;
}
