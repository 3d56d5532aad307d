// The records of a database as they are stored, in one pass.
#pragma once

#include "orxkdb/diff/record_source.h"
#include "orxkdb/input/database_reader.h"
#include "platform/kdb.h"

namespace orx::orxkdb {

class DatabaseSource final : public RecordSource {
 public:
  explicit DatabaseSource(std::string name) : RecordSource(std::move(name)) {}

  // The first call.
  Result open() { return reader_.open(name()); }
  [[nodiscard]] bool isDatabase() const override { return true; }
  [[nodiscard]] std::uint64_t expectedRecords() const override {
    return kdb::recordsWhenOpened(reader_.handle());
  }

 protected:
  [[nodiscard]] bool read(KeyedRecord& record, Result& result) override;

 private:
  DatabaseReader reader_;
};

}  // namespace orx::orxkdb
