#include "platform/kdb/sorted_runs.h"

#include <fcntl.h>

#include <algorithm>
#include <array>
#include <cerrno>

#include "platform/kdb/failure.h"

namespace orx::kdb {

namespace {

constexpr std::uint64_t blockRecords = 100;
constexpr std::size_t writeSize = std::size_t{1} << 20;
constexpr std::size_t windowMemory = std::size_t{8} << 20;
constexpr std::size_t leastWindowRecords = 16;

Key keyOf(const std::uint8_t* entry) {
  return Key::stored(entry);
}

// Whether a is to come out of the heap after b.
constexpr auto comesAfter = [](const auto& a, const auto& b) { return a.key > b.key; };

}  // namespace

Outcome SortedRuns::add(const Key& key, const std::uint8_t* record) {
  if (filter_.mayHold(key)) {
    if (const Outcome outcome = search(key); outcome != recordNotFound) {
      return outcome.ok() ? duplicateKey : outcome;
    }
  }
  if (!buffer_.add(key, record)) return duplicateKey;
  return buffer_.isFull() ? writeBuffer() : succeeded;
}

Outcome SortedRuns::prepareFile() {
  if (file_.valid()) return succeeded;
  file_ = openFile(directory_, O_TMPFILE | O_RDWR, 0600);
  return file_.valid() ? succeeded : outcomeOfErrno(errno);
}

Outcome SortedRuns::writeBuffer() {
  if (buffer_.count() == 0) return succeeded;
  buffer_.sort();
  Run run{written_};
  for (std::size_t i = 0; i < buffer_.count(); ++i) {
    if (const Outcome outcome = append(run, buffer_.at(i)); !outcome.ok()) return outcome;
    filter_.add(keyOf(buffer_.at(i)));
  }
  buffer_.clear();
  return finish(run);
}

Outcome SortedRuns::appendSorted(const Key& key, const std::uint8_t* record) {
  if (sorted_.count == 0) {
    if (const Outcome outcome = writeBuffer(); !outcome.ok()) return outcome;
    sorted_.first = written_;
  }
  std::array<std::uint8_t, entrySize> entry{};
  std::ranges::copy(key.bytes, entry.begin());
  std::copy_n(record, recordSize, entry.begin() + keySize);
  return append(sorted_, entry.data());
}

Outcome SortedRuns::append(Run& run, const std::uint8_t* entry) {
  if (run.count % blockRecords == 0) run.blocks.push_back(keyOf(entry));
  ++run.count;
  ++written_;
  pending_.insert(pending_.end(), entry, entry + entrySize);
  return pending_.size() < writeSize ? succeeded : flush();
}

Outcome SortedRuns::finish(Run& run) {
  runs_.push_back(std::move(run));
  return flush();
}

Outcome SortedRuns::flush() {
  if (const Outcome outcome = prepareFile(); !outcome.ok()) return outcome;
  const int error = writeAll(file_.get(), pending_);
  pending_.clear();
  return outcomeOfErrno(error);
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
  const auto first = static_cast<std::uint64_t>(behind - run.blocks.begin() - 1) * blockRecords;
  const std::uint64_t count = std::min(blockRecords, run.count - first);
  if (const Outcome outcome = readEntries(run.first + first, count, block_); !outcome.ok()) {
    return outcome;
  }
  for (std::size_t offset = 0; offset < block_.size(); offset += entrySize) {
    if (keyOf(block_.data() + offset) == key) return succeeded;
  }
  return recordNotFound;
}

Outcome SortedRuns::readEntries(std::uint64_t first, std::uint64_t count,
                                std::vector<std::uint8_t>& entries) const {
  entries.resize(count * entrySize);
  const ssize_t size =
      readAt(file_.get(), entries.data(), entries.size(), static_cast<off_t>(first * entrySize));
  if (size < 0) return outcomeOfErrno(errno);
  return static_cast<std::size_t>(size) == entries.size() ? succeeded : outcomeOfErrno(EIO);
}

Outcome SortedRuns::startReading() {
  const Outcome written = sorted_.count > 0 ? finish(sorted_) : writeBuffer();
  if (!written.ok()) return written;
  buffer_.release();
  filter_.clear();
  const std::size_t share = windowMemory / entrySize / std::max<std::size_t>(runs_.size(), 1);
  windowRecords_ = std::max(share, leastWindowRecords);
  for (const Run& run : runs_) {
    readers_.push_back({run.first, run.first + run.count});
    if (const Outcome outcome = fillWindow(readers_.back()); !outcome.ok()) return outcome;
    pushIntoHeap(readers_.size() - 1);
  }
  return succeeded;
}

// The reader stands on the first record of its next window afterwards.
Outcome SortedRuns::fillWindow(Reader& reader) const {
  const std::uint64_t count = std::min<std::uint64_t>(windowRecords_, reader.end - reader.next);
  const Outcome outcome = readEntries(reader.next, count, reader.window);
  reader.next += count;
  reader.offset = 0;
  return outcome;
}

void SortedRuns::pushIntoHeap(std::size_t reader) {
  const std::uint8_t* entry = readers_[reader].window.data() + readers_[reader].offset;
  heap_.push_back({SortKey::of(keyOf(entry)), reader});
  std::ranges::push_heap(heap_, comesAfter);
}

Outcome SortedRuns::next(Key& key, const std::uint8_t*& record) {
  if (frontIsTaken_) {
    if (const Outcome outcome = stepFront(); !outcome.ok()) return outcome;
  }
  frontIsTaken_ = !heap_.empty();
  if (heap_.empty()) return endOfData;
  const Reader& reader = readers_[heap_.front().reader];
  const std::uint8_t* entry = reader.window.data() + reader.offset;
  key = keyOf(entry);
  record = entry + keySize;
  return succeeded;
}

// Puts the reader of the record that was given last back into its place.
Outcome SortedRuns::stepFront() {
  const std::size_t number = heap_.front().reader;
  std::ranges::pop_heap(heap_, comesAfter);
  heap_.pop_back();
  Reader& reader = readers_[number];
  reader.offset += entrySize;
  if (reader.offset == reader.window.size()) {
    if (reader.next == reader.end) return succeeded;
    if (const Outcome outcome = fillWindow(reader); !outcome.ok()) return outcome;
  }
  pushIntoHeap(number);
  return succeeded;
}

}  // namespace orx::kdb
