#include "restore/merged_records.h"

#include "restore/chain_writer.h"

namespace orx {

void MergedRecords::start() {
  batchRecords_ = 2048;
  ahead_.start();
}

bool MergedRecords::makeBatch(Batch& batch) {
  batch.clear();
  while (batch.size() < batchRecords_) {
    if (!merge_.nextObject(object_)) return false;
    for (std::size_t i = 0; i < chainLength(object_.text); ++i) {
      batch.push_back({chainRecord(object_.head, object_.text, i), object_.list});
    }
  }
  return true;
}

bool MergedRecords::next(DataBuffer& record, std::size_t& list) {
  while (at_ == current_.size()) {
    at_ = 0;
    current_.clear();
    if (!ahead_.take(current_)) return false;
  }
  record = current_[at_].record;
  list = current_[at_].list;
  ++at_;
  return true;
}

}  // namespace orx
