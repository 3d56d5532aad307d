// DataBuffer: one record of the configuration database, 296 bytes exactly as they are stored.
// Numbers are 32-bit little-endian, handles 8 raw bytes; the first 20 bytes are the record's key. A
// new one is all zero. Any 296 bytes are a record: nothing here checks them.
#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <span>
#include <string_view>
#include <type_traits>

#include "model/config_handle.h"
#include "platform/bytes.h"
#include "platform/kdb.h"

namespace orx {

namespace data_layout {
inline constexpr std::size_t attrTextSize = 256;

inline constexpr std::size_t parentHandle = 0;
inline constexpr std::size_t objectHandle = parentHandle + handleSize;
inline constexpr std::size_t recn = objectHandle + handleSize;
inline constexpr std::size_t keySize = recn + 4;
inline constexpr std::size_t recType = keySize;
inline constexpr std::size_t modelHandle = recType + 4;
inline constexpr std::size_t auxValue1 = modelHandle + handleSize;
inline constexpr std::size_t attrText = auxValue1 + 4;
inline constexpr std::size_t auxValue2 = attrText + attrTextSize;
inline constexpr std::size_t recordSize = auxValue2 + 4;

static_assert(keySize == 20 && keySize == kdb::keySize);
static_assert(modelHandle == 24 && attrText == 36 && auxValue2 == 292);
static_assert(recordSize == 296 && recordSize == kdb::recordSize);
}  // namespace data_layout

class DataBuffer {
 public:
  using Key = std::span<const std::uint8_t, data_layout::keySize>;
  using AttrText = std::span<const std::uint8_t, data_layout::attrTextSize>;

  // All bytes zero.
  void clear() { bytes_.fill(0); }

  [[nodiscard]] std::uint8_t* data() { return bytes_.data(); }
  [[nodiscard]] const std::uint8_t* data() const { return bytes_.data(); }
  [[nodiscard]] static constexpr std::size_t size() { return data_layout::recordSize; }
  // Views of the record; they live as long as it does.
  [[nodiscard]] Key key() const { return Key(bytes_.data(), data_layout::keySize); }

  [[nodiscard]] HandleBytes parentBytes() const { return handleAt(data_layout::parentHandle); }
  [[nodiscard]] HandleBytes objectBytes() const { return handleAt(data_layout::objectHandle); }
  [[nodiscard]] HandleBytes modelBytes() const { return handleAt(data_layout::modelHandle); }
  [[nodiscard]] CMConfigHandle parentHandle() const { return CMConfigHandle(parentBytes()); }
  [[nodiscard]] CMConfigHandle objectHandle() const { return CMConfigHandle(objectBytes()); }
  [[nodiscard]] CMConfigHandle modelHandle() const { return CMConfigHandle(modelBytes()); }
  // Whether both handles are those of `other`: records of one object.
  [[nodiscard]] bool isOfSameObject(const DataBuffer& other) const {
    return std::memcmp(data(), other.data(), data_layout::recn) == 0;
  }
  [[nodiscard]] bool hasNullObject() const { return loadLE64(at(data_layout::objectHandle)) == 0; }
  [[nodiscard]] bool hasNullHandles() const {  // parent and object
    return loadLE64(at(data_layout::parentHandle)) == 0 && hasNullObject();
  }
  void setParentHandle(const CMConfigHandle& handle) { put(data_layout::parentHandle, handle); }
  void setObjectHandle(const CMConfigHandle& handle) { put(data_layout::objectHandle, handle); }
  void setModelHandle(const CMConfigHandle& handle) { put(data_layout::modelHandle, handle); }

  // Number of the record within its object's chain: 0 for the head, then 1, 2, ...
  [[nodiscard]] std::uint32_t recn() const { return loadLE32(at(data_layout::recn)); }
  [[nodiscard]] std::int32_t recType() const { return numberAt(data_layout::recType); }
  [[nodiscard]] std::int32_t auxValue1() const { return numberAt(data_layout::auxValue1); }
  [[nodiscard]] std::int32_t auxValue2() const { return numberAt(data_layout::auxValue2); }
  void setRecn(std::uint32_t value) { storeLE32(at(data_layout::recn), value); }
  void setRecType(std::int32_t value) { putNumber(data_layout::recType, value); }
  void setAuxValue1(std::int32_t value) { putNumber(data_layout::auxValue1, value); }
  void setAuxValue2(std::int32_t value) { putNumber(data_layout::auxValue2, value); }

  // All 256 bytes of the chunk.
  [[nodiscard]] AttrText attrText() const {
    return AttrText(at(data_layout::attrText), data_layout::attrTextSize);
  }
  // The chunk up to its first zero byte; a full chunk has none.
  [[nodiscard]] std::string_view text() const {
    const char* start = static_cast<const char*>(static_cast<const void*>(attrText().data()));
    return {start, ::strnlen(start, data_layout::attrTextSize)};
  }
  // Takes the first 256 bytes of `text`; zeros fill the rest of the chunk.
  void setAttrText(std::string_view text) {
    const std::size_t count = std::min(text.size(), data_layout::attrTextSize);
    std::uint8_t* const start = at(data_layout::attrText);
    if (count != 0) std::memcpy(start, text.data(), count);  // a copy by characters takes 600 steps
    std::memset(start + count, 0, data_layout::attrTextSize - count);
  }

  friend bool operator==(const DataBuffer&, const DataBuffer&) = default;

 private:
  [[nodiscard]] std::uint8_t* at(std::size_t offset) { return bytes_.data() + offset; }
  [[nodiscard]] const std::uint8_t* at(std::size_t offset) const { return bytes_.data() + offset; }
  [[nodiscard]] HandleBytes handleAt(std::size_t offset) const {
    HandleBytes handle;
    std::copy_n(at(offset), handleSize, handle.begin());
    return handle;
  }
  void put(std::size_t offset, const CMConfigHandle& handle) {
    std::copy_n(handle.bytes().begin(), handleSize, at(offset));
  }
  [[nodiscard]] std::int32_t numberAt(std::size_t offset) const {
    return static_cast<std::int32_t>(loadLE32(at(offset)));
  }
  void putNumber(std::size_t offset, std::int32_t value) {
    storeLE32(at(offset), static_cast<std::uint32_t>(value));
  }

  std::array<std::uint8_t, data_layout::recordSize> bytes_{};
};

static_assert(sizeof(DataBuffer) == data_layout::recordSize);
static_assert(std::is_trivially_copyable_v<DataBuffer>);

}  // namespace orx
