#include "platform/kdb/tree_file.h"

#include <fcntl.h>

#include <array>
#include <bit>
#include <cerrno>
#include <utility>

#include "platform/bytes.h"
#include "platform/kdb/failure.h"
#include "platform/kdb/tree_format.h"

namespace orx::kdb {

namespace fmt = tree_format;

namespace {

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

}  // namespace orx::kdb
