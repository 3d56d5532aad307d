#include "model/written_text.h"

#include <array>
#include <charconv>
#include <climits>
#include <cstdint>

#include "model/attribute_key.h"
#include "model/granted_size.h"

namespace orx {

namespace {

constexpr int highestId = CMAttributeKey::groupSize - 1;
constexpr int highestGroup = INT16_MAX / CMAttributeKey::groupSize;  // keys beyond a short are rare

struct WrittenHeader {
  int key = 0;
  int count = 0;
  std::size_t size = 0;  // without the "<"
};

// Bytes that end a value, or make it another when it is read.
constexpr auto isSpecial = [] {
  std::array<bool, 256> special{};
  for (const char c : {';', '>', '\t', '\0'}) special[static_cast<unsigned char>(c)] = true;
  return special;
}();

// Takes a number and its ";" off the front of a text.
bool takeNumber(std::string_view& text, int highest, int& number) {
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  const auto length = static_cast<std::size_t>(end - text.data());
  if (error != std::errc() || length == text.size() || *end != ';') return false;
  if (text.front() == '-' || (text.front() == '0' && length > 1)) return false;
  text.remove_prefix(length + 1);
  return number <= highest;
}

// Takes a value and its ";"; false for a value that is empty or holds what is written otherwise
// than it is read.
bool takeValue(std::string_view& text) {
  std::size_t length = 0;
  while (length < text.size() && !isSpecial[static_cast<unsigned char>(text[length])]) ++length;
  if (length == 0 || length == text.size() || text[length] != ';') return false;
  if (text[length - 1] == ' ') return false;
  text.remove_prefix(length + 1);  // a doubled ";" makes the next value empty
  return true;
}

bool takeHeader(std::string_view& text, WrittenHeader& header) {
  int attrId = 0;
  int attrGroup = 0;
  if (!text.starts_with('<')) return false;
  text.remove_prefix(1);
  const std::size_t begin = text.size();
  if (!takeNumber(text, highestId, attrId) || !takeNumber(text, highestGroup, attrGroup) ||
      !takeNumber(text, INT_MAX, header.count)) {
    return false;
  }
  header.key = attrGroup * CMAttributeKey::groupSize + attrId;
  header.size = begin - text.size();
  return header.count > 0;
}

// Takes the values and the ">" behind them; `size` gets that of the values.
bool takeValues(std::string_view& text, int count, std::size_t& size) {
  const std::size_t begin = text.size();
  for (int left = count; left > 0; --left) {
    if (!takeValue(text)) return false;
  }
  size = begin - text.size();
  if (!text.starts_with('>')) return false;
  text.remove_prefix(1);
  return true;
}

}  // namespace

std::optional<std::size_t> sizeOfWrittenText(std::string_view text, bool (*accept)(int key)) {
  std::size_t size = 1;
  WrittenHeader header;
  for (int before = 0; !text.empty(); before = header.key) {
    if (!takeHeader(text, header) || header.key <= before || !accept(header.key)) {
      return std::nullopt;
    }
    std::size_t valuesSize = 0;
    if (!takeValues(text, header.count, valuesSize)) return std::nullopt;
    size += grantedSize(header.size, valuesSize, static_cast<std::size_t>(header.count), 0) + 1;
  }
  return size <= INT_MAX ? std::optional(size) : std::nullopt;
}

}  // namespace orx
