// RecordSource: the records of one of two inputs that are compared, in ascending order of their
// keys, each key once.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "orxkdb/keys/record_key.h"
#include "orxkdb/result.h"
#include "records/data_buffer.h"

namespace orx::orxkdb {

struct KeyedRecord {
  RecordKey key;  // that it is, or would be, stored under
  DataBuffer record;
};

// A line of a backup that no record can be made of.
struct UnreadableLine {
  std::uint64_t line = 0;
  std::string text;  // why
};

struct SourceCounts {
  std::uint64_t records = 0;     // that next() gave
  std::uint64_t repeated = 0;    // left out, because an earlier one has their key
  std::uint64_t reduced = 0;     // that hold more than a backup carries, which was left out
  std::uint64_t unreadable = 0;  // lines
  std::vector<UnreadableLine> unreadableShown;
};

class RecordSource {
 public:
  virtual ~RecordSource() = default;

  // False, with `record` of no use, at the end and after a failure, which stays; result() tells
  // which. Of records with one key the first is given.
  [[nodiscard]] bool next(KeyedRecord& record);
  [[nodiscard]] const Result& result() const { return result_; }
  [[nodiscard]] const SourceCounts& counts() const { return counts_; }
  [[nodiscard]] const std::string& name() const { return name_; }
  [[nodiscard]] virtual bool isDatabase() const = 0;
  // About as many as next() will give.
  [[nodiscard]] virtual std::uint64_t expectedRecords() const = 0;

 protected:
  explicit RecordSource(std::string name) : name_(std::move(name)) {}

  // The next record in ascending order; next() leaves out what repeats a key, and takes one that is
  // below the key before for a sign that the file was changed. False at the end and after a
  // failure, which is in `result`.
  [[nodiscard]] virtual bool read(KeyedRecord& record, Result& result) = 0;
  [[nodiscard]] SourceCounts& counting() { return counts_; }

 private:
  std::string name_;
  Result result_;
  SourceCounts counts_;
  RecordKey last_;
};

// What of a database is compared.
enum class Content {
  whole,
  carried,  // what is left of it after a backup and a restore
};

// Opens an input. A file that is no database is read as a backup; `content` is for databases.
// `limit` unreadable lines are remembered, 0: all. After a failure `source` is of no use.
Result openSource(const std::string& name, Content content, std::size_t limit,
                  std::unique_ptr<RecordSource>& source);

}  // namespace orx::orxkdb
