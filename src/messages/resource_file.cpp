#include "messages/resource_file.h"

#include <fcntl.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <vector>

#include "platform/bytes.h"
#include "platform/file.h"

namespace orx {

namespace {

constexpr std::size_t magicAt = 2;
constexpr std::size_t formatAt = 12;
constexpr std::size_t versionAt = 16;
constexpr std::size_t smallestHead = 24;
constexpr std::size_t wordSize = 4;
constexpr std::size_t unitSize = 2;
constexpr off_t largestFile = off_t{64} << 20;

enum Index : std::size_t { indexCount = 0, keysEnd = 1, fileEnd = 3, flags = 5, unitsEnd = 6 };
constexpr std::size_t leastIndexes = 5;
constexpr std::uint32_t noFallbackFlag = 1;

enum class ItemType : std::uint8_t {
  text = 0,
  binary = 1,
  table = 2,
  alias = 3,
  wideTable = 4,
  unitTable = 5,
  unitText = 6,
  number = 7,
  array = 8,
  unitArray = 9,
  numbers = 14,
};

struct Item {
  explicit Item(std::uint32_t word)
      : type(static_cast<ItemType>(word >> 28)), offset(word & 0x0FFFFFFF) {}
  ItemType type;
  std::size_t offset;
};

// The part behind the head. What leads out of it makes it unsound.
class ResourceBody {
 public:
  ResourceBody(const std::uint8_t* bytes, std::size_t size) : bytes_(bytes), size_(size) {}

  [[nodiscard]] bool isSound() {
    readIndexes();
    if (sound_) checkRoot();
    return sound_;
  }

 private:
  void require(bool condition) { sound_ = sound_ && condition; }

  std::uint32_t word(std::size_t index) {
    const bool there = index < size_ / wordSize;
    require(there);
    return there ? loadLE32(bytes_ + index * wordSize) : 0;
  }
  std::uint32_t halfWord(std::size_t offset) {
    const bool there = offset <= size_ - unitSize;
    require(there);
    return there ? loadLE16(bytes_ + offset) : 0;
  }
  std::uint32_t unit(std::size_t index) {
    const bool there = index < unitCount_;
    require(there);
    return there ? loadLE16(bytes_ + unitsBegin_ + index * unitSize) : 0;
  }
  std::uint32_t index(Index which) { return which < indexes_ ? word(1 + which) : 0; }

  void readIndexes() {
    indexes_ = word(1) & 0xFF;
    require(indexes_ >= leastIndexes && word(1) >> 8 == 0);
    require(index(fileEnd) <= size_ / wordSize);
    require((index(flags) & ~noFallbackFlag) == 0);
    keysBegin_ = (1 + indexes_) * wordSize;
    keysEnd_ = std::size_t{index(keysEnd)} * wordSize;
    require(keysEnd_ >= keysBegin_ && keysEnd_ <= size_);
    unitsBegin_ = keysEnd_;
    const std::size_t end = std::size_t{index(unitsEnd)} * wordSize;
    require(end <= size_);
    if (sound_) findEnds(std::max(end, unitsBegin_));
  }

  // Every key and text in front of the last NUL ends in one.
  void findEnds(std::size_t end) {
    while (keysEnd_ > keysBegin_ && bytes_[keysEnd_ - 1] != 0) --keysEnd_;
    unitCount_ = (end - unitsBegin_) / unitSize;
    textsEnd_ = unitCount_;
    while (textsEnd_ > 0 && unit(textsEnd_ - 1) != 0) --textsEnd_;
  }

  void checkRoot() {
    const Item root(word(0));
    switch (root.type) {
      case ItemType::table:
        return checkTable(root.offset * wordSize);
      case ItemType::wideTable:
        return checkWideTable(root.offset);
      case ItemType::unitTable:
        return checkUnitTable(root.offset);
      default:
        require(false);
    }
  }

  // Keys of a unit each, filled up to a whole word together with their count.
  void checkTable(std::size_t at) {
    if (at == 0) return;
    const std::size_t count = halfWord(at);
    const std::size_t items = at / wordSize + count / 2 + 1;
    for (std::size_t i = 0; sound_ && i < count; ++i) {
      checkKey(halfWord(at + (1 + i) * unitSize));
      checkItem(Item(word(items + i)));
    }
  }

  void checkWideTable(std::size_t at) {
    if (at == 0) return;
    const std::size_t count = word(at);
    for (std::size_t i = 0; sound_ && i < count; ++i) {
      checkKey(word(at + 1 + i));
      checkItem(Item(word(at + 1 + count + i)));
    }
  }

  void checkUnitTable(std::size_t at) {
    const std::size_t count = unit(at);
    for (std::size_t i = 0; sound_ && i < count; ++i) {
      checkKey(unit(at + 1 + i));
      checkUnitText(unit(at + 1 + count + i));
    }
  }

  void checkKey(std::size_t at) { require(at >= keysBegin_ && at < keysEnd_); }

  // What holds other items is never looked into, but ICU counts them.
  void checkItem(Item item) {
    switch (item.type) {
      case ItemType::text:
        return checkText(item.offset);
      case ItemType::unitText:
        return checkUnitText(item.offset);
      case ItemType::table:
      case ItemType::wideTable:
      case ItemType::array:
        return static_cast<void>(word(item.offset));
      case ItemType::unitTable:
      case ItemType::unitArray:
        return static_cast<void>(unit(item.offset));
      case ItemType::binary:
      case ItemType::number:
      case ItemType::numbers:
        return;
      case ItemType::alias:
        break;
    }
    require(false);
  }

  void checkText(std::size_t at) {
    if (at == 0) return;
    const std::size_t length = word(at);
    const std::size_t end = (at + 1) * wordSize + length * unitSize;
    require(halfWord(end) == 0);
  }

  void checkUnitText(std::size_t at) {
    if (at == 0 && unitCount_ == 0) return;  // the empty text that is there all the same
    const std::uint32_t first = unit(at);
    if (first < 0xDC00 || first > 0xDFFF) return require(at < textsEnd_);
    if (first < 0xDFEF) return require(unit(at + 1 + (first & 0x3FF)) == 0);
    if (first < 0xDFFF) {
      const std::size_t length = std::size_t{first - 0xDFEF} << 16 | unit(at + 1);
      return require(unit(at + 2 + length) == 0);
    }
    const std::size_t length = std::size_t{unit(at + 1)} << 16 | unit(at + 2);
    require(unit(at + 3 + length) == 0);
  }

  const std::uint8_t* bytes_;
  std::size_t size_;
  bool sound_ = true;
  std::size_t indexes_ = leastIndexes;
  std::size_t keysBegin_ = 0;  // of the body, in bytes, as the two that follow
  std::size_t keysEnd_ = 0;
  std::size_t unitsBegin_ = 0;
  std::size_t unitCount_ = 0;
  std::size_t textsEnd_ = 0;  // in units
};

bool headIsSound(const std::vector<std::uint8_t>& file) {
  return file.size() >= smallestHead && file[magicAt] == 0xDA && file[magicAt + 1] == 0x27 &&
         std::memcmp(file.data() + formatAt, "ResB", 4) == 0 &&
         (file[versionAt] == 2 || file[versionAt] == 3) && loadLE16(file.data()) >= smallestHead &&
         loadLE16(file.data()) <= file.size();
}

// Empty when it cannot be read.
std::vector<std::uint8_t> contentOf(const std::string& path) {
  const UniqueFd file = openFile(path, O_RDONLY | O_NONBLOCK);
  struct stat status {};
  if (!file.valid() || ::fstat(file.get(), &status) != 0 || !S_ISREG(status.st_mode) ||
      status.st_size > largestFile) {
    return {};
  }
  std::vector<std::uint8_t> content(static_cast<std::size_t>(status.st_size));
  const ssize_t size = readAt(file.get(), content.data(), content.size(), 0);
  content.resize(static_cast<std::size_t>(std::max<ssize_t>(size, 0)));
  return content;
}

bool isSound(const std::string& path) {
  const std::vector<std::uint8_t> file = contentOf(path);
  if (!headIsSound(file)) return false;
  const std::size_t headSize = loadLE16(file.data());
  return ResourceBody(file.data() + headSize, file.size() - headSize).isSound();
}

}  // namespace

bool resourceFilesAreSound(const std::string& directory) {
  const std::vector<std::string> names = namesIn(directory);
  return std::ranges::all_of(names, [&directory](const std::string& name) {
    return !name.ends_with(".res") || isSound(directory + "/" + name);
  });
}

}  // namespace orx
