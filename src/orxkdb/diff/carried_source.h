// The records of a database as a backup and a restore would bring them back.
//
// A handle comes back as its exported form, so a record may get another place in the order than it
// has in the database. Those records, seldom more than a few, are collected by a pass of their own
// and merged into the pass over all others.
#pragma once

#include <cstddef>
#include <vector>

#include "orxkdb/diff/record_source.h"
#include "orxkdb/input/database_reader.h"
#include "platform/kdb.h"

namespace orx::orxkdb {

// What a backup keeps of `record`: its handles in normal form, its numbers, and its text up to the
// first zero byte. A record that no line can carry (records/carry_check.h) keeps its numbers and
// text too, so it equals no record of a backup.
[[nodiscard]] DataBuffer carriedForm(const DataBuffer& record);

class CarriedSource final : public RecordSource {
 public:
  explicit CarriedSource(std::string name) : RecordSource(std::move(name)) {}

  // The first call; makes the pass that collects.
  Result open();
  [[nodiscard]] bool isDatabase() const override { return true; }
  [[nodiscard]] std::uint64_t expectedRecords() const override {
    return kdb::recordsWhenOpened(reader_.handle());
  }

 protected:
  [[nodiscard]] bool read(KeyedRecord& record, Result& result) override;

 private:
  struct Moved {
    RecordKey key;     // of the carried form
    RecordKey stored;  // which says what comes first of two records with one key
    DataBuffer record;
  };

  [[nodiscard]] bool keepsPlace(const DataBuffer& record) const;
  Result collectMoved();
  void readOrdinary();
  [[nodiscard]] bool movedIsNext() const;
  [[nodiscard]] DataBuffer carried(const DataBuffer& record);

  DatabaseReader reader_;
  std::vector<Moved> moved_;
  std::size_t nextMoved_ = 0;
  KeyedRecord ordinary_;  // the next record that keeps its place
  bool hasOrdinary_ = false;
};

}  // namespace orx::orxkdb
