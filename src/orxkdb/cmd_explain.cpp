#include "orxkdb/cmd_explain.h"

#include <memory>
#include <nlohmann/json.hpp>

#include "orxkdb/explain/explained_line.h"
#include "orxkdb/explain/explained_object.h"
#include "orxkdb/output/json_document.h"
#include "orxkdb/output/output.h"

namespace orx::orxkdb {

namespace {

std::string textOf(const std::vector<ObjectRecords>& objects) {
  std::string text;
  for (const ObjectRecords& records : objects) {
    text.append(text.empty() ? "" : "\n").append(objectText(records));
  }
  return text;
}

nlohmann::ordered_json jsonOf(const std::string& database,
                              const std::vector<ObjectRecords>& objects) {
  nlohmann::ordered_json list = nlohmann::ordered_json::array();
  for (const ObjectRecords& records : objects) list.push_back(objectJson(records));
  return jsonDocument("explain", {{"database", database}, {"objects", list}});
}

Result explainObject(const ExplainOptions& options) {
  ObjectQuery query;
  if (Result result = readQuery(options.handle, query); !result.ok()) return result;
  std::vector<ObjectRecords> objects;
  if (Result result = findObjects(options.database, query, objects); !result.ok()) return result;
  if (objects.empty()) {
    return fail(exitNotAsExpected, "there is no object of this handle",
                options.database + " " + exportedForm(query.handle),
                "check the handle; the system record's is 0:0");
  }
  return writeStandardOutput(options.json ? jsonText(jsonOf(options.database, objects))
                                          : textOf(objects));
}

Result explainLine(const ExplainOptions& options) {
  LinePlace place;
  if (Result result = readLinePlace(*options.line, place); !result.ok()) return result;
  std::string line;
  if (Result result = findLine(place, line); !result.ok()) return result;
  if (!options.json) return writeStandardOutput(lineText(place, line));
  return writeStandardOutput(jsonText(jsonDocument("explain", lineJson(place, line))));
}

}  // namespace

Result explain(const ExplainOptions& options) {
  const bool hasObject = !options.database.empty() && !options.handle.empty();
  const bool hasLine = options.line.has_value();
  if (hasLine ? !options.database.empty() : !hasObject) {
    return fail(exitUsage, "either a database and a handle, or a line", "command line",
                "see \"orxkdb explain --help\"");
  }
  return hasLine ? explainLine(options) : explainObject(options);
}

void addExplain(CommandLine& line) {
  auto options = std::make_shared<ExplainOptions>();
  Command command(line, "explain", "Show an object of a database, or a backup line, in words",
                  [options] { return explain(*options); });
  command.optionalArgument("DB", options->database, "Database to read; it is not changed");
  command.optionalArgument(
      "HANDLE", options->handle,
      "Handle of the object, in exported form, as 16 hexadecimal digits or TYPE:ID");
  command.option("--line", options->line, "FILE:NUMBER", "Line of a backup instead");
  command.json(options->json);
  command.footer(
      "Shows the records of the object, what its handles say, and every attribute with its "
      "values.\n"
      "An object that occurs below several parents is shown for each. The handle of the system\n"
      "record is 0:0. The hexadecimal form asks for exactly these 8 bytes, the others for every\n"
      "object whose exported form is the same.\n\n"
      "Examples:\n"
      "  orxkdb explain rorxdata 2:17\n"
      "  orxkdb explain rorxdata '<1;1;2;0;0;0;17;>'\n"
      "  orxkdb explain --json rorxdata 1100000000000201\n"
      "  orxkdb explain --line RORXbackup.txt:120");
}

}  // namespace orx::orxkdb
