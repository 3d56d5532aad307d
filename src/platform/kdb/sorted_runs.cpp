#include "platform/kdb/sorted_runs.h"

#include <fcntl.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <system_error>
#include <utility>

#include "platform/kdb/failure.h"

namespace orx::kdb {

namespace {

constexpr std::size_t writeSize = std::size_t{1} << 20;
constexpr std::size_t readMemory = std::size_t{8} << 20;
constexpr std::size_t mergeMemory = std::size_t{2} << 20;
constexpr std::size_t entriesAhead = 8;    // that are brought into the processor's cache
constexpr std::size_t batchEntries = 512;  // that are read ahead; ten batches are in use

// A key that the filter lets through is looked for in every run. While it lets few through, many
// runs may stand beside each other, and few records are written twice.
constexpr std::uint64_t goodFilterKeys = 4'000'000;
constexpr std::ptrdiff_t manyRuns = 84;
constexpr std::ptrdiff_t fewRuns = 8;

}  // namespace

SortedRuns::SortedRuns(UniqueFd file, std::size_t runRecords)
    : file_(std::move(file)),
      buffer_(runRecords),
      full_(runRecords),
      reading_(file_.get(), readMemory) {}

int SortedRuns::create(const std::string& directory, std::unique_ptr<SortedRuns>& runs,
                       std::size_t runRecords) {
  UniqueFd file = openFile(directory, O_TMPFILE | O_RDWR, 0600);
  if (!file.valid()) return errno;
  runs.reset(new SortedRuns(std::move(file), runRecords));
  return 0;
}

Outcome SortedRuns::add(const Key& key, const std::uint8_t* record) {
  if (hasRuns_ && filter_.add(key)) {
    if (const Outcome outcome = finishWriting(); !outcome.ok()) return outcome;
    if (const Outcome outcome = search(key); outcome != recordNotFound) {
      return outcome.ok() ? duplicateKey : outcome;
    }
  }
  if (!buffer_.add(key, record)) return duplicateKey;
  if (!buffer_.isFull()) return succeeded;
  if (!hasRuns_) rememberKeys();
  return startWriting();
}

// Where no thread can be had the buffer is written at once.
Outcome SortedRuns::startWriting() {
  if (const Outcome outcome = finishWriting(); !outcome.ok()) return outcome;
  hasRuns_ = true;
  std::swap(buffer_, full_);
  try {
    writing_ = std::async(std::launch::async, [this] { return writeFull(); });
  } catch (const std::system_error&) {
    return writeFull();
  }
  return succeeded;
}

// A buffer that never gets full needs no filter: it finds its keys itself.
void SortedRuns::rememberKeys() {
  for (std::size_t i = 0; i < buffer_.count(); ++i) {
    (void)filter_.add(Key::stored(buffer_.at(i)));
  }
}

Outcome SortedRuns::finishWriting() {
  return writing_.valid() ? writing_.get() : succeeded;
}

// Everything that was added is in runs afterwards.
Outcome SortedRuns::writeRest() {
  const Outcome outcome = startWriting();
  return outcome.ok() ? finishWriting() : outcome;
}

Outcome SortedRuns::writeFull() {
  if (full_.count() == 0) return succeeded;
  full_.sort();
  Run run{.first = written_};
  for (std::size_t i = 0; i < full_.count(); ++i) {
    full_.prefetch(i + entriesAhead);
    if (const Outcome outcome = append(run, full_.at(i)); !outcome.ok()) return outcome;
  }
  keys_ += full_.count();
  full_.clear();
  const Outcome outcome = finish(run);
  return outcome.ok() ? mergeFullLevels() : outcome;
}

Outcome SortedRuns::appendSorted(const Key& key, const std::uint8_t* record) {
  if (isInMemory() && !buffer_.isFull()) {
    return buffer_.add(key, record) ? succeeded : duplicateKey;
  }
  if (sorted_.count == 0) {
    if (const Outcome outcome = writeRest(); !outcome.ok()) return outcome;
    sorted_.first = written_;
  }
  std::array<std::uint8_t, entrySize> entry{};
  std::ranges::copy(key.bytes, entry.begin());
  std::copy_n(record, recordSize, entry.begin() + keySize);
  return append(sorted_, entry.data());
}

Outcome SortedRuns::append(Run& run, const std::uint8_t* entry) {
  if (run.count % runBlock == 0) run.blocks.push_back(Key::stored(entry));
  ++run.count;
  ++written_;
  const std::size_t size = pending_.size();
  pending_.resize(size + entrySize);  // insert() would make a string of the entry first
  std::memcpy(pending_.data() + size, entry, entrySize);
  return pending_.size() < writeSize ? succeeded : flush();
}

Outcome SortedRuns::finish(Run& run) {
  runs_.push_back(std::move(run));
  return flush();
}

Outcome SortedRuns::flush() {
  const int error = writeAll(file_.get(), pending_);
  pending_.clear();
  return outcomeOfErrno(error);
}

Outcome SortedRuns::mergeFullLevels() {
  Outcome outcome = succeeded;
  for (unsigned level = 0; outcome.ok() && isFull(level); ++level) outcome = mergeLevel(level);
  return outcome;
}

bool SortedRuns::isFull(unsigned level) const {
  return std::ranges::count(runs_, level, &Run::level) >=
         (keys_ < goodFilterKeys ? manyRuns : fewRuns);
}

// Replaces the runs of a level by one of the next. The file gives their space back.
Outcome SortedRuns::mergeLevel(unsigned level) {
  const auto others = std::partition(runs_.begin(), runs_.end(),
                                     [level](const Run& run) { return run.level != level; });
  const std::vector<Run> old(std::make_move_iterator(others), std::make_move_iterator(runs_.end()));
  runs_.erase(others, runs_.end());
  RunMerge merge(file_.get(), mergeMemory);
  Run merged{.first = written_, .level = level + 1};
  const std::uint8_t* entry = nullptr;
  Outcome outcome = merge.start(old);
  if (outcome.ok()) outcome = merge.next(entry);
  while (outcome.ok()) {
    outcome = append(merged, entry);
    if (outcome.ok()) outcome = merge.next(entry);
  }
  if (outcome != endOfData) return outcome;
  for (const Run& run : old) {
    releaseSpace(file_.get(), static_cast<off_t>(run.first * entrySize),
                 static_cast<off_t>(run.count * entrySize));
  }
  return finish(merged);
}

Outcome SortedRuns::search(const Key& key) {
  for (const Run& run : runs_) {
    const Outcome outcome = searchRun(run, key);
    if (outcome != recordNotFound) return outcome;
  }
  return recordNotFound;
}

// recordNotFound when the run has no such key.
Outcome SortedRuns::searchRun(const Run& run, const Key& key) {
  const auto behind = std::ranges::upper_bound(run.blocks, key);
  if (behind == run.blocks.begin()) return recordNotFound;
  const auto first = static_cast<std::uint64_t>(behind - run.blocks.begin() - 1) * runBlock;
  const std::uint64_t count = std::min(runBlock, run.count - first);
  const Outcome outcome = readEntries(file_.get(), run.first + first, count, block_);
  if (!outcome.ok()) return outcome;
  for (std::size_t offset = 0; offset < block_.size(); offset += entrySize) {
    if (Key::stored(block_.data() + offset) == key) return succeeded;
  }
  return recordNotFound;
}

Outcome SortedRuns::startReading() {
  if (isInMemory()) {
    buffer_.sort();
    return succeeded;
  }
  const Outcome written = sorted_.count > 0 ? finish(sorted_) : writeRest();
  if (!written.ok()) return written;
  buffer_.release();
  full_.release();
  filter_.clear();
  const Outcome started = reading_.start(runs_);
  ahead_.emplace([this](Batch& batch) { return fill(batch); });
  if (started.ok()) ahead_->start();
  return started;
}

bool SortedRuns::fill(Batch& batch) {
  batch.entries.clear();
  batch.entries.reserve(batchEntries * entrySize);
  const std::uint8_t* entry = nullptr;
  while (batch.entries.size() < batchEntries * entrySize) {
    batch.outcome = reading_.next(entry);
    if (!batch.outcome.ok()) return false;
    batch.entries.insert(batch.entries.end(), entry, entry + entrySize);
  }
  return true;
}

Outcome SortedRuns::next(Key& key, const std::uint8_t*& record) {
  return isInMemory() ? nextInMemory(key, record) : nextOfRuns(key, record);
}

Outcome SortedRuns::nextInMemory(Key& key, const std::uint8_t*& record) {
  if (at_ == buffer_.count()) return endOfData;
  buffer_.prefetch(at_ + entriesAhead);
  const std::uint8_t* entry = buffer_.at(at_++);
  key = Key::stored(entry);
  record = entry + keySize;
  return succeeded;
}

Outcome SortedRuns::nextOfRuns(Key& key, const std::uint8_t*& record) {
  while (at_ == batch_.entries.size()) {
    if (!batch_.outcome.ok()) return batch_.outcome;
    at_ = 0;
    if (!ahead_->take(batch_)) return inputOutputError;
  }
  const std::uint8_t* entry = batch_.entries.data() + at_;
  at_ += entrySize;
  key = Key::stored(entry);
  record = entry + keySize;
  return succeeded;
}

UniqueFd SortedRuns::takeFile() {
  ahead_.reset();
  if (writing_.valid()) writing_.wait();  // after a failure elsewhere, nobody asked for its end
  return std::move(file_);
}

}  // namespace orx::kdb
