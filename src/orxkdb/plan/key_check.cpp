#include "orxkdb/plan/key_check.h"

namespace orx::orxkdb {

KeyCheck::KeyCheck(DatabaseReader& database, std::uint64_t systemRecords)
    : database_(database), systemRecords_(systemRecords) {
  readNext();
}

// Every key up to the highest was asked for, or belongs to no object that can still come.
std::optional<KeyTaken> KeyCheck::add(const RecordKey& key) {
  if (highest_ && !(*highest_ < key)) return KeyTaken::twiceInBackup;
  highest_ = key;
  if (isStored(key)) return KeyTaken::inDatabase;
  return std::nullopt;
}

bool KeyCheck::isStored(const RecordKey& key) {
  if (key.hasNullHandles() && key.recn < systemRecords_) return true;
  while (stored_ && *stored_ < key) readNext();
  return stored_ == key;
}

void KeyCheck::readNext() {
  do {
    stored_.reset();
    if (database_.next(record_)) stored_ = keyOf(database_.storedKey());
  } while (stored_ && isDropped());
}

bool KeyCheck::isDropped() const {
  return stored_->hasNullHandles() && stored_->recn >= systemRecords_ && record_.auxValue2() == 0;
}

}  // namespace orx::orxkdb
