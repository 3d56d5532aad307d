// Objects with any handles, numbers and texts, as a backup: what is planned, what is merged, what a
// restore and a rebuild make of them.
//
// A line of the input is a record: the parent's and the object's type and identifier, the number,
// the type, the model's type and identifier, and the second auxiliary value, a byte each; the rest
// is the text.
#include <string>

#include "records/backup_record.h"
#include "records/data_buffer.h"
#include "tests/fuzz/commands.h"
#include "tests/fuzz/fuzz_target.h"

namespace {

using namespace orx;

// Identifiers near both ends of their range.
CMConfigHandle readHandle(fuzz::Input& input) {
  const std::uint8_t type = input.byte();
  const std::uint8_t id = input.byte();
  if (type == 0 && id == 0) return {};
  const auto near = static_cast<std::uint32_t>(static_cast<std::int8_t>(id));
  return {static_cast<CMHandleType>(type), near};
}

std::string readObjects(fuzz::Input& input) {
  std::string lines;
  while (!input.isEmpty()) {
    std::string_view text = input.upTo('\n');
    fuzz::Input fields(static_cast<const std::uint8_t*>(static_cast<const void*>(text.data())),
                       text.size());
    DataBuffer record;
    record.setParentHandle(readHandle(fields));
    record.setObjectHandle(readHandle(fields));
    record.setRecn(fields.byte());
    record.setRecType(fields.byte());
    record.setModelHandle(readHandle(fields));
    record.setAuxValue2(fields.byte());
    record.setAttrText(fields.rest());
    lines.append(CMDatabaseBackupRecord(record).text()).append("\n");
  }
  return lines;
}

void checkMerge(const fuzz::Workplace& place, std::string_view before) {
  const bool planned = fuzz::planSaysYes(place);
  const int merged = fuzz::changeDatabase(place, fuzz::Change::merge, before);
  fuzz::require(planned == (merged == 0), "a merge does what its plan says");
}

void checkRestore(const fuzz::Workplace& place, std::size_t command) {
  if (fuzz::restore(place) != 0) return;
  fuzz::require(fuzz::areSame(place.database, place.backup), "a restore brings the backup back");
  const auto wording = command % 2 == 0 ? fuzz::Wording::json : fuzz::Wording::text;
  (void)fuzz::readDatabase(place, command % fuzz::readingCommands(), wording);
}

void checkRebuild(const fuzz::Workplace& place) {
  if (fuzz::restore(place) != 0) return;
  const bool isSound = fuzz::hasSoundTexts(place.database);
  const int once = fuzz::rebuild(place);
  fuzz::writeFile(place.sound, fuzz::readFile(place.database));
  if (isSound && once == 0 && fuzz::rebuild(place) == 0) {
    fuzz::require(fuzz::areSame(place.database, place.sound), "a second rebuild changes nothing");
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const fuzz::Scratch scratch;
  static const fuzz::Workplace place{scratch};
  static const std::string sound = fuzz::soundDatabase(scratch);
  fuzz::Input input(data, size);
  const std::uint8_t choice = input.byte();
  place.fill(readObjects(input), sound);
  switch (choice % 3) {
    case 0:
      checkMerge(place, sound);
      break;
    case 1:
      checkRestore(place, choice / 3);
      break;
    default:
      checkRebuild(place);
  }
  return 0;
}
