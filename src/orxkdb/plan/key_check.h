// KeyCheck: what the database would answer if records were added to it.
//
// The database is read once, beside the keys asked for; nothing is kept of either.
#pragma once

#include <cstdint>
#include <optional>

#include "orxkdb/input/database_reader.h"
#include "orxkdb/plan/merge_plan.h"

namespace orx::orxkdb {

class KeyCheck {
 public:
  // `database` is at its first record, outlives the check and is read by nobody else. Where it
  // cannot be read the rest of it counts as empty: its result() tells. The system record has been
  // rewritten as `systemRecords` records before anything is added: these are there, and those that
  // it had beyond them are gone.
  KeyCheck(DatabaseReader& database, std::uint64_t systemRecords);

  // Why a record cannot be added under `key`; none when it can. Objects come in ascending order,
  // each with the numbers 0, 1, 2, ...; an object may come again.
  [[nodiscard]] std::optional<KeyTaken> add(const RecordKey& key);

 private:
  [[nodiscard]] bool isStored(const RecordKey& key);
  void readNext();
  [[nodiscard]] bool isDropped() const;

  DatabaseReader& database_;
  std::uint64_t systemRecords_;
  DataBuffer record_;
  std::optional<RecordKey> stored_;   // of record_; none behind the last one
  std::optional<RecordKey> highest_;  // that was asked for
};

}  // namespace orx::orxkdb
