#include "platform/kdb/slots.h"

#include <utility>

namespace orx::kdb {

SlotTable& SlotTable::instance() {
  static SlotTable table;
  return table;
}

kdbHandle SlotTable::enter(Object object, Database* database) {
  if (free_.empty()) {
    free_.reserve(slots_.size() + 1);  // so that release() never needs memory
    free_.push_back(&slots_.emplace_back());
  }
  Slot& slot = *free_.back();
  free_.pop_back();
  slot.object = std::move(object);
  slot.database = database;
  return renew(slot);
}

void SlotTable::release(Slot& slot) {
  const Object gone = std::exchange(slot.object, std::monostate());
  (void)renew(slot);
  slot.database = nullptr;
  free_.push_back(&slot);
}

void SlotTable::releaseAll(Database* database) {
  Slot* own = nullptr;
  for (Slot& slot : slots_) {
    if (slot.database != database || slot.object.index() == 0) continue;
    if (std::holds_alternative<std::unique_ptr<Database>>(slot.object)) {
      own = &slot;
    } else {
      release(slot);
    }
  }
  if (own != nullptr) release(*own);
}

}  // namespace orx::kdb
