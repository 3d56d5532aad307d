// The records that the merge restore and the use-count rebuild hold in memory, spread over 32
// lists.
//
// A list is filled, sorted once, and then taken off from the front, one object at a time: a head
// record and the continuation records behind it, whose texts are joined. Everything is linear in
// the records but for the sort, which is n log n and moves pointers only. A held record costs 304
// bytes and a pointer. The pool of the records is one for the process and not guarded: records are
// made and released by one thread at a time.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <memory>
#include <string>

#include "platform/collectable.h"
#include "records/data_buffer.h"
#include "restore/record_list_observer.h"

namespace orx {

class DataRecord : public RWCollectable {
 public:
  // 296 zero bytes.
  DataRecord();
  explicit DataRecord(const DataBuffer& buffer);
  DataRecord(const DataRecord& other);
  DataRecord& operator=(const DataRecord& other) = default;
  ~DataRecord() override;

  // Records, but not objects, have a pool of their own, which keeps its memory for the next ones.
  static void* operator new(std::size_t size);
  static void operator delete(void* record, std::size_t size);

  DataBuffer data;
};

static_assert(sizeof(DataRecord) == sizeof(void*) + data_layout::recordSize);

// A whole object: its head record and the joined text of its records.
class BigDataRecord : public DataRecord {
 public:
  BigDataRecord();
  ~BigDataRecord() override;

  std::string attributeText;
};

// Owns its records. Positions count from 0.
class RecordList {
 public:
  // Hears of the records that are taken as parts of objects; it outlives the list.
  void setObserver(RecordListObserver& observer) { observer_ = &observer; }
  [[nodiscard]] RecordListObserver& observer() const { return *observer_; }

  void append(std::unique_ptr<DataRecord> record) { records_.push_back(std::move(record)); }
  [[nodiscard]] std::size_t entries() const { return records_.size(); }
  [[nodiscard]] bool isEmpty() const { return records_.empty(); }
  [[nodiscard]] DataRecord& at(std::size_t position) { return *records_[position]; }
  [[nodiscard]] const DataRecord& at(std::size_t position) const { return *records_[position]; }
  // Removes the first record of a list that is not empty; the caller owns it.
  [[nodiscard]] std::unique_ptr<DataRecord> get();
  // Ascending by both handles as raw bytes, then by `recn` as a number; records of equal key keep
  // their order.
  void sort();

 private:
  RecordListObserver* observer_ = &RecordListObserver::silent();
  std::deque<std::unique_ptr<DataRecord>> records_;
};

class RecordLists {
 public:
  static constexpr std::size_t count = 32;

  RecordLists() = default;
  // The observer outlives the lists.
  explicit RecordLists(RecordListObserver& observer);

  // Adds a copy of `record` to list `number` modulo 32.
  void append(std::uint32_t number, const DataBuffer& record);
  [[nodiscard]] RecordList& operator[](std::size_t number) { return lists_[number]; }
  [[nodiscard]] const RecordList& operator[](std::size_t number) const { return lists_[number]; }

 private:
  std::array<RecordList, count> lists_;
};

// Sorts every list.
void sortLists(RecordLists& lists);

// Takes the next object off the front of a sorted list: `object` gets its head's record, and the
// texts of its records are appended to `attributeText`, which the caller has emptied. The first
// record is the head whatever its number; the object ends before the next record with the number 0.
// 0, with `object` untouched, when the list is empty; else 1.
[[nodiscard]] int myGetNextAndDestroy(RecordList& list, BigDataRecord& object);

}  // namespace orx
