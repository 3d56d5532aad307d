// The references to models that a use-count rebuild holds in memory: head records whose model
// handle counts, spread over lists as the models are. Of a record that takes 296 bytes only the
// handles are kept, 24 bytes: a database has many more references than models.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "model/handle_layout.h"
#include "records/data_buffer.h"
#include "restore/record_list_observer.h"
#include "restore/record_lists.h"

namespace orx {

struct ObjectReference {
  HandleBytes parent;
  HandleBytes object;
  HandleBytes model;
};

using ReferenceList = std::vector<ObjectReference>;

class ReferenceLists {
 public:
  static constexpr std::size_t count = RecordLists::count;

  // The observer outlives the lists.
  explicit ReferenceLists(RecordListObserver& observer) : observer_(observer) {}

  // Adds what `head`, a record with the number 0, refers to to list `number` modulo 32.
  void append(std::uint32_t number, const DataBuffer& head);
  // Every list as RecordList::sort: ascending by parent and object, equal ones as they came.
  void sort();
  // What list `number` holds; it is empty afterwards.
  [[nodiscard]] ReferenceList take(std::size_t number);

 private:
  RecordListObserver& observer_;
  std::array<ReferenceList, count> lists_;
};

}  // namespace orx
