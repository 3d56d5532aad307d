#include "restore/merge_run.h"

#include <algorithm>
#include <cstdint>
#include <cstring>

#include "messages/trace_unit.h"
#include "model/written_text.h"
#include "platform/trace.h"
#include "records/backup_record.h"
#include "restore/chain_writer.h"
#include "restore/handle_attributes.h"
#include "restore/merge_types.h"

namespace orx {

namespace {

// The list that a record waits in.
std::uint32_t listNumber(const CMConfigHandle& object) {
  const std::int32_t type = object.getType();
  const auto id = static_cast<std::int32_t>(object);
  return static_cast<std::uint32_t>(type) + static_cast<std::uint32_t>(id);
}

}  // namespace

MergeRun::MergeRun(MergeObserver& observer, ObjectOrder order)
    : observer_(observer), order_(order), lists_(observer) {
  ORX_TRACE("MergeRun::MergeRun");
  tables_.mergeTypes = mergedTypes;
}

bool MergeRun::readSystemRecord() {
  ORX_TRACE("MergeRun::readSystemRecord");
  if (!system_.readText()) return trace.exit(false);
  system_.readTables(tables_, observer_);
  return trace.exit(true);
}

void MergeRun::takeBackup(const BackupLine& line) {
  ORX_TRACE("MergeRun::takeBackup");
  DataBuffer record;
  const CMDatabaseBackupRecord columns(line.chars.data());
  if (columns.buildDataBufferForMerge(record, tables_) == 0) {
    observer_.skippedRecord(line, record.recType());
    return;
  }
  lists_.append(listNumber(record.objectHandle()), record);
  observer_.backupRecord(line, record);
}

void MergeRun::mergeSystemRecord() {
  ORX_TRACE("MergeRun::mergeSystemRecord");
  sortLists(lists_);
  const bool found = takeAlienSystemRecord();
  system_.mergeParameters(found ? &big_.attributeText : nullptr, observer_);
  system_.writeCounters(tables_, observer_);
  fillQueue();
}

// The backup's first object, when its object handle is null; `auxValue2` does not count here. It is
// never added as an object.
bool MergeRun::takeAlienSystemRecord() {
  RecordList& first = lists_[0];
  if (first.isEmpty() || !first.at(0).data.hasNullObject()) return false;
  big_.attributeText.clear();
  return myGetNextAndDestroy(first, big_) != 0;
}

bool MergeRun::nextObject(MergedObject& object) {
  ORX_TRACE("MergeRun::nextObject");
  if (queue_.empty()) return trace.exit(false);
  takeFromQueue(object);
  object.head = big_.data;
  if (const auto size = keptSize()) {
    keepText(*size, object.text);
  } else {
    rewriteText(object.text);
  }
  observer_.mergedObject(object.head, object.text);
  return trace.exit(true);
}

// Whether the front of list a is to be taken after that of list b. Objects of equal handles share a
// list, so no two fronts are equal.
bool MergeRun::follows(std::size_t a, std::size_t b) const {
  if (order_ == ObjectOrder::lists) return a > b;
  return std::memcmp(lists_[a].at(0).data.data(), lists_[b].at(0).data.data(), data_layout::recn) >
         0;
}

void MergeRun::fillQueue() {
  for (std::size_t list = 0; list < RecordLists::count; ++list) {
    if (!lists_[list].isEmpty()) queue_.push_back(list);
  }
  std::ranges::make_heap(queue_, [this](auto a, auto b) { return follows(a, b); });
}

// Takes the next object into big_.
void MergeRun::takeFromQueue(MergedObject& object) {
  const auto follow = [this](std::size_t a, std::size_t b) { return follows(a, b); };
  std::ranges::pop_heap(queue_, follow);
  object.list = queue_.back();
  RecordList& list = lists_[object.list];
  object.sources = list.entries();
  big_.attributeText.clear();
  (void)myGetNextAndDestroy(list, big_);
  object.sources -= list.entries();
  if (list.isEmpty()) {
    queue_.pop_back();
  } else {
    std::ranges::push_heap(queue_, follow);
  }
}

// Most texts come back from the attribute set as they were and hold no handle: they need not be
// read, which takes three times as long as all else that is done for an object. The size that such
// a text gets; none for any other.
std::optional<std::size_t> MergeRun::keptSize() const {
  if (traceIsOpen()) return std::nullopt;  // it shows the reading
  return sizeOfWrittenText(big_.attributeText, [](int key) { return !isHandleAttribute(key); });
}

void MergeRun::keepText(std::size_t size, std::string& text) {
  searchInVain(observer_);
  text = big_.attributeText;
  text.resize(size);
}

void MergeRun::rewriteText(std::string& text) {
  readAttributes(big_.attributeText);
  renumberHandles(attributes_, tables_, observer_);
  text = chainText(attributes_);
}

// An object keeps the first of two attributes of one key. Assigning a set does that, but copies
// every attribute, so it is left to the texts that need it.
void MergeRun::readAttributes(const std::string& text) {
  attributes_ = text.c_str();
  const CMAttribute* before = nullptr;
  bool twins = false;
  attributes_.forEach([&](const CMAttribute& attribute) {
    twins = twins || (before != nullptr && before->key() == attribute.key());
    before = &attribute;
  });
  if (twins) attributes_ = CMAttributeSet(text.c_str(), 1);
}

void MergeRun::reportRemaining() const {
  ORX_TRACE("MergeRun::reportRemaining");
  for (std::size_t list = 0; list < RecordLists::count; ++list) {
    observer_.remainingRecords(list, lists_[list].entries());
  }
}

}  // namespace orx
