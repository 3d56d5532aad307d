#include "platform/kdb/run_merge.h"

#include <algorithm>
#include <cerrno>

#include "platform/file.h"
#include "platform/kdb/failure.h"

namespace orx::kdb {

namespace {

constexpr std::size_t leastWindowEntries = 16;

}  // namespace

Outcome readEntries(int fd, std::uint64_t first, std::uint64_t count,
                    std::vector<std::uint8_t>& entries) {
  entries.resize(count * entrySize);
  const ssize_t size =
      readAt(fd, entries.data(), entries.size(), static_cast<off_t>(first * entrySize));
  if (size < 0) return outcomeOfErrno(errno);
  return static_cast<std::size_t>(size) == entries.size() ? succeeded : inputOutputError;
}

Outcome RunMerge::start(const std::vector<Run>& runs) {
  const std::size_t share = memory_ / entrySize / std::max<std::size_t>(runs.size(), 1);
  windowEntries_ = std::max(share, leastWindowEntries);
  for (const Run& run : runs) {
    readers_.push_back({run.first, run.first + run.count});
    if (const Outcome outcome = fillWindow(readers_.back()); !outcome.ok()) return outcome;
    pushIntoHeap(readers_.size() - 1);
  }
  return succeeded;
}

// The reader stands on the first entry of its next window afterwards.
Outcome RunMerge::fillWindow(Reader& reader) const {
  const std::uint64_t count = std::min<std::uint64_t>(windowEntries_, reader.end - reader.next);
  const Outcome outcome = readEntries(fd_, reader.next, count, reader.window);
  reader.next += count;
  reader.offset = 0;
  return outcome;
}

void RunMerge::pushIntoHeap(std::size_t reader) {
  const std::uint8_t* entry = readers_[reader].window.data() + readers_[reader].offset;
  heap_.push_back({SortKey::of(Key::stored(entry)), reader});
  std::ranges::push_heap(heap_, comesAfter);
}

Outcome RunMerge::next(const std::uint8_t*& entry) {
  if (frontIsTaken_) {
    if (const Outcome outcome = stepFront(); !outcome.ok()) return outcome;
  }
  frontIsTaken_ = !heap_.empty();
  if (heap_.empty()) return endOfData;
  const Reader& reader = readers_[heap_.front().reader];
  entry = reader.window.data() + reader.offset;
  return succeeded;
}

// Puts the reader of the entry that was given last back into its place.
Outcome RunMerge::stepFront() {
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
