// MergedRecords: the records that a merge adds, in its order, made ahead by a second thread while
// the caller adds those before them.
#pragma once

#include <cstddef>
#include <vector>

#include "platform/read_ahead.h"
#include "records/data_buffer.h"
#include "restore/merge_run.h"

namespace orx {

class MergedRecords {
 public:
  // The merge has come to its objects (MergeRun::mergeSystemRecord), outlives this stream, and
  // belongs to it until next() was false or the stream is gone.
  explicit MergedRecords(MergeRun& merge) : merge_(merge) {}

  // Makes records ahead. Without it an object is made when its first record is asked for, in the
  // caller's thread. To be called before the first next(), if at all.
  void start();

  // The next record and the list that its object waited in; false, and both as they were, after the
  // last. Rethrows std::bad_alloc of the thread.
  [[nodiscard]] bool next(DataBuffer& record, std::size_t& list);

 private:
  struct Entry {
    DataBuffer record;
    std::size_t list;
  };
  using Batch = std::vector<Entry>;

  [[nodiscard]] bool makeBatch(Batch& batch);

  MergeRun& merge_;
  MergedObject object_;
  std::size_t batchRecords_ = 1;  // at least; an object is never split
  Batch current_;
  std::size_t at_ = 0;
  ReadAhead<Batch> ahead_{[this](Batch& batch) { return makeBatch(batch); }};  // goes first
};

}  // namespace orx
