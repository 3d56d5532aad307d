#include "orxkdb/cmd_dump.h"

#include <CLI/CLI.hpp>
#include <memory>

#include "orxkdb/database_reader.h"
#include "orxkdb/dump_format.h"
#include "orxkdb/output.h"

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

}  // namespace

Result dump(const DumpOptions& options) {
  DatabaseReader reader;
  if (Result result = reader.open(options.database); !result.ok()) return result;
  Output output;
  if (Result result = output.open(options.file, options.database); !result.ok()) return result;
  if (Result result = writeDump(reader, output); !result.ok()) return result;
  if (!output.isStandard()) {
    say(options.file + ": " + std::to_string(reader.count()) + " records dumped\n");
  }
  return {};
}

void addDump(CLI::App& program, Action& action) {
  auto options = std::make_shared<DumpOptions>();
  CLI::App* const command = program.add_subcommand(
      "dump", "Write every record as text that load and the database tools read");
  command->add_option("DB", options->database, "Database to read; it is not changed")
      ->required()
      ->type_name("");
  command
      ->add_option("FILE", options->file,
                   "File to write, whole or not at all; \"-\" or nothing is standard output")
      ->type_name("");
  command->footer(
      "The text holds the key and the record in hexadecimal, in database order. db5.3_load reads\n"
      "it as it is. mdb_load needs to know the size of its database, in bytes, in a line of the\n"
      "header that has to be added for it: mapsize=1073741824.\n\n"
      "Examples:\n"
      "  orxkdb dump rorxdata rorxdata.dump\n"
      "  orxkdb dump rorxdata | gzip > rorxdata.dump.gz\n"
      "  orxkdb dump rorxdata | db5.3_load copy.db\n"
      "  orxkdb dump rorxdata | sed '3a mapsize=1073741824' | mdb_load -n copy.mdb");
  command->callback([options, &action] { action = [options] { return dump(*options); }; });
}

}  // namespace orx::orxkdb
