// MergeRun: a merge from its first record to its last, without a database to write to. A restore
// adds what it yields; a plan only shows it.
//
// Order of calls: takeCurrent for every record of the database, in database order;
// readSystemRecord, and when that was true takeBackup for every line of the backup;
// mergeSystemRecord; nextObject until it is false; reportRemaining. The backup's records are held
// in memory, and each is given back as its object is taken. For one thread at a time.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "records/backup_reader.h"
#include "records/data_buffer.h"
#include "records/merge_tables.h"
#include "restore/merge_observer.h"
#include "restore/record_lists.h"
#include "restore/system_record.h"

namespace orx {

// An object of the backup as the database gets it.
struct MergedObject {
  DataBuffer head;          // its own text does not count
  std::string text;         // the attribute text of the whole chain, with the zeros of chainText
  std::size_t list = 0;     // the list that it waited in
  std::size_t sources = 0;  // records of the backup that it was joined from
};

// The order of the objects: list after list, or ascending by the keys they get, which a database
// takes several times as fast.
enum class ObjectOrder { lists, keys };

class MergeRun {
 public:
  // The observer outlives the run.
  MergeRun(MergeObserver& observer, ObjectOrder order);

  void takeCurrent(const DataBuffer& record) {
    observer_.currentRecord(record, system_.takeRecord(record));
  }
  // False when the database has no identifier counters: nothing can be merged into it.
  [[nodiscard]] bool readSystemRecord();

  // Keeps the record of a line, renumbered, unless its type is not merged.
  void takeBackup(const BackupLine& line);

  // Brings the backup's records into order, takes the parameters of its system record over and
  // counts the identifiers that were given out.
  void mergeSystemRecord();
  // The attributes that the database's system record gets. Its other fields are zero.
  [[nodiscard]] const CMAttributeSet& systemRecord() const { return system_.attributes(); }

  // The next object, its handle values renumbered; false, with `object` as it was, after the last.
  [[nodiscard]] bool nextObject(MergedObject& object);
  // Tells the observer how many records were not taken.
  void reportRemaining() const;

 private:
  [[nodiscard]] bool takeAlienSystemRecord();
  void fillQueue();
  void takeFromQueue(MergedObject& object);
  [[nodiscard]] bool follows(std::size_t a, std::size_t b) const;
  [[nodiscard]] std::optional<std::size_t> keptSize() const;
  void keepText(std::size_t size, std::string& text);
  void rewriteText(std::string& text);
  void readAttributes(const std::string& text);

  MergeObserver& observer_;
  ObjectOrder order_;
  MergeTables tables_;
  SystemRecord system_;
  RecordLists lists_;
  std::vector<std::size_t> queue_;  // lists that are not empty, as a heap: the next one in front
  BigDataRecord big_;
  CMAttributeSet attributes_;  // of the last text that was read, kept for its memory
};

}  // namespace orx
