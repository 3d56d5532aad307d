#include "platform/kdb/tree_file.h"

#include <fcntl.h>

#include <algorithm>
#include <array>
#include <bit>
#include <cerrno>
#include <cstring>
#include <utility>

#include "platform/bytes.h"
#include "platform/kdb/failure.h"
#include "platform/kdb/tree_format.h"

namespace orx::kdb {

namespace fmt = tree_format;

namespace {

constexpr std::uint64_t readAheadPages = 64;
// How far apart two leaves may lie in the file and still count as following each other.
constexpr std::uint64_t readAheadGap = 3;

bool isMeta(const std::uint8_t* page) {
  return (loadLE16(page + fmt::pageFlags) & fmt::kindMask) == fmt::metaPage &&
         loadLE32(page + fmt::metaMagic) == fmt::magic &&
         loadLE32(page + fmt::metaVersion) == fmt::version;
}

// Transactions write the two metas in turn, page 0 the even ones.
bool followEachOther(const std::uint8_t* first, const std::uint8_t* second) {
  const std::uint64_t even = loadLE64(first + fmt::metaTransaction);
  const std::uint64_t odd = loadLE64(second + fmt::metaTransaction);
  if (even == 0 && odd == 0) return true;  // nothing was ever written
  return even % 2 == 0 && (even + 1 == odd || odd + 1 == even);
}

bool isPageSize(std::uint64_t size) {
  return size >= 512 && size <= 65536 && std::has_single_bit(size);
}

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

Outcome TreeFile::open(UniqueFd fd, std::shared_ptr<const TreeFile>& tree) {
  auto loaded = std::make_shared<TreeFile>();
  loaded->fd_ = std::move(fd);
  if (const Outcome outcome = loaded->loadMeta(); !outcome.ok()) return outcome;
  (void)::posix_fadvise(loaded->fd(), 0, 0, POSIX_FADV_SEQUENTIAL);
  tree = std::move(loaded);
  return succeeded;
}

bool TreeFile::beginsLikeTree(int fd) {
  std::array<std::uint8_t, fmt::metaEnd> first{};
  return readAt(fd, first.data(), first.size(), 0) > 0 && isMeta(first.data());
}

Outcome TreeFile::loadMeta() {
  std::array<std::uint8_t, fmt::metaEnd> first{};
  std::array<std::uint8_t, fmt::metaEnd> second{};
  if (readAt(fd(), first.data(), first.size(), 0) < 0) return outcomeOfErrno(errno);
  if (!isMeta(first.data())) return notADatabase;
  pageSize_ = loadLE32(first.data() + fmt::metaFreeTable + fmt::tablePageSize);
  if (!isPageSize(pageSize_)) return notADatabase;
  if (const Outcome outcome = read(1, second); !outcome.ok()) return outcome;
  if (!isMeta(second.data()) || !followEachOther(first.data(), second.data())) return notADatabase;
  const bool secondIsNewer = loadLE64(second.data() + fmt::metaTransaction) >
                             loadLE64(first.data() + fmt::metaTransaction);
  return takeMeta(secondIsNewer ? second.data() : first.data());
}

Outcome TreeFile::takeMeta(const std::uint8_t* meta) {
  const std::uint8_t* table = meta + fmt::metaMainTable;
  lastPage_ = loadLE64(meta + fmt::metaLastPage);
  root_ = loadLE64(table + fmt::tableRoot);
  depth_ = loadLE16(table + fmt::tableDepth);
  entries_ = loadLE64(table + fmt::tableEntries);
  if (loadLE16(table + fmt::tableFlags) != 0 || depth_ > fmt::maximumDepth) return notADatabase;
  if ((root_ == fmt::noPage) != (depth_ == 0) || (depth_ == 0) != (entries_ == 0)) {
    return notADatabase;
  }
  struct stat file {};
  if (::fstat(fd(), &file) != 0) return outcomeOfErrno(errno);
  const auto pages = static_cast<std::uint64_t>(file.st_size) / pageSize_;
  return lastPage_ < pages ? succeeded : notADatabase;
}

Outcome TreeFile::read(std::uint64_t first, std::span<std::uint8_t> pages) const {
  const ssize_t count =
      readAt(fd(), pages.data(), pages.size(), static_cast<off_t>(first * pageSize_));
  if (count < 0) return outcomeOfErrno(errno);
  return static_cast<std::size_t>(count) == pages.size() ? succeeded : notADatabase;
}

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
    const std::uint64_t wanted = follows ? readAheadPages : 1;
    windowCount_ = std::min(wanted, tree_->lastPage() + 1 - page);
    windowFirst_ = page;
    window_.resize(readAheadPages * pageSize);
    const Outcome outcome = tree_->read(
        page, std::span(window_).first(static_cast<std::size_t>(windowCount_) * pageSize));
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
  return descend(childPage(branch.page.data(), branch.index), level, nullptr);
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
