#include "orxkdb/cmd_dump.h"

#include <memory>
#include <nlohmann/json.hpp>

#include "orxkdb/dump/dump_format.h"
#include "orxkdb/input/database_reader.h"
#include "orxkdb/output/json_document.h"
#include "orxkdb/output/output.h"

namespace orx::orxkdb {

namespace {

Result writeDump(DatabaseReader& reader, Output& output) {
  if (Result result = output.write(dump_format::header); !result.ok()) return result;
  dump_format::Entry entry;
  Result written = reader.forEach([&](const DataBuffer& record) {
    dump_format::writeEntry(record, entry);
    return output.write({entry.data(), entry.size()});
  });
  if (!written.ok()) return written;
  if (Result result = output.write(dump_format::dataEnd); !result.ok()) return result;
  if (Result result = output.write("\n"); !result.ok()) return result;
  return output.publish();
}

nlohmann::ordered_json jsonOf(const DumpOptions& options, std::uint64_t records) {
  return jsonDocument(
      "dump", {{"database", options.database}, {"file", options.file}, {"records", records}});
}

std::string textOf(const DumpOptions& options, std::uint64_t records) {
  return options.file + ": " + std::to_string(records) + " records dumped";
}

}  // namespace

Result dump(const DumpOptions& options) {
  if (options.json && options.file == standardStream) return jsonNeedsFile("dump");
  DatabaseReader reader;
  if (Result result = reader.open(options.database); !result.ok()) return result;
  Output output;
  if (Result result = output.open(options.file, options.database); !result.ok()) return result;
  if (Result result = writeDump(reader, output); !result.ok()) return result;
  if (output.isStandard()) return {};
  return tellOutcome(options.json, jsonOf(options, reader.count()),
                     textOf(options, reader.count()));
}

void addDump(CommandLine& line) {
  auto options = std::make_shared<DumpOptions>();
  Command command(line, "dump", "Write every record as text that load and the database tools read",
                  [options] { return dump(*options); });
  command.argument("DB", options->database, "Database to read; it is not changed");
  command.optionalArgument(
      "FILE", options->file,
      "File to write, whole or not at all; \"-\" or nothing is standard output");
  command.json(options->json);
  command.footer(
      "The text holds the key and the record in hexadecimal, in database order. db5.3_load reads\n"
      "it as it is. mdb_load needs to know the size of its database, in bytes, in a line of the\n"
      "header that has to be added for it: mapsize=1073741824.\n\n"
      "Examples:\n"
      "  orxkdb dump rorxdata rorxdata.dump\n"
      "  orxkdb dump --json rorxdata rorxdata.dump\n"
      "  orxkdb dump rorxdata | gzip > rorxdata.dump.gz\n"
      "  orxkdb dump rorxdata | db5.3_load copy.db\n"
      "  orxkdb dump rorxdata | sed '3a mapsize=1073741824' | mdb_load -n copy.mdb");
}

}  // namespace orx::orxkdb
