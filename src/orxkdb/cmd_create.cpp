#include "orxkdb/cmd_create.h"

#include <memory>
#include <nlohmann/json.hpp>

#include "messages/bundle_files.h"
#include "orxkdb/output/bundle_writer.h"
#include "orxkdb/output/json_document.h"
#include "orxkdb/output/new_database.h"
#include "orxkdb/output/output.h"
#include "platform/file.h"
#include "terminal/file_words.h"

namespace orx::orxkdb {

namespace {

Result createDatabase(const std::string& name) {
  kdb::kdbHandle database;
  if (Result result = openNew(name, database); !result.ok()) return result;
  kdb::kdbStatus status;
  return kdb::CloseDatabase(database, status) == 0 ? Result() : closeFailure(name, status);
}

nlohmann::ordered_json jsonOf(const std::string& database, const std::string& directory) {
  return jsonDocument("create", {{"database", database},
                                 {"messages", directory + "/" + bundleName},
                                 {"messageFiles", bundleFiles().size()}});
}

}  // namespace

Result create(const CreateOptions& options) {
  const std::string directory = directoryOf(options.database);
  if (Result result = checkBundlePlace(directory); !result.ok()) return result;
  if (Result result = createDatabase(options.database); !result.ok()) return result;
  if (Result result = putBundle(directory); !result.ok()) {
    result.addHint("the database is made, \"orxkdb messages " + shellWord(directory) +
                   "\" adds the rest");
    return result;
  }
  return tellOutcome(options.json, jsonOf(options.database, directory),
                     options.database + ": empty database made, messages beside it");
}

void addCreate(CommandLine& line) {
  auto options = std::make_shared<CreateOptions>();
  Command command(line, "create",
                  "Make an empty database, and the message files that orxrestore prints from",
                  [options] { return create(*options); });
  command.argument("DB", options->database, "Name of the new database; must not exist yet");
  command.json(options->json);
  command.footer(
      "The directory PRESTORE_restore with the messages goes beside the database.\n\n"
      "Examples:\n"
      "  orxkdb create rorxdata\n"
      "  orxkdb create /srv/tdv/rorxdata\n"
      "  orxkdb create --json rorxdata");
}

}  // namespace orx::orxkdb
