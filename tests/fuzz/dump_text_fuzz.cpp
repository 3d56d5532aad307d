// The text of a dump: what the reader takes, it takes again as it is written.
#include <string>
#include <vector>

#include "orxkdb/dump/dump_reader.h"
#include "tests/fuzz/fuzz_target.h"

namespace orx::fuzz {
namespace {

namespace format = orxkdb::dump_format;

struct Dump {
  std::vector<DataBuffer> records;
  orxkdb::Result result;
};

Dump read(std::string_view text) {
  const MemoryFile file(text);
  orxkdb::DumpReader reader;
  Dump dump;
  dump.result = reader.open(file.path());
  if (dump.result.ok()) dump.result = reader.readHeader();
  if (!dump.result.ok()) return dump;
  DataBuffer record;
  while (reader.next(record)) dump.records.push_back(record);
  require(reader.count() == dump.records.size(), "the records are counted");
  dump.result = reader.result();
  return dump;
}

std::string write(const std::vector<DataBuffer>& records) {
  std::string text(format::header);
  for (const DataBuffer& record : records) {
    format::Entry entry;
    format::writeEntry(record, entry);
    text.append(entry.data(), entry.size());
  }
  return text.append(format::dataEnd).append("\n");
}

const Registration target("dump_text", [](Input& input) {
  const Dump dump = read(input.rest());
  if (!dump.result.ok()) {
    require(dump.result.text.find("/proc/self/fd/") != std::string::npos, "a fault tells the file");
  }
  for (std::size_t i = 1; i < dump.records.size(); ++i) {
    require(format::storedKey(dump.records[i - 1]) < format::storedKey(dump.records[i]),
            "the records come in database order");
  }
  const Dump again = read(write(dump.records));
  require(again.result.ok() && again.records == dump.records, "what was read is written so");
});

}  // namespace
}  // namespace orx::fuzz
