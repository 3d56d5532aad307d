// The text of a dump: what the reader takes, it takes again as it is written.
#include <string>
#include <vector>

#include "orxkdb/dump/dump_reader.h"
#include "tests/fuzz/fuzz_files.h"
#include "tests/fuzz/fuzz_target.h"

namespace {

using namespace orx;
using orxkdb::DumpReader;

struct Dump {
  std::vector<DataBuffer> records;
  orxkdb::Result result;
};

Dump read(std::string_view text) {
  const fuzz::MemoryFile file(text);
  DumpReader reader;
  Dump dump;
  dump.result = reader.open(file.path());
  if (dump.result.ok()) dump.result = reader.readHeader();
  if (!dump.result.ok()) return dump;
  DataBuffer record;
  while (reader.next(record)) dump.records.push_back(record);
  fuzz::require(reader.count() == dump.records.size(), "the records are counted");
  dump.result = reader.result();
  return dump;
}

std::string write(const std::vector<DataBuffer>& records) {
  std::string text(orxkdb::dump_format::header);
  for (const DataBuffer& record : records) {
    orxkdb::dump_format::Entry entry;
    orxkdb::dump_format::writeEntry(record, entry);
    text.append(entry.data(), entry.size());
  }
  return text.append(orxkdb::dump_format::dataEnd).append("\n");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  fuzz::Input input(data, size);
  const Dump dump = read(input.rest());
  if (!dump.result.ok()) {
    fuzz::require(dump.result.text.find("/proc/self/fd/") != std::string::npos,
                  "a fault tells the file");
  }
  for (std::size_t i = 1; i < dump.records.size(); ++i) {
    fuzz::require(orxkdb::dump_format::storedKey(dump.records[i - 1]) <
                      orxkdb::dump_format::storedKey(dump.records[i]),
                  "the records come in database order");
  }
  const Dump again = read(write(dump.records));
  fuzz::require(again.result.ok() && again.records == dump.records, "what was read is written so");
  return 0;
}
