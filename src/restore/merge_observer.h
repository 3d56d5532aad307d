// MergeObserver: hears what a merge reads, decides and makes, while it happens. Every call does
// nothing here; whoever wants to print or count overrides some.
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
  virtual void currentRecord(const DataBuffer&, bool) {}

  // The system parameters and the attribute that holds them, null when there is none: of the
  // database, of the backup, and of the database once the backup's are merged in.
  virtual void currentParameters(const CMSymParmSet&, const CMAttribute*) {}
  virtual void alienParameters(const CMSymParmSet&, const CMAttribute*) {}
  virtual void mergedParameters(const CMSymParmSet&, const CMAttribute&) {}

  // A counter of the database that is a number; its index is that of handlerTypes.
  virtual void currentCounter(std::size_t, std::uint32_t) {}
  // The tables when all counters are read, and `nextId` when the whole backup is.
  virtual void tablesReady(const MergeTables&) {}
  virtual void finalCounters(const MergeTables&) {}

  // A line of the backup and the record, already renumbered, that it was turned into.
  virtual void backupRecord(const BackupLine&, const DataBuffer&) {}
  // A line that is left out, and its record type, which is not merged.
  virtual void skippedRecord(const BackupLine&, std::int32_t) {}

  // The handle-valued attributes of an object, each of their values, and the object when it is
  // ready: its head record and its attribute text.
  virtual void searchedAttribute(int) {}
  virtual void foundAttribute(int) {}
  virtual void renumberedValue(const CMConfigHandle&, const CMConfigHandle&) {}
  virtual void mergedObject(const DataBuffer&, const std::string&) {}
  // How many records a list still holds in the end.
  virtual void remainingRecords(std::size_t, std::size_t) {}
};

}  // namespace orx
