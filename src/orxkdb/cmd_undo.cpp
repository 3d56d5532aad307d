#include "orxkdb/cmd_undo.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <memory>
#include <nlohmann/json.hpp>

#include "orxkdb/input/database_reader.h"
#include "orxkdb/output/json_document.h"
#include "orxkdb/output/output.h"
#include "platform/kdb_files.h"
#include "terminal/file_words.h"

namespace orx::orxkdb {

namespace {

constexpr auto notFound = static_cast<std::int32_t>(kdb::Reason::notFound);
constexpr auto wrongFormat = static_cast<std::int32_t>(kdb::Reason::format);

// It is no database, cut, or damaged further in.
Result previousFailure(const std::string& previous) {
  DatabaseReader reader;
  if (!reader.open(previous).ok()) {
    return fail(exitNotOpened, "the previous generation is cut or no database",
                absolutePath(previous), "nothing can be undone; the database is as it was");
  }
  return fail(exitNotAsExpected, "the previous generation is damaged", absolutePath(previous),
              "see what can be read with \"orxkdb stat " + shellWord(previous) +
                  "\"; nothing was changed, the database is as it was");
}

// The database itself or its previous generation may be what is missing or damaged.
Result undoFailure(const std::string& name, const kdb::kdbStatus& status) {
  struct stat file {};
  const bool exists = ::stat(name.c_str(), &file) == 0;
  const std::string previous = kdb::previousName(name);
  if (status.reason == notFound && exists) {
    return fail(exitNotOpened, "the database has no previous generation", absolutePath(previous),
                "nothing can be undone; the database is as it was");
  }
  DatabaseReader current;
  const bool isOfPrevious = status.reason == wrongFormat && current.open(name).ok();
  struct stat link {};
  if (isOfPrevious && ::lstat(previous.c_str(), &link) == 0 && S_ISLNK(link.st_mode)) {
    return fail(exitNotOpened, "the previous generation is a symbolic link", absolutePath(previous),
                "put the file itself there, \"ls -l " + shellWord(previous) +
                    "\" shows where it is; nothing was changed, the database is as it was");
  }
  if (isOfPrevious) return previousFailure(previous);
  const bool hidesPrevious =
      ::access(name.c_str(), R_OK) == 0 && ::access(previous.c_str(), R_OK) != 0 && errno == EACCES;
  return openFailure(hidesPrevious ? previous : name, status);
}

nlohmann::ordered_json jsonOf(const std::string& name) {
  return jsonDocument("undo", {{"database", name}, {"previous", kdb::previousName(name)}});
}

std::string textOf(const std::string& name) {
  return name + ": back to its previous generation; what it was until now is kept as " +
         kdb::previousName(name) + ", and another \"orxkdb undo " + shellWord(name) +
         "\" takes this back";
}

}  // namespace

Result undo(const UndoOptions& options) {
  const std::string& name = options.database;
  kdb::kdbStatus status;
  if (kdb::exchangeWithPrevious(name.c_str(), status) != 0) return undoFailure(name, status);
  return tellOutcome(options.json, jsonOf(name), textOf(name));
}

void addUndo(CommandLine& line) {
  auto options = std::make_shared<UndoOptions>();
  Command command(line, "undo",
                  "Take the last change of a database back, whichever program made it",
                  [options] { return undo(*options); });
  command.argument("DB", options->database, "Database to change");
  command.json(options->json);
  command.footer(
      "Every run that changes a database keeps what it was as DB.orx-previous. undo exchanges the\n"
      "two; a second undo exchanges them again. Only one generation is kept.\n\n"
      "Examples:\n"
      "  orxkdb undo rorxdata\n"
      "  orxkdb undo --json rorxdata");
}

}  // namespace orx::orxkdb
