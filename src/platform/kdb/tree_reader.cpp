#include "platform/kdb/tree_reader.h"

#include <algorithm>
#include <span>
#include <utility>

#include "platform/bytes.h"
#include "platform/kdb/failure.h"
#include "platform/kdb/tree_format.h"

namespace orx::kdb {

namespace fmt = tree_format;

namespace {

// A pass reads more leaves at a time the longer it goes on.
constexpr std::uint64_t mostReadAhead = 64;
// How far apart two leaves may lie in the file and still count as following each other.
constexpr std::uint64_t readAheadGap = 3;

// The head of a page of records or of a branch: kind, number, and node offsets that fit.
bool headIsSound(const std::uint8_t* page, std::size_t pageSize, std::uint64_t number,
                 std::uint16_t kind) {
  const std::size_t lower = loadLE16(page + fmt::pageLower);
  const std::size_t upper = loadLE16(page + fmt::pageUpper);
  return (loadLE16(page + fmt::pageFlags) & fmt::kindMask) == kind &&
         loadLE64(page + fmt::pageNumber) == number && lower > fmt::pageHeaderSize &&
         lower % 2 == 0 && lower <= upper && upper <= pageSize;
}

std::size_t nodeCount(const std::uint8_t* page) {
  return (loadLE16(page + fmt::pageLower) - fmt::pageHeaderSize) / 2;
}

std::size_t nodeOffset(const std::uint8_t* page, std::size_t index) {
  return loadLE16(page + fmt::pageHeaderSize + 2 * index);
}

std::uint32_t dataSize(const std::uint8_t* node) {
  return std::uint32_t{loadLE16(node + fmt::nodeLow)} |
         std::uint32_t{loadLE16(node + fmt::nodeHigh)} << 16;
}

std::uint64_t childPage(const std::uint8_t* page, std::size_t index) {
  const std::uint8_t* node = page + nodeOffset(page, index);
  return std::uint64_t{dataSize(node)} | std::uint64_t{loadLE16(node + fmt::nodeFlags)} << 32;
}

Key branchKey(const std::uint8_t* page, std::size_t index) {
  return Key::stored(page + nodeOffset(page, index) + fmt::nodeHeaderSize);
}

// The first node of a branch stands for everything below the second and needs no key.
bool branchNodeIsSound(const std::uint8_t* page, std::size_t pageSize, std::size_t index) {
  const std::size_t offset = nodeOffset(page, index);
  if (offset < fmt::pageHeaderSize || offset + fmt::nodeHeaderSize > pageSize) return false;
  const std::size_t size = loadLE16(page + offset + fmt::nodeKeySize);
  return offset + fmt::nodeHeaderSize + size <= pageSize && (index == 0 || size == keySize);
}

// The last child whose keys may reach `key`: the first whose own key lies behind it, less one.
std::size_t childIndexFor(const std::uint8_t* page, std::size_t count, const Key& key) {
  std::size_t low = 1;
  std::size_t high = count;
  while (low < high) {
    const std::size_t middle = low + (high - low) / 2;
    if (branchKey(page, middle) <= key) {
      low = middle + 1;
    } else {
      high = middle;
    }
  }
  return low - 1;
}

bool leafNodeIsSound(const std::uint8_t* page, std::size_t pageSize, std::size_t index) {
  const std::size_t offset = nodeOffset(page, index);
  if (offset < fmt::pageHeaderSize ||
      offset + fmt::nodeHeaderSize + keySize + recordSize > pageSize) {
    return false;
  }
  const std::uint8_t* node = page + offset;
  return loadLE16(node + fmt::nodeFlags) == 0 && loadLE16(node + fmt::nodeKeySize) == keySize &&
         dataSize(node) == recordSize;
}

}  // namespace

TreeReader::TreeReader(std::shared_ptr<const TreeFile> tree)
    : tree_(std::move(tree)), branches_(tree_->depth() > 1 ? tree_->depth() - 1 : 0) {}

Outcome TreeReader::fail(Outcome outcome) {
  failure_ = outcome;
  return outcome;
}

Outcome TreeReader::seekFirst() {
  positioned_ = wholeScan_ = true;
  haveLastKey_ = false;
  seen_ = 0;
  leafIndex_ = leafCount_ = 0;
  if (tree_->depth() == 0) return succeeded;
  return descend(tree_->root(), 0, nullptr);
}

Outcome TreeReader::seek(const Key& key) {
  if (!failure_.ok()) return failure_;
  wholeScan_ = false;
  if (tree_->depth() == 0) {
    positioned_ = true;
    return succeeded;
  }
  if (!positioned_ || !leafCovers(key)) {
    haveLastKey_ = false;
    if (const Outcome outcome = descend(tree_->root(), 0, &key); !outcome.ok()) return outcome;
    positioned_ = true;
  }
  leafIndex_ = lowerBoundInLeaf(key);
  return succeeded;
}

Outcome TreeReader::next(Key& key, const std::uint8_t*& record) {
  if (!failure_.ok()) return failure_;
  if (!positioned_) {
    if (const Outcome outcome = seekFirst(); !outcome.ok()) return outcome;
  }
  if (leafIndex_ == leafCount_) {
    if (const Outcome outcome = nextLeaf(); !outcome.ok()) return outcome;
  }
  const std::uint8_t* node = leaf_ + nodeOffset(leaf_, leafIndex_) + fmt::nodeHeaderSize;
  key = Key::stored(node);
  record = node + keySize;
  ++leafIndex_;
  ++seen_;
  return succeeded;
}

// Down to a leaf: along the first children, or along those that `key` belongs to.
Outcome TreeReader::descend(std::uint64_t page, std::size_t level, const Key* key) {
  for (; level < branches_.size(); ++level) {
    Level& branch = branches_[level];
    if (const Outcome outcome = loadBranch(page, branch); !outcome.ok()) return outcome;
    if (key != nullptr) branch.index = childIndexFor(branch.page.data(), branch.count, *key);
    page = childPage(branch.page.data(), branch.index);
  }
  return loadLeaf(page);
}

Outcome TreeReader::loadBranch(std::uint64_t page, Level& level) {
  if (page < fmt::firstDataPage || page > tree_->lastPage()) return fail(notADatabase);
  if (page == level.number) {
    level.index = 0;
    return succeeded;
  }
  level.number = 0;
  level.page.resize(tree_->pageSize());
  if (const Outcome outcome = tree_->read(page, level.page); !outcome.ok()) return fail(outcome);
  const std::uint8_t* bytes = level.page.data();
  if (!headIsSound(bytes, tree_->pageSize(), page, fmt::branchPage)) return fail(notADatabase);
  level.index = 0;
  level.count = nodeCount(bytes);
  for (std::size_t i = 0; i < level.count; ++i) {
    if (!branchNodeIsSound(bytes, tree_->pageSize(), i)) return fail(notADatabase);
    if (i > 1 && branchKey(bytes, i - 1) >= branchKey(bytes, i)) return fail(notADatabase);
  }
  level.number = page;
  return succeeded;
}

Outcome TreeReader::loadLeaf(std::uint64_t page) {
  if (page < fmt::firstDataPage || page > tree_->lastPage()) return fail(notADatabase);
  if (const Outcome outcome = fetchLeaf(page); !outcome.ok()) return fail(outcome);
  if (!headIsSound(leaf_, tree_->pageSize(), page, fmt::leafPage)) return fail(notADatabase);
  leafIndex_ = 0;
  leafCount_ = nodeCount(leaf_);
  if (const Outcome outcome = checkLeaf(); !outcome.ok()) return fail(outcome);
  lastKey_ = leafKey(leafCount_ - 1);
  haveLastKey_ = true;
  return succeeded;
}

Outcome TreeReader::fetchLeaf(std::uint64_t page) {
  const std::size_t pageSize = tree_->pageSize();
  if (page < windowFirst_ || page >= windowFirst_ + windowCount_) {
    const std::uint64_t end = windowFirst_ + windowCount_;
    const bool follows = windowCount_ > 0 && page >= end && page < end + readAheadGap;
    readAhead_ = follows ? std::min(2 * readAhead_, mostReadAhead) : 1;
    windowCount_ = std::min(readAhead_, tree_->lastPage() + 1 - page);
    windowFirst_ = page;
    const std::size_t size = static_cast<std::size_t>(windowCount_) * pageSize;
    if (window_.size() < size) window_.resize(size);
    const Outcome outcome = tree_->read(page, std::span(window_).first(size));
    if (!outcome.ok()) return outcome;
  }
  leaf_ = window_.data() + static_cast<std::size_t>(page - windowFirst_) * pageSize;
  return succeeded;
}

// Keys ascend within a leaf and from one leaf to the next, so a damaged tree can't lead in circles.
Outcome TreeReader::checkLeaf() const {
  for (std::size_t i = 0; i < leafCount_; ++i) {
    if (!leafNodeIsSound(leaf_, tree_->pageSize(), i)) return notADatabase;
    if (i > 0 ? leafKey(i - 1) >= leafKey(i) : haveLastKey_ && lastKey_ >= leafKey(0)) {
      return notADatabase;
    }
  }
  return succeeded;
}

Outcome TreeReader::nextLeaf() {
  std::size_t level = branches_.size();
  while (level > 0 && branches_[level - 1].index + 1 >= branches_[level - 1].count) --level;
  if (level == 0) {
    return wholeScan_ && seen_ != tree_->entries() ? fail(notADatabase) : endOfData;
  }
  Level& branch = branches_[level - 1];
  ++branch.index;
  // Look-ups go by the key between two leaves: it must lie between them.
  const Key between = branchKey(branch.page.data(), branch.index);
  if (lastKey_ >= between) return fail(notADatabase);
  const Outcome outcome = descend(childPage(branch.page.data(), branch.index), level, nullptr);
  return outcome.ok() && between > leafKey(0) ? fail(notADatabase) : outcome;
}

Key TreeReader::leafKey(std::size_t index) const {
  return Key::stored(leaf_ + nodeOffset(leaf_, index) + fmt::nodeHeaderSize);
}

bool TreeReader::leafCovers(const Key& key) const {
  return leafCount_ > 0 && leafKey(0) <= key && key <= leafKey(leafCount_ - 1);
}

std::size_t TreeReader::lowerBoundInLeaf(const Key& key) const {
  std::size_t low = 0;
  std::size_t high = leafCount_;
  while (low < high) {
    const std::size_t middle = low + (high - low) / 2;
    if (leafKey(middle) < key) {
      low = middle + 1;
    } else {
      high = middle;
    }
  }
  return low;
}

}  // namespace orx::kdb
