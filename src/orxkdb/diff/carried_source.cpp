#include "orxkdb/diff/carried_source.h"

#include <algorithm>
#include <tuple>

namespace orx::orxkdb {

namespace {

bool isNormal(const HandleBytes& handle) {
  const HandleNumber number = numberOf(handle);
  return normalForm(number) == number;
}

CMConfigHandle normalHandle(const HandleBytes& handle) {
  return handleOf(normalForm(numberOf(handle)));
}

}  // namespace

DataBuffer carriedForm(const DataBuffer& record) {
  DataBuffer carried = record;
  if (!isNormal(record.parentBytes())) carried.setParentHandle(normalHandle(record.parentBytes()));
  if (!isNormal(record.objectBytes())) carried.setObjectHandle(normalHandle(record.objectBytes()));
  if (!isNormal(record.modelBytes())) carried.setModelHandle(normalHandle(record.modelBytes()));
  carried.setAttrText(record.text());
  return carried;
}

Result CarriedSource::open() {
  if (Result result = reader_.open(name()); !result.ok()) return result;
  if (Result result = collectMoved(); !result.ok()) return result;
  if (Result result = reader_.rewind(); !result.ok()) return result;
  readOrdinary();
  return {};
}

bool CarriedSource::keepsPlace(const DataBuffer& record) const {
  return isNormal(record.parentBytes()) && isNormal(record.objectBytes()) &&
         reader_.isUnderItsKey(record);
}

Result CarriedSource::collectMoved() {
  Result result = reader_.forEach([this](const DataBuffer& record) -> Result {
    if (keepsPlace(record)) return {};
    const DataBuffer form = carried(record);
    moved_.push_back({keyOf(form), keyOf(reader_.storedKey()), form});
    return {};
  });
  std::ranges::sort(moved_, {},
                    [](const Moved& moved) { return std::tie(moved.key, moved.stored); });
  return result;
}

void CarriedSource::readOrdinary() {
  DataBuffer record;
  do {
    hasOrdinary_ = reader_.next(record);
  } while (hasOrdinary_ && !keepsPlace(record));
  if (hasOrdinary_) ordinary_ = {keyOf(record), carried(record)};
}

DataBuffer CarriedSource::carried(const DataBuffer& record) {
  DataBuffer form = carriedForm(record);
  if (form != record) ++counting().reduced;
  return form;
}

bool CarriedSource::movedIsNext() const {
  if (nextMoved_ == moved_.size()) return false;
  const Moved& moved = moved_[nextMoved_];
  return !hasOrdinary_ ||
         std::tie(moved.key, moved.stored) < std::tie(ordinary_.key, ordinary_.key);
}

bool CarriedSource::read(KeyedRecord& record, Result& result) {
  result = reader_.result();
  if (!result.ok()) return false;
  if (movedIsNext()) {
    const Moved& moved = moved_[nextMoved_++];
    record = {moved.key, moved.record};
    return true;
  }
  if (!hasOrdinary_) return false;
  record = ordinary_;
  readOrdinary();
  return true;
}

}  // namespace orx::orxkdb
