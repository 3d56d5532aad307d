#include "orxkdb/stat/database_statistics.h"

#include <sys/stat.h>

#include <algorithm>
#include <cerrno>

#include "orxkdb/input/database_reader.h"

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
    const bool continues = chain_ > 0 && record.isOfSameObject(last_);
    last_ = record;
    chain_ = continues ? chain_ + 1 : 1;
    if (chain_ == 1) ++statistics_.objects;
    if (chain_ == 2) ++statistics_.chains;
    statistics_.longestChain = std::max(statistics_.longestChain, chain_);
  }

  DatabaseStatistics& statistics_;
  DataBuffer last_;
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

}  // namespace orx::orxkdb
