#include "restore/record_lists.h"

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <new>
#include <utility>

#include "messages/trace_unit.h"
#include "platform/huge_pages.h"

namespace orx {

namespace {

constexpr std::size_t handlesSize = data_layout::recn;

bool keyPrecedes(const std::unique_ptr<DataRecord>& a, const std::unique_ptr<DataRecord>& b) {
  const int handles = std::memcmp(a->data.data(), b->data.data(), handlesSize);
  return handles != 0 ? handles < 0 : a->data.recn() < b->data.recn();
}

bool startsObject(const DataRecord& record) {
  return record.data.recn() == 0;
}

// Memory for records, which is kept for the next ones. The pools of the standard library would do,
// but GCC 12's goes on without memory where the list of its blocks gets none.
class RecordPool {
 public:
  [[nodiscard]] void* allocate() {
    if (free_ != nullptr) return std::exchange(free_, free_->next);
    if (left_ == 0) addBlock();
    --left_;
    return std::exchange(next_, next_ + recordSpace);
  }

  void deallocate(void* record) { free_ = new (record) Free{free_}; }

 private:
  struct Free {
    Free* next;
  };
  static constexpr std::size_t recordSpace = sizeof(DataRecord);
  static_assert(recordSpace % alignof(std::max_align_t) == 0 && recordSpace >= sizeof(Free));

  void addBlock() {
    next_ = static_cast<std::byte*>(hugePageMemory().allocate(hugePageSize));
    left_ = hugePageSize / recordSpace;
  }

  Free* free_ = nullptr;
  std::byte* next_ = nullptr;  // the part of the last block that was never used
  std::size_t left_ = 0;       // the records that fit there
};

RecordPool recordPool;

}  // namespace

void* DataRecord::operator new(std::size_t size) {
  return size == sizeof(DataRecord) ? recordPool.allocate() : ::operator new(size);
}

void DataRecord::operator delete(void* record, std::size_t size) {
  if (size != sizeof(DataRecord)) return ::operator delete(record);
  recordPool.deallocate(record);
}

DataRecord::DataRecord() {
  ORX_TRACE("DataRecord::DataRecord");
}

DataRecord::DataRecord(const DataBuffer& buffer) : data(buffer) {
  ORX_TRACE("DataRecord::DataRecord");
}

DataRecord::DataRecord(const DataRecord& other) : RWCollectable(other), data(other.data) {
  ORX_TRACE("DataRecord::DataRecord");
}

DataRecord::~DataRecord() {
  ORX_TRACE("DataRecord::~DataRecord");
}

BigDataRecord::BigDataRecord() {
  ORX_TRACE("BigDataRecord::BigDataRecord");
}

BigDataRecord::~BigDataRecord() {
  ORX_TRACE("BigDataRecord::~BigDataRecord");
}

std::unique_ptr<DataRecord> RecordList::get() {
  std::unique_ptr<DataRecord> first = std::move(records_.front());
  records_.pop_front();
  return first;
}

// Records that were read from a database are in order already, which a look at each of them tells.
void RecordList::sort() {
  if (std::is_sorted(records_.begin(), records_.end(), keyPrecedes)) return;
  std::stable_sort(records_.begin(), records_.end(), keyPrecedes);
}

RecordLists::RecordLists(RecordListObserver& observer) {
  for (RecordList& list : lists_) list.setObserver(observer);
}

void RecordLists::append(std::uint32_t number, const DataBuffer& record) {
  lists_[number % count].append(std::make_unique<DataRecord>(record));
}

void sortLists(RecordLists& lists) {
  ORX_TRACE("sortLists");
  for (std::size_t number = 0; number < RecordLists::count; ++number) {
    RecordList& list = lists[number];
    list.observer().sortingList(number, list.entries());
    list.sort();
    list.observer().sortedList(number);
  }
}

int myGetNextAndDestroy(RecordList& list, BigDataRecord& object) {
  ORX_TRACE("myGetNextAndDestroy");
  if (list.isEmpty()) return trace.exit(0);
  object.data = list.at(0).data;
  do {
    const std::unique_ptr<DataRecord> record = list.get();
    list.observer().takenRecord(record->data);
    object.attributeText += record->data.text();
  } while (!list.isEmpty() && !startsObject(list.at(0)));
  return trace.exit(1);
}

}  // namespace orx
