// An open database: the file as it was found, what this run deleted of it, and the successor once
// there is one. The contract of its operations is that of platform/kdb.h; failures are outcomes,
// and every call may throw std::bad_alloc.
#pragma once

#include <memory>
#include <optional>
#include <string>

#include "platform/kdb/key.h"
#include "platform/kdb/key_ranges.h"
#include "platform/kdb/publish.h"
#include "platform/kdb/snapshot.h"
#include "platform/kdb/successor.h"
#include "platform/kdb/tree_file.h"
#include "platform/kdb/uncopied_records.h"

namespace orx::kdb {

enum class OpenMode { read, update, create };

// An update scan: a snapshot, and the record that it holds, the last one that next() gave.
class Scan {
 public:
  explicit Scan(Snapshot snapshot) : snapshot_(std::move(snapshot)) {}

  [[nodiscard]] Outcome seek(const Key& key) { return snapshot_.seek(key); }
  // As Snapshot::next.
  [[nodiscard]] Outcome next(const std::uint8_t*& record);
  [[nodiscard]] const Key& heldKey() const { return held_; }
  // The key of the record before the held one, when this scan deleted it.
  [[nodiscard]] const std::optional<Key>& deletedBefore() const { return deletedBefore_; }
  void markHeldDeleted() { heldIsDeleted_ = true; }

 private:
  Snapshot snapshot_;
  Key held_;
  std::optional<Key> deletedBefore_;
  bool heldIsDeleted_ = false;
};

class Database {
 public:
  // `database` is set only on success. One that goes without publish() leaves everything as it was.
  static Outcome open(const std::string& name, OpenMode mode, std::unique_ptr<Database>& database);

  // The records as they are now. Once there is a successor, that is copied for it.
  [[nodiscard]] Outcome snapshot(std::unique_ptr<Snapshot>& snapshot);
  // Before there is a successor, only notes the deletion.
  [[nodiscard]] Outcome deleteHeld(Scan& scan);
  // `record` is 296 bytes.
  [[nodiscard]] Outcome add(const Key& key, const std::uint8_t* record);
  // No change when the record is stored as it is and nothing has been changed before.
  [[nodiscard]] Outcome update(const Key& key, const std::uint8_t* record);
  [[nodiscard]] Outcome erase(const Key& key);
  // Copies the first record whose key is `key` or follows it into 296 bytes. endOfData when there
  // is none.
  [[nodiscard]] Outcome readNext(const Key& key, std::uint8_t* record);

  // Locks what was opened for reading as a database open for update is; 3/19 when somebody has.
  [[nodiscard]] Outcome hold() const;
  // The file of a database that was not new.
  [[nodiscard]] int fd() const { return base_->fd(); }

  // Publishes what was changed, if anything was. The object is of no further use.
  [[nodiscard]] Outcome publish();

  // To be told every failure of the calls above: it is kept for GetLastStatus, and a storage
  // failure is what every later call answers, publish() too; only snapshots read on.
  void noteFailure(const Outcome& outcome);
  [[nodiscard]] const Outcome& lastFailure() const { return lastFailure_; }

  // The number of records when it was opened.
  [[nodiscard]] std::uint64_t entries() const { return base_ == nullptr ? 0 : base_->entries(); }
  [[nodiscard]] const DatabasePaths& paths() const { return paths_; }

 private:
  Outcome openExisting(const std::string& name, OpenMode mode);
  Outcome openNew(const std::string& name);
  Outcome lock(UniqueFd& fd);
  Outcome settleLastRun();
  Outcome prepareChange();
  std::optional<Outcome> updateWithoutChange(const Key& key, const std::uint8_t* record);
  Outcome findInBase(const Key& key, Key& found, const std::uint8_t*& record);
  Outcome readNextChanged(const Key& key, std::uint8_t* record);
  Outcome startSuccessor();
  Outcome makeSuccessor();
  Outcome copyThrough(const Key& last);
  Outcome copyRest();
  [[nodiscard]] bool everythingDeleted() const;

  OpenMode mode_ = OpenMode::read;
  DatabasePaths paths_;
  std::shared_ptr<const TreeFile> base_;  // holds the lock; none for a new database
  KeyRanges deleted_;
  std::unique_ptr<KeyLookUp> lookUp_;  // while there is no successor
  std::unique_ptr<Successor> successor_;
  // What the successor has not got yet: it is copied in key order, no further than a change needs
  // that cannot wait, so that the copy and changes in ascending order are appended. None for a new
  // database, and where everything was deleted. It looks at deleted_, which then stays as it is.
  std::unique_ptr<UncopiedRecords> uncopied_;
  Outcome lastFailure_;
  std::optional<Outcome> storageFailure_;  // or what kept the successor from being made
};

}  // namespace orx::kdb
