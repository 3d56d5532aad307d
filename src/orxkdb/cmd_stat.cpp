#include "orxkdb/cmd_stat.h"

#include <sys/stat.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <memory>
#include <nlohmann/json.hpp>

#include "orxkdb/input/database_reader.h"
#include "orxkdb/output/json_document.h"
#include "orxkdb/output/output.h"

namespace orx::orxkdb {

namespace {

// Counts records as they come in database order, where those of an object stand together.
class Counter {
 public:
  explicit Counter(DatabaseStatistics& statistics) : statistics_(statistics) {}

  void count(const DataBuffer& record) {
    ++statistics_.records;
    ++statistics_.recordsOfType[record.recType()];
    statistics_.textBytes += record.text().size();
    countChain(record);
  }

 private:
  void countChain(const DataBuffer& record) {
    const bool continues =
        chain_ > 0 && record.parentBytes() == parent_ && record.objectBytes() == object_;
    parent_ = record.parentBytes();
    object_ = record.objectBytes();
    chain_ = continues ? chain_ + 1 : 1;
    if (chain_ == 1) ++statistics_.objects;
    if (chain_ == 2) ++statistics_.chains;
    statistics_.longestChain = std::max(statistics_.longestChain, chain_);
  }

  DatabaseStatistics& statistics_;
  HandleBytes parent_{};
  HandleBytes object_{};
  std::uint64_t chain_ = 0;  // records of the current object so far
};

Result fileSize(const std::string& name, std::uint64_t& size) {
  struct stat file {};
  if (::stat(name.c_str(), &file) != 0) {
    return fileFailure(exitFailed, "the size of the database cannot be read", name, errno);
  }
  size = static_cast<std::uint64_t>(file.st_size);
  return {};
}

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

Result gatherStatistics(const std::string& database, DatabaseStatistics& statistics) {
  DatabaseReader reader;
  if (Result result = reader.open(database); !result.ok()) return result;
  Counter counter(statistics);
  Result read = reader.forEach([&](const DataBuffer& record) {
    counter.count(record);
    return Result();
  });
  return read.ok() ? fileSize(database, statistics.fileBytes) : read;
}

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
