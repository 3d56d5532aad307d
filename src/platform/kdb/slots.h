// What a kdbHandle refers to. Slots are never freed: a handle whose object is gone still leads to
// its slot, whose tag tells. One table for the process, without a lock (see kdb.h); a slot itself
// is touched only by calls with handles to it.
#pragma once

#include <cstdint>
#include <deque>
#include <memory>
#include <variant>
#include <vector>

#include "platform/kdb.h"
#include "platform/kdb/database.h"

namespace orx::kdb {

struct HeldRecord {
  Slot* scan;
};

struct OpenScan {
  Scan scan;
  Slot* held = nullptr;  // of the held record; every read and the deletion renew its tag
};

using Object = std::variant<std::monostate, std::unique_ptr<Database>, std::unique_ptr<OpenScan>,
                            HeldRecord, std::unique_ptr<Snapshot>>;

struct Slot {
  std::int16_t tag = 0;
  Object object;                 // monostate: the slot is free
  Database* database = nullptr;  // that the object is or belongs to
};

class SlotTable {
 public:
  static SlotTable& instance();

  // Takes the object over, for `database`, which is the object itself where that is a database.
  // Throws std::bad_alloc.
  kdbHandle enter(Object object, Database* database);
  // Makes every handle to the slot stale; the result is the one that is not.
  static kdbHandle renew(Slot& slot) {
    // The tag 0 is left to handles that were never filled.
    slot.tag = static_cast<std::int16_t>(slot.tag == -1 ? 1 : slot.tag + 1);
    kdbHandle handle;
    handle.tag = slot.tag;
    handle.slot = &slot;
    return handle;
  }
  // The slot's object goes; every handle to it is stale from now on.
  void release(Slot& slot);
  // Releases all that belongs to the database, the database itself last.
  void releaseAll(Database* database);

 private:
  std::deque<Slot> slots_;
  std::vector<Slot*> free_;
};

}  // namespace orx::kdb
