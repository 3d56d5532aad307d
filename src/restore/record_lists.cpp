#include "restore/record_lists.h"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <memory_resource>
#include <string_view>
#include <utility>

#include "platform/huge_pages.h"
#include "restore/restore_settings.h"
#include "restore/trace_unit.h"

namespace orx {

namespace {

constexpr std::size_t handlesSize = data_layout::recn;

bool isVerbose() {
  return restoreSettings().verbose != 0;
}

bool keyPrecedes(const std::unique_ptr<DataRecord>& a, const std::unique_ptr<DataRecord>& b) {
  const int handles = std::memcmp(a->data.data(), b->data.data(), handlesSize);
  return handles != 0 ? handles < 0 : a->data.recn() < b->data.recn();
}

void printRecord(const DataBuffer& record) {
  const std::string_view text = record.text();
  (void)std::printf("next in list: data.recn=%d, attribute: '%.*s'\n",
                    static_cast<std::int32_t>(record.recn()), static_cast<int>(text.size()),
                    text.data());
}

bool startsObject(const DataRecord& record) {
  return record.data.recn() == 0;
}

std::pmr::memory_resource& recordPool() {
  static constexpr std::size_t pooledSize = 320;  // of a record, in the pool
  static std::pmr::unsynchronized_pool_resource pool(
      {.max_blocks_per_chunk = hugePageSize / (pooledSize + 1)}, &hugePageMemory());
  return pool;
}

}  // namespace

void* DataRecord::operator new(std::size_t size) {
  return recordPool().allocate(size);
}

void DataRecord::operator delete(void* record, std::size_t size) {
  recordPool().deallocate(record, size);
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

void RecordLists::append(std::uint32_t number, const DataBuffer& record) {
  lists_[number % count].append(std::make_unique<DataRecord>(record));
}

void sortLists(RecordLists& lists) {
  ORX_TRACE("sortLists");
  for (std::size_t number = 0; number < RecordLists::count; ++number) {
    const int shown = static_cast<int>(number);
    if (isVerbose()) {
      (void)std::printf("list No.%02d has %d entries.\n", shown,
                        static_cast<int>(lists[number].entries()));
    }
    lists[number].sort();
    if (isVerbose()) (void)std::printf("finish sorting for list No.%02d\n", shown);
  }
}

int myGetNextAndDestroy(RecordList& list, BigDataRecord& object) {
  ORX_TRACE("myGetNextAndDestroy");
  if (list.isEmpty()) return trace.exit(0);
  object.data = list.at(0).data;
  do {
    const std::unique_ptr<DataRecord> record = list.get();
    if (isVerbose()) printRecord(record->data);
    object.attributeText += record->data.text();
  } while (!list.isEmpty() && !startsObject(list.at(0)));
  return trace.exit(1);
}

}  // namespace orx
