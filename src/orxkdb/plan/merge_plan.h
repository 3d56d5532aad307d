// MergePlan: what a merge would do to a database, in numbers and names.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "orxkdb/keys/record_key.h"
#include "restore/exit_codes.h"
#include "restore/merge_types.h"

namespace orx::orxkdb {

// What the merge tries to add of one record type.
struct TypeTotals {
  std::uint64_t objects = 0;
  std::uint64_t records = 0;
  std::uint64_t refused = 0;  // of the records: those whose key is taken
};

enum class KeyTaken : std::uint8_t {
  inDatabase,
  twiceInBackup,
};

struct RefusedRecord {
  RecordKey key;  // that it was to get
  KeyTaken why = KeyTaken::inDatabase;
};

// Consecutive identifiers of the backup.
struct IdentifierRange {
  std::uint32_t first = 0;
  std::uint32_t last = 0;
};

// The identifiers that objects of one handle type have in the backup, ascending; each gets `shift`
// more, modulo 2^32. Within a range no sum passes 2^32.
struct TypeIdentifiers {
  std::uint8_t type = 0;
  bool isRenumbered = false;
  std::uint32_t shift = 0;  // 0 when not renumbered
  std::uint64_t count = 0;
  std::vector<IdentifierRange> ranges = {};
};

struct CounterChange {
  std::optional<std::uint32_t> before = {};  // none: the database has no number there
  std::uint32_t after = 0;
};

// A parameter of the database, of the backup, or of both, in which case the database's value stays.
struct ParameterPlan {
  std::string name;
  std::optional<std::string> ofDatabase = {};
  std::optional<std::string> ofBackup = {};
};

struct SystemRecordSize {
  std::uint64_t records = 0;
  std::uint64_t textBytes = 0;
};

struct MergePlan {
  std::uint64_t databaseRecords = 0;
  std::uint64_t backupRecords = 0;
  std::map<std::int32_t, std::uint64_t> leftOut;  // of these, by record type: types not merged
  std::uint64_t alienSystemRecords = 0;           // of these: the system record's

  std::map<std::int32_t, TypeTotals> types;  // by record type
  std::vector<RefusedRecord> refused;        // in key order, as many as are to be shown
  std::vector<TypeIdentifiers> identifiers;  // ascending by type

  std::array<CounterChange, handlerTypes.size()> counters;
  std::vector<ParameterPlan> parameters;  // the database's, then those that only the backup has
  bool hasAlienSystemRecord = false;
  bool mergesParameters = false;               // false: the database has no place for them
  std::vector<std::string> changedParameters;  // names of those that do not read back as written
  SystemRecordSize systemBefore;
  SystemRecordSize systemAfter;
  SystemRecordSize strays;        // read as part of the system record, have a parent, and stay
  std::uint64_t addedStrays = 0;  // objects to add that the next merge reads so
  std::uint64_t replaced = 0;     // records of others that have keys of systemAfter, and are lost

  [[nodiscard]] TypeTotals totals() const {
    TypeTotals sum;
    for (const auto& [type, count] : types) {
      sum.objects += count.objects;
      sum.records += count.records;
      sum.refused += count.refused;
    }
    return sum;
  }
  [[nodiscard]] std::uint64_t addedRecords() const {
    const TypeTotals sum = totals();
    return sum.records - sum.refused;
  }
  [[nodiscard]] bool succeeds() const { return totals().refused == 0; }
  // That the merge would end with.
  [[nodiscard]] int exitCode() const { return succeeds() ? orx::exitSuccess : orx::exitFailed; }
};

}  // namespace orx::orxkdb
