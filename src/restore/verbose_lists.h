// What verbose operations print on standard output of the records that they hold in memory.
#pragma once

#include <cstdint>
#include <cstdio>
#include <string_view>

#include "records/data_buffer.h"
#include "restore/record_list_observer.h"

namespace orx {

// `Observer` is RecordListObserver or one that extends it.
template <typename Observer>
class VerboseLists : public Observer {
 public:
  void sortingList(std::size_t number, std::size_t records) override {
    (void)std::printf("list No.%02d has %d entries.\n", static_cast<int>(number),
                      static_cast<int>(records));
  }
  void sortedList(std::size_t number) override {
    (void)std::printf("finish sorting for list No.%02d\n", static_cast<int>(number));
  }
  void takenRecord(const DataBuffer& record) override {
    const std::string_view text = record.text();
    (void)std::printf("next in list: data.recn=%d, attribute: '%.*s'\n",
                      static_cast<std::int32_t>(record.recn()), static_cast<int>(text.size()),
                      text.data());
  }
};

}  // namespace orx
