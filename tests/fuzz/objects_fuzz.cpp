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

namespace orx::fuzz {
namespace {

// Identifiers near both ends of their range.
CMConfigHandle readHandle(Input& input) {
  const std::uint8_t type = input.byte();
  const std::uint8_t id = input.byte();
  if (type == 0 && id == 0) return {};
  const auto near = static_cast<std::uint32_t>(static_cast<std::int8_t>(id));
  return {static_cast<CMHandleType>(type), near};
}

std::string readObjects(Input& input) {
  std::string lines;
  while (!input.isEmpty()) {
    Input fields(input.upTo('\n'));
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

void checkMerge(const Workplace& place) {
  const bool planned = planSaysYes(place);
  const int merged = changeDatabase(place, Change::merge, place.soundBytes);
  require(planned == (merged == 0), "a merge does what its plan says");
}

void checkRestore(const Workplace& place, std::size_t command) {
  require(areSame(place.database, place.backup), "a restore brings the backup back");
  const auto wording = command % 2 == 0 ? Wording::json : Wording::text;
  readDatabase(place, command, wording);
}

void checkRebuild(const Workplace& place) {
  const bool isSound = hasSoundTexts(place.database);
  const int once = apply(place, Change::rebuild);
  std::filesystem::copy_file(place.database, place.output);
  if (isSound && once == 0 && apply(place, Change::rebuild) == 0) {
    require(areSame(place.database, place.output), "a second rebuild changes nothing");
  }
}

const Registration target("objects", [](Input& input) {
  static const Workplace place;
  const std::uint8_t choice = input.byte();
  place.fill(place.soundBytes, readObjects(input));
  if (choice % 3 == 0) return checkMerge(place);
  if (apply(place, Change::restore) != 0) return;
  choice % 3 == 1 ? checkRestore(place, choice / 3) : checkRebuild(place);
});

}  // namespace
}  // namespace orx::fuzz
