// CountedRecords: how many records a phase of an operation has deleted or added. A verbose run says
// so at every thousandth and marks a checkpoint.
#pragma once

#include <cstdint>

#include "messages/message_print.h"
#include "platform/kdb.h"
#include "platform/run_progress.h"

namespace orx {

class CountedRecords {
 public:
  // The message takes the count.
  CountedRecords(MessageKey<std::int32_t> message, bool verbose)
      : message_(message), verbose_(verbose) {}

  void countOne(kdb::kdbHandle database) {
    ++count_;
    runProgress().countRecord();
    if (!verbose_ || count_ % recordsPerMessage != 0) return;
    printMessage(message_, count_);
    (void)kdb::Checkpoint(database);
  }

  [[nodiscard]] std::int32_t value() const { return count_; }

 private:
  static constexpr std::int32_t recordsPerMessage = 1000;

  MessageKey<std::int32_t> message_;
  bool verbose_;
  std::int32_t count_ = 0;
};

}  // namespace orx
