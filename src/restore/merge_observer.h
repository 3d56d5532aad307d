// MergeObserver: hears what a merge reads, decides and makes, while it happens. Every call does
// nothing here; whoever wants to print or count overrides some. Arguments live no longer than the
// call. Calls come from the thread that drives the merge, which for those about objects may be
// another than for the others (restore/merged_records.h).
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

#include "restore/record_list_observer.h"

namespace orx {

class CMAttribute;
class CMConfigHandle;
class CMSymParmSet;
struct BackupLine;
struct MergeTables;

class MergeObserver : public RecordListObserver {
 public:
  // A record of the database, and whether it belongs to the system record.
  virtual void currentRecord(const DataBuffer& /*record*/, bool /*isOfSystemRecord*/) {}

  // The system parameters and the attribute that holds them, null when there is none: of the
  // database, of the backup, and of the database once the backup's are merged in.
  virtual void currentParameters(const CMSymParmSet& /*parameters*/,
                                 const CMAttribute* /*attribute*/) {}
  virtual void alienParameters(const CMSymParmSet& /*parameters*/,
                               const CMAttribute* /*attribute*/) {}
  virtual void mergedParameters(const CMSymParmSet& /*parameters*/,
                                const CMAttribute& /*attribute*/) {}

  // A counter of the database that is a number; `handler` is its index in handlerTypes.
  virtual void currentCounter(std::size_t /*handler*/, std::uint32_t /*counter*/) {}
  // The tables when all counters are read; they have their final `nextId` when the whole backup is.
  virtual void tablesReady(const MergeTables& /*tables*/) {}
  virtual void finalCounters(const MergeTables& /*tables*/) {}

  // A line of the backup and the record, already renumbered, that it was turned into.
  virtual void backupRecord(const BackupLine& /*line*/, const DataBuffer& /*record*/) {}
  // A line that is left out, and its record type, which is not merged.
  virtual void skippedRecord(const BackupLine& /*line*/, std::int32_t /*recType*/) {}

  // Of every object: each handle-valued attribute that is looked for, that it is there, each of its
  // values, renumbered or not; then the object when it is ready, its head record and its attribute
  // text.
  virtual void searchedAttribute(int /*attrId*/) {}
  virtual void foundAttribute(int /*attrId*/) {}
  virtual void renumberedValue(const CMConfigHandle& /*old*/, const CMConfigHandle& /*moved*/) {}
  virtual void mergedObject(const DataBuffer& /*head*/, const std::string& /*text*/) {}
  // How many records a list still holds in the end.
  virtual void remainingRecords(std::size_t /*list*/, std::size_t /*records*/) {}
};

}  // namespace orx
