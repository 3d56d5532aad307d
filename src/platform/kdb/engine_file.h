// EngineFile: a file of the engine that this process alone writes, in bounded transactions without
// a sync, so that private memory stays small at any size.
//
// Nothing that is written is safe before finish() and a sync of the descriptor. After a storage
// failure the file is of no more use; an object that goes without finish() loses what is pending.
#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "platform/kdb/engine.h"
#include "platform/kdb/key.h"
#include "platform/kdb_codes.h"

namespace orx::kdb {

class EngineFile {
 public:
  // `fd` is the file behind `path`, empty. It stays the caller's and outlives the object. 8/20 when
  // the path leads to another file. `file` is set only on success.
  static Outcome open(const std::string& path, int fd, std::unique_ptr<EngineFile>& file);

  EngineFile(const EngineFile&) = delete;
  EngineFile& operator=(const EngineFile&) = delete;

  // Whether `key` lies behind every key that was ever added.
  [[nodiscard]] bool isBehindAll(const Key& key) const { return empty_ || key > lastKey_; }

  // A record is 296 bytes. append() is for a key behind all, insert() for any other.
  [[nodiscard]] Outcome append(const Key& key, const std::uint8_t* record);
  [[nodiscard]] Outcome insert(const Key& key,
                               const std::uint8_t* record);  // 4/46 when it exists
  [[nodiscard]] Outcome update(const Key& key,
                               const std::uint8_t* record);  // 5/28 when it does not
  [[nodiscard]] Outcome erase(const Key& key);               // 5/28 when it does not
  [[nodiscard]] Outcome find(const Key& key);                // 5/28 when it does not exist
  // Copies the first record whose key is `key` or follows it. endOfData when there is none.
  [[nodiscard]] Outcome readNext(const Key& key, std::uint8_t* record);

  // Calls visit(key, record), which returns an Outcome, for every record in key order until it
  // fails; its failure, or that of the reading. `visit` must not use this object, and the record is
  // valid only during its call.
  template <typename Visit>
  [[nodiscard]] Outcome forEach(Visit visit);

  // Copies the present state into the empty file `fd`, which stays the caller's.
  [[nodiscard]] Outcome copyTo(int fd);

  // Writes what is pending, closes the engine and gives the file its full length, so that its size
  // can be checked exactly when it is opened. Syncs nothing. Nothing may follow. 8/20 when somebody
  // cut it.
  [[nodiscard]] Outcome finish();

 private:
  explicit EngineFile(int fd) : fd_(fd) {}
  [[nodiscard]] Outcome openEngine(const std::string& path);
  [[nodiscard]] Outcome openEnvironment(const std::string& path);
  [[nodiscard]] Outcome begin();
  [[nodiscard]] Outcome commit();
  [[nodiscard]] Outcome checkNotCut();
  void startWriteBack();
  [[nodiscard]] Outcome commitWhenLarge(unsigned cost);
  struct Extent;
  [[nodiscard]] Outcome measure(Extent& extent) const;
  [[nodiscard]] Outcome growMap();
  [[nodiscard]] Outcome prepareCursor();
  [[nodiscard]] Outcome put(const Key& key, const std::uint8_t* record, unsigned flags);
  [[nodiscard]] Outcome outcomeOf(int engineError) const;

  int fd_;
  engine::Environment environment_;
  engine::Transaction transaction_;
  engine::Cursor cursor_;
  MDB_dbi table_ = 0;
  Key lastKey_;  // the highest key, once there is one
  bool empty_ = true;
  unsigned pendingCost_ = 0;
  std::int64_t writeBackFrom_ = 0;
  std::int64_t knownSize_ = 0;  // of the file; it never gets shorter by itself
};

template <typename Visit>
Outcome EngineFile::forEach(Visit visit) {
  if (const Outcome outcome = commit(); !outcome.ok()) return outcome;
  if (const Outcome outcome = prepareCursor(); !outcome.ok()) return outcome;
  MDB_val key{};
  MDB_val record{};
  int error = mdb_cursor_get(cursor_.get(), &key, &record, MDB_FIRST);
  while (error == 0) {
    const Outcome outcome = visit(Key::stored(static_cast<const std::uint8_t*>(key.mv_data)),
                                  static_cast<const std::uint8_t*>(record.mv_data));
    if (!outcome.ok()) return outcome;
    error = mdb_cursor_get(cursor_.get(), &key, &record, MDB_NEXT);
  }
  return error == MDB_NOTFOUND ? succeeded : outcomeOf(error);
}

}  // namespace orx::kdb
