#include "messages/resource_file.h"

#include <fcntl.h>

#include <array>
#include <cstdint>
#include <cstring>
#include <filesystem>
#include <system_error>

#include "platform/bytes.h"
#include "platform/file.h"

namespace orx {

namespace {

constexpr std::size_t magicAt = 2;
constexpr std::size_t formatAt = 12;
constexpr std::size_t smallestHead = 24;
constexpr std::size_t lengthWord = 4;  // counted from the root item
constexpr std::size_t wordSize = 4;

bool headIsSound(const std::array<std::uint8_t, smallestHead>& head) {
  return head[magicAt] == 0xDA && head[magicAt + 1] == 0x27 &&
         std::memcmp(head.data() + formatAt, "ResB", 4) == 0 &&
         loadLE16(head.data()) >= smallestHead;
}

bool isWhole(const std::string& path) {
  const UniqueFd file = openFile(path, O_RDONLY | O_NONBLOCK);
  struct stat status {};
  if (!file.valid() || ::fstat(file.get(), &status) != 0 || !S_ISREG(status.st_mode)) return false;
  std::array<std::uint8_t, smallestHead> head{};
  std::array<std::uint8_t, (lengthWord + 1) * wordSize> words{};
  if (readAt(file.get(), head.data(), head.size(), 0) < static_cast<ssize_t>(head.size()) ||
      !headIsSound(head)) {
    return false;
  }
  const off_t headSize = loadLE16(head.data());
  if (readAt(file.get(), words.data(), words.size(), headSize) <
      static_cast<ssize_t>(words.size())) {
    return false;
  }
  const auto length = off_t{loadLE32(words.data() + lengthWord * wordSize)} * off_t{wordSize};
  return status.st_size >= headSize + length;
}

}  // namespace

bool resourceFilesAreWhole(const std::string& directory) {
  std::error_code failure;
  for (std::filesystem::directory_iterator entry(directory, failure), end; !failure && entry != end;
       entry.increment(failure)) {
    if (entry->path().extension() == ".res" && !isWhole(entry->path().string())) return false;
  }
  return true;
}

}  // namespace orx
