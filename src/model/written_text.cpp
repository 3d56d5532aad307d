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

struct WrittenAttribute {
  int key = 0;
  std::size_t size = 0;  // that its getCharAttributeSize() would tell
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

bool takeAttribute(std::string_view& text, WrittenAttribute& attribute) {
  int attrId = 0;
  int attrGroup = 0;
  int count = 0;
  if (!text.starts_with('<')) return false;
  text.remove_prefix(1);
  const std::size_t begin = text.size();
  if (!takeNumber(text, highestId, attrId) || !takeNumber(text, highestGroup, attrGroup) ||
      !takeNumber(text, INT_MAX, count)) {
    return false;
  }
  const std::size_t values = text.size();
  for (int left = count; left > 0; --left) {
    if (!takeValue(text)) return false;
  }
  const std::size_t end = text.size();
  if (count == 0 || !text.starts_with('>')) return false;
  text.remove_prefix(1);
  attribute.key = attrGroup * CMAttributeKey::groupSize + attrId;
  attribute.size = grantedSize(begin - values, values - end, static_cast<std::size_t>(count), 0);
  return true;
}

}  // namespace

std::optional<std::size_t> sizeOfWrittenText(std::string_view text,
                                             const std::function<void(int)>& visitKey) {
  std::size_t size = 1;
  WrittenAttribute attribute;
  for (int before = 0; !text.empty(); before = attribute.key) {
    if (!takeAttribute(text, attribute) || attribute.key <= before) return std::nullopt;
    visitKey(attribute.key);
    size += attribute.size + 1;
  }
  return size <= INT_MAX ? std::optional(size) : std::nullopt;
}

}  // namespace orx
