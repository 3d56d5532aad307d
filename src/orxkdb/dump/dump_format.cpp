#include "orxkdb/dump/dump_format.h"

#include <algorithm>

#include "platform/bytes.h"

namespace orx::orxkdb::dump_format {

namespace {

using Digits = std::array<char, 2>;

constexpr std::array<Digits, 256> makeDigits() {
  constexpr std::string_view digits = "0123456789abcdef";
  std::array<Digits, 256> table{};
  for (std::size_t i = 0; i < table.size(); ++i) table[i] = {digits[i / 16], digits[i % 16]};
  return table;
}

constexpr std::uint8_t noDigit = 0xFF;

constexpr std::array<std::uint8_t, 256> makeValues() {
  std::array<std::uint8_t, 256> table{};
  table.fill(noDigit);
  for (std::uint8_t i = 0; i < 10; ++i) table[std::size_t{'0'} + i] = i;
  for (std::uint8_t i = 0; i < 6; ++i) {
    table[std::size_t{'a'} + i] = static_cast<std::uint8_t>(10 + i);
    table[std::size_t{'A'} + i] = static_cast<std::uint8_t>(10 + i);
  }
  return table;
}

constexpr std::array<Digits, 256> digitsOf = makeDigits();
constexpr std::array<std::uint8_t, 256> valueOf = makeValues();

char* writeLine(std::span<const std::uint8_t> bytes, char* to) {
  *to++ = linePrefix;
  for (const std::uint8_t byte : bytes) {
    *to++ = digitsOf[byte][0];
    *to++ = digitsOf[byte][1];
  }
  *to++ = '\n';
  return to;
}

std::uint8_t valueAt(std::string_view digits, std::size_t i) {
  return valueOf[static_cast<std::uint8_t>(digits[i])];
}

}  // namespace

StoredKey storedKey(const DataBuffer& record) {
  StoredKey key;
  std::ranges::copy(record.key(), key.begin());
  storeBE32(key.data() + data_layout::recn, record.recn());
  return key;
}

void writeEntry(const DataBuffer& record, Entry& entry) {
  char* const recordLine = writeLine(storedKey(record), entry.data());
  writeLine({record.data(), DataBuffer::size()}, recordLine);
}

std::size_t readHex(std::string_view digits, std::span<std::uint8_t> bytes) {
  for (std::size_t i = 0; i < bytes.size(); ++i) {
    const std::uint8_t high = valueAt(digits, 2 * i);
    const std::uint8_t low = valueAt(digits, 2 * i + 1);
    if (high == noDigit || low == noDigit) return high == noDigit ? 2 * i : 2 * i + 1;
    bytes[i] = static_cast<std::uint8_t>(high << 4 | low);
  }
  return std::string_view::npos;
}

}  // namespace orx::orxkdb::dump_format
