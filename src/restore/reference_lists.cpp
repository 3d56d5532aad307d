#include "restore/reference_lists.h"

#include <algorithm>
#include <utility>

#include "messages/trace_unit.h"

namespace orx {

namespace {

bool precedes(const ObjectReference& a, const ObjectReference& b) {
  return a.parent != b.parent ? a.parent < b.parent : a.object < b.object;
}

}  // namespace

void ReferenceLists::append(std::uint32_t number, const DataBuffer& head) {
  lists_[number % count].push_back({head.parentBytes(), head.objectBytes(), head.modelBytes()});
}

void ReferenceLists::sort() {
  ORX_TRACE("sortLists");
  for (std::size_t number = 0; number < count; ++number) {
    ReferenceList& list = lists_[number];
    observer_.sortingList(number, list.size());
    // Nothing to do where they came in the order of the database.
    if (!std::is_sorted(list.begin(), list.end(), precedes)) {
      std::stable_sort(list.begin(), list.end(), precedes);
    }
    observer_.sortedList(number);
  }
}

ReferenceList ReferenceLists::take(std::size_t number) {
  return std::exchange(lists_[number], {});
}

}  // namespace orx
