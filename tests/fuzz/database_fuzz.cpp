// A database file with bytes changed or cut off, handed to one command.
//
//   1 byte   the command; the highest bit asks for JSON
//   4 bytes  length of the file, when it is shorter than the database is
//   changes  page (1), offset in the page (2), how many (1), and that many bytes
#include <algorithm>
#include <string>

#include "tests/fuzz/commands.h"
#include "tests/fuzz/fuzz_target.h"

namespace {

using namespace orx;

constexpr std::size_t pageSize = 4096;

void changeBytes(std::string& bytes, fuzz::Input& input) {
  const std::size_t pages = bytes.size() / pageSize;
  const std::size_t page = input.byte() % pages;
  const std::size_t low = input.byte();
  const std::size_t offset = (low | std::size_t{input.byte()} << 8) % pageSize;
  const std::string_view piece = input.take(1 + input.byte() % 16);
  const std::size_t start = page * pageSize + offset;
  const std::size_t count = std::min(piece.size(), bytes.size() - start);
  bytes.replace(start, count, piece.substr(0, count));
}

std::string changed(std::string bytes, fuzz::Input& input) {
  const std::size_t length = input.number();
  while (!input.isEmpty()) changeBytes(bytes, input);
  if (length < bytes.size()) bytes.resize(length);
  return bytes;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const fuzz::Scratch scratch;
  static const fuzz::Workplace place{scratch};
  static const std::string sound = fuzz::soundDatabase(scratch);
  static const std::string backup = fuzz::soundBackup(2);
  fuzz::Input input(data, size);
  const std::size_t first = input.byte();
  const auto wording = first < 128 ? fuzz::Wording::text : fuzz::Wording::json;
  const std::size_t command = first % 128 % (fuzz::readingCommands() + fuzz::changes);
  const std::string bytes = changed(sound, input);
  scratch.empty();
  fuzz::writeFile(place.database, bytes);
  fuzz::writeFile(place.sound, sound);
  fuzz::writeFile(place.backup, backup);
  if (command < fuzz::readingCommands()) {
    (void)fuzz::readDatabase(place, command, wording);
  } else {
    const auto change = static_cast<fuzz::Change>(command - fuzz::readingCommands());
    (void)fuzz::changeDatabase(place, change, bytes);
  }
  return 0;
}
