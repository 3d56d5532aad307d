#include "orxkdb/cmd_load.h"

#include <memory>
#include <nlohmann/json.hpp>
#include <utility>

#include "orxkdb/dump/dump_reader.h"
#include "orxkdb/input/database_reader.h"
#include "orxkdb/output/json_document.h"
#include "orxkdb/output/new_database.h"
#include "orxkdb/output/output.h"
#include "orxkdb/standard_stream.h"
#include "platform/kdb.h"
#include "platform/kdb_files.h"
#include "platform/run_progress.h"
#include "records/record_calls.h"

namespace orx::orxkdb {

namespace {

// The database that is filled; unless it is published it stays as it was.
class LoadedDatabase {
 public:
  LoadedDatabase() = default;
  LoadedDatabase(const LoadedDatabase&) = delete;
  LoadedDatabase& operator=(const LoadedDatabase&) = delete;
  ~LoadedDatabase() { (void)kdb::AbandonDatabase(handle_); }

  Result open(const LoadOptions& options) {
    name_ = options.database;
    if (!options.replace) return openNew(name_, handle_);
    const kdb::kdbStatus status = openDatabase(name_, kdb::openForUpdate, handle_);
    return status.returnCode == 0 ? deleteAll() : openFailure(name_, status);
  }

  Result add(const DataBuffer& record, const DumpReader& dump) {
    return addRecord(handle_, record) == 0 ? Result()
                                           : lastFailure(name_, handle_, " at " + dump.place());
  }

  [[nodiscard]] const std::string& name() const { return name_; }

  Result publish() {
    kdb::kdbStatus status;
    return kdb::CloseDatabase(handle_, status) == 0 ? Result() : closeFailure(name_, status);
  }

 private:
  Result deleteAll() {
    runProgress().enter("deleting", kdb::recordsWhenOpened(handle_));
    DataBuffer record;
    kdb::kdbHandle scan;
    std::int32_t code = startUpdate(handle_, scan);
    while (code == 0) code = deleteNext(scan, record);
    return isEndOfRecords(code) ? Result() : lastFailure(name_, handle_);
  }

  static std::int32_t deleteNext(kdb::kdbHandle scan, DataBuffer& record) {
    kdb::kdbHandle held;
    const std::int32_t code = readNextForUpdate(scan, record, held);
    runProgress().countRecord();
    return code == 0 ? kdb::DeleteHeldRecord(held) : code;
  }

  std::string name_;
  kdb::kdbHandle handle_;
};

// A disk that fails says nothing of the database.
Result withState(Result ofDump, const std::string& database) {
  if (ofDump.code == exitFailed) ofDump.addHint(unchangedState(database));
  return ofDump;
}

Result addAll(DumpReader& dump, LoadedDatabase& database) {
  DataBuffer record;
  while (dump.next(record)) {
    if (Result result = database.add(record, dump); !result.ok()) return result;
    runProgress().countRecord();
  }
  return withState(dump.result(), database.name());
}

// Reads back what was published.
Result compareCount(const std::string& database, std::uint64_t loaded) {
  DatabaseReader reader;
  if (Result result = reader.open(database); !result.ok()) return result;
  Result read = reader.forEach([](const DataBuffer&) { return Result(); });
  if (!read.ok()) return read;
  if (reader.count() == loaded) return {};
  return fail(exitFailed, "the database does not hold the records of the dump",
              database + " (" + std::to_string(reader.count()) + " of " + std::to_string(loaded) +
                  " records)",
              "look into the system's log and load it again");
}

nlohmann::ordered_json jsonOf(const LoadOptions& options, std::uint64_t records) {
  return jsonDocument("load", {{"database", options.database},
                               {"input", options.file},
                               {"records", records},
                               {"replaced", options.replace}});
}

std::string textOf(const LoadOptions& options, std::uint64_t records) {
  return options.database + ": " + std::to_string(records) + " records loaded";
}

}  // namespace

Result load(const LoadOptions& options) {
  if (options.file != standardStream &&
      kdb::generationOf(options.file, options.database) != kdb::Generation::none) {
    return fail(exitNotAsExpected, "the dump has a name that belongs to the database", options.file,
                "give it another name; nothing is changed");
  }
  DumpReader dump;
  if (Result result = dump.open(options.file); !result.ok()) return result;
  if (Result result = dump.readHeader(); !result.ok()) {
    return withState(std::move(result), options.database);
  }
  LoadedDatabase database;
  if (Result result = database.open(options); !result.ok()) return result;
  runProgress().enterFile("adding", options.file);
  if (Result result = addAll(dump, database); !result.ok()) return result;
  if (Result result = database.publish(); !result.ok()) return result;
  if (Result result = compareCount(options.database, dump.count()); !result.ok()) return result;
  return tellOutcome(options.json, jsonOf(options, dump.count()), textOf(options, dump.count()));
}

void addLoad(CommandLine& line) {
  auto options = std::make_shared<LoadOptions>();
  Command command(line, "load", "Make a database from a dump, or replace the records of one",
                  [options] { return load(*options); });
  command.argument("DB", options->database, "Database to make, or to replace with --replace");
  command.optionalArgument("FILE", options->file,
                           "Dump to read; \"-\" or nothing is standard input");
  command.flag("--replace", options->replace,
               "Replace all records of DB, which must exist; \"orxkdb undo\" takes it back");
  command.json(options->json);
  command.footer(
      "Reads what \"orxkdb dump\", db5.3_dump and mdb_dump write, without their option -p, also\n"
      "compressed with gzip, zstd or xz: the first bytes tell, not the name. Every key and record\n"
      "is checked; a fault is named as FILE:LINE, and then nothing is loaded.\n\n"
      "Examples:\n"
      "  orxkdb load rorxdata rorxdata.dump\n"
      "  orxkdb load --replace rorxdata rorxdata.dump\n"
      "  orxkdb load rorxdata rorxdata.dump.gz\n"
      "  orxkdb load --json rorxdata < rorxdata.dump");
}

}  // namespace orx::orxkdb
