// A database file with bytes changed or cut off, handed to one command.
//
//   1 byte   the command; the highest bit asks for JSON
//   4 bytes  length of the file, when it is shorter than the database is
//   changes  page (1), offset in the page (2), how many (1), and that many bytes
#include <algorithm>
#include <string>

#include "tests/fuzz/commands.h"
#include "tests/fuzz/fuzz_target.h"

namespace orx::fuzz {
namespace {

constexpr std::size_t pageSize = 4096;

void changeBytes(std::string& bytes, Input& input) {
  const std::size_t pages = bytes.size() / pageSize;
  const std::size_t page = input.byte() % pages;
  const std::size_t low = input.byte();
  const std::size_t offset = (low | std::size_t{input.byte()} << 8) % pageSize;
  const std::string_view piece = input.take(1 + input.byte() % 16);
  const std::size_t start = page * pageSize + offset;
  const std::size_t count = std::min(piece.size(), bytes.size() - start);
  bytes.replace(start, count, piece.substr(0, count));
}

std::string changed(std::string bytes, Input& input) {
  const std::size_t length = input.number();
  while (!input.isEmpty()) changeBytes(bytes, input);
  if (length < bytes.size()) bytes.resize(length);
  return bytes;
}

const Registration target("database", [](Input& input) {
  static const Workplace place;
  const std::size_t first = input.byte();
  const auto wording = first < 128 ? Wording::text : Wording::json;
  handOver(place, changed(place.soundBytes, input), first % 128, wording);
});

}  // namespace
}  // namespace orx::fuzz
