// RecordListObserver: hears what is done with the records that an operation holds in memory, while
// it happens. Every call does nothing here; whoever wants to print or count overrides some.
#pragma once

#include <cstddef>

namespace orx {

class DataBuffer;

class RecordListObserver {
 public:
  RecordListObserver() = default;
  RecordListObserver(const RecordListObserver&) = delete;
  RecordListObserver& operator=(const RecordListObserver&) = delete;
  virtual ~RecordListObserver() = default;

  // A list, by number, and how many records it holds: before it is sorted, and then after.
  virtual void sortingList(std::size_t /*number*/, std::size_t /*records*/) {}
  virtual void sortedList(std::size_t /*number*/) {}
  // A record that is taken off a list as a part of an object.
  virtual void takenRecord(const DataBuffer&) {}

  // One that nobody listens to.
  [[nodiscard]] static RecordListObserver& silent() {
    static RecordListObserver observer;
    return observer;
  }
};

}  // namespace orx
