#include "platform/kdb/uncopied_records.h"

#include <algorithm>
#include <cstring>

namespace orx::kdb {

UncopiedRecords::UncopiedRecords(const std::shared_ptr<const TreeFile>& tree,
                                 const KeyRanges& deleted)
    : base_(tree, deleted), lookUp_(tree), deleted_(deleted) {}

Outcome UncopiedRecords::stepBase() {
  const Outcome outcome = base_.next(baseKey_, baseRecord_);
  if (outcome.ok()) return outcome;
  baseRecord_ = nullptr;
  return outcome == endOfData ? succeeded : outcome;
}

Outcome UncopiedRecords::moveTo(Successor& successor, const Key& last) {
  if (!isUncopied(last)) return succeeded;
  const Outcome outcome = moveAll(successor, last);
  if (outcome.ok()) copied_ = last;
  // Ascending keys cannot fail otherwise; a part that is missing must never be published.
  return outcome.ok() || isStorageFailure(outcome.code) ? outcome : inputOutputError;
}

Outcome UncopiedRecords::moveAll(Successor& successor, const Key& last) {
  Outcome outcome = succeeded;
  while (outcome.ok()) {
    const bool baseIsNext =
        baseRecord_ != nullptr && (changes_.empty() || baseKey_ < changes_.begin()->first);
    if (!baseIsNext && changes_.empty()) break;
    if ((baseIsNext ? baseKey_ : changes_.begin()->first) > last) break;
    if (baseIsNext) {
      outcome = successor.add(baseKey_, baseRecord_);
      if (outcome.ok()) outcome = stepBase();
    } else {
      outcome = moveChange(successor);
    }
  }
  return outcome;
}

// The first change, in the place of the record that it concerns.
Outcome UncopiedRecords::moveChange(Successor& successor) {
  const auto change = changes_.begin();
  const bool isOfBase = baseRecord_ != nullptr && baseKey_ == change->first;
  if (!change->second.isErased) {
    const Outcome outcome = successor.add(change->first, change->second.record.data());
    if (!outcome.ok()) return outcome;
  }
  changes_.erase(change);
  return isOfBase ? stepBase() : succeeded;
}

Outcome UncopiedRecords::findExactly(const Key& key, const std::uint8_t*& record) {
  Key found;
  const Outcome outcome = lookUp_.find(key, deleted_, found, record);
  if (outcome == endOfData || (outcome.ok() && found != key)) return recordNotFound;
  return outcome;
}

Outcome UncopiedRecords::add(const Key& key, const std::uint8_t* record) {
  ++adds_;
  const auto waiting = changes_.find(key);
  if (waiting != changes_.end()) {
    if (!waiting->second.isErased) return duplicateKey;
    waiting->second.isErased = false;
    std::copy_n(record, recordSize, waiting->second.record.begin());
    return succeeded;
  }
  const std::uint8_t* stored = nullptr;
  const Outcome inBase = findExactly(key, stored);
  if (inBase.ok()) return duplicateKey;
  if (inBase != recordNotFound) return inBase;
  Change& change = changes_[key];
  change.isNew = true;
  std::copy_n(record, recordSize, change.record.begin());
  return succeeded;
}

Outcome UncopiedRecords::update(const Key& key, const std::uint8_t* record) {
  ++updates_;
  auto waiting = changes_.find(key);
  if (waiting != changes_.end() && waiting->second.isErased) return recordNotFound;
  if (waiting == changes_.end()) {
    const std::uint8_t* stored = nullptr;
    const Outcome inBase = findExactly(key, stored);
    if (!inBase.ok()) return inBase;
    if (std::memcmp(stored, record, recordSize) == 0) return succeeded;
    waiting = changes_.try_emplace(key).first;
  }
  std::copy_n(record, recordSize, waiting->second.record.begin());
  return succeeded;
}

Outcome UncopiedRecords::erase(const Key& key) {
  auto waiting = changes_.find(key);
  if (waiting != changes_.end()) {
    if (waiting->second.isErased) return recordNotFound;
    if (waiting->second.isNew) {
      changes_.erase(waiting);
    } else {
      waiting->second.isErased = true;
    }
    return succeeded;
  }
  const std::uint8_t* stored = nullptr;
  const Outcome inBase = findExactly(key, stored);
  if (inBase.ok()) changes_[key].isErased = true;
  return inBase;
}

Outcome UncopiedRecords::readNext(const Key& key, std::uint8_t* record) {
  std::optional<Key> from = isUncopied(key) ? key : copied_->following();
  while (from.has_value()) {
    Key found;
    const std::uint8_t* stored = nullptr;
    const Outcome inBase = lookUp_.find(*from, deleted_, found, stored);
    if (!inBase.ok() && inBase != endOfData) return inBase;
    const auto change = changes_.lower_bound(*from);
    const bool isChanged = change != changes_.end() && (!inBase.ok() || change->first <= found);
    if (!isChanged && !inBase.ok()) return endOfData;
    if (!isChanged || !change->second.isErased) {
      std::memcpy(record, isChanged ? change->second.record.data() : stored, recordSize);
      return succeeded;
    }
    from = change->first.following();
  }
  return endOfData;
}

}  // namespace orx::kdb
