#include "platform/kdb/snapshot.h"

namespace orx::kdb {

namespace {

// The next record of `reader` that is not in `deleted`; a deleted range costs one search.
Outcome nextKept(TreeReader& reader, const KeyRanges& deleted, Key& key,
                 const std::uint8_t*& record) {
  Outcome outcome = reader.next(key, record);
  while (outcome.ok()) {
    const auto last = deleted.lastOfRange(key);
    if (!last.has_value()) break;
    if (key != *last) {
      outcome = reader.seek(*last);
      if (outcome.ok()) outcome = reader.next(key, record);
      if (outcome.ok() && key != *last) return notADatabase;  // it was there when it was deleted
    }
    if (outcome.ok()) outcome = reader.next(key, record);
  }
  return outcome;
}

}  // namespace

Outcome Snapshot::next(Key& key, const std::uint8_t*& record) {
  const Outcome outcome = nextKept(reader_, deleted_, key, record);
  if (outcome.ok()) lastKey_ = key;
  return outcome;
}

Outcome KeyLookUp::find(const Key& key, const KeyRanges& deleted, Key& found,
                        const std::uint8_t*& record) {
  const bool goesOn = next_.has_value() && key == *next_;
  next_.reset();
  if (!goesOn) {
    if (const Outcome outcome = reader_.seek(key); !outcome.ok()) return outcome;
  }
  const Outcome outcome = nextKept(reader_, deleted, found, record);
  if (outcome.ok()) next_ = found.following();
  return outcome;
}

}  // namespace orx::kdb
