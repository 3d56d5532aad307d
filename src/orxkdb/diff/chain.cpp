#include "orxkdb/diff/chain.h"

#include <algorithm>

namespace orx::orxkdb {

namespace {

ObjectKey objectOf(const RecordKey& key) {
  return {key.parent, key.object};
}

}  // namespace

bool sameRecords(const Chain& a, const Chain& b) {
  return std::ranges::equal(a.records, b.records,
                            [](const KeyedRecord& left, const KeyedRecord& right) {
                              return left.key == right.key && left.record == right.record;
                            });
}

bool ChainReader::next() {
  if (!isStarted_) hasAhead_ = source_.next(ahead_);
  isStarted_ = true;
  chain_.records.clear();
  if (hasAhead_) chain_.key = objectOf(ahead_.key);
  while (hasAhead_ && objectOf(ahead_.key) == chain_.key) {
    chain_.records.push_back(ahead_);
    hasAhead_ = source_.next(ahead_);
  }
  // After a failure the object may not be complete.
  hasChain_ = !chain_.records.empty() && source_.result().ok();
  if (hasChain_) ++count_;
  return hasChain_;
}

}  // namespace orx::orxkdb
