#include "orxkdb/cmd_stat.h"

#include <array>
#include <memory>
#include <nlohmann/json.hpp>

#include "orxkdb/output/json_document.h"
#include "orxkdb/output/output.h"
#include "orxkdb/stat/database_statistics.h"

namespace orx::orxkdb {

namespace {

std::string textOf(const DatabaseStatistics& statistics) {
  const std::array<std::pair<const char*, std::uint64_t>, 6> lines{{
      {"records", statistics.records},
      {"objects", statistics.objects},
      {"chains (objects of more than one record)", statistics.chains},
      {"records of the longest chain", statistics.longestChain},
      {"bytes of attribute text", statistics.textBytes},
      {"bytes of the file", statistics.fileBytes},
  }};
  std::string text;
  for (const auto& [name, number] : lines) {
    text.append(name).append(": ").append(std::to_string(number)).append("\n");
  }
  for (const auto& [type, number] : statistics.recordsOfType) {
    text.append("records of type ").append(std::to_string(type)).append(": ");
    text.append(std::to_string(number)).append("\n");
  }
  return text;
}

std::string jsonOf(const std::string& database, const DatabaseStatistics& statistics) {
  nlohmann::ordered_json types = nlohmann::ordered_json::array();
  for (const auto& [type, number] : statistics.recordsOfType) {
    types.push_back({{"recType", type}, {"records", number}});
  }
  const nlohmann::ordered_json members{
      {"database", database},
      {"records", statistics.records},
      {"objects", statistics.objects},
      {"chains", statistics.chains},
      {"longestChain", statistics.longestChain},
      {"textBytes", statistics.textBytes},
      {"fileBytes", statistics.fileBytes},
      {"recordTypes", types},
  };
  return jsonText(jsonDocument("stat", members));
}

}  // namespace

Result stat(const StatOptions& options) {
  DatabaseStatistics statistics;
  if (Result result = gatherStatistics(options.database, statistics); !result.ok()) return result;
  return writeStandardOutput(options.json ? jsonOf(options.database, statistics)
                                          : textOf(statistics));
}

void addStat(CommandLine& line) {
  auto options = std::make_shared<StatOptions>();
  Command command(line, "stat", "Count the records and objects of a database",
                  [options] { return stat(*options); });
  command.argument("DB", options->database, "Database to read; it is not changed");
  command.json(options->json);
  command.footer(
      "Reads every record, so it also shows whether the database can be read to its end.\n\n"
      "Examples:\n"
      "  orxkdb stat rorxdata\n"
      "  orxkdb stat --json rorxdata");
}

}  // namespace orx::orxkdb
