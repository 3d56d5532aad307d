#include "orxkdb/input/attribute_scanner.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstdint>
#include <cstdlib>
#include <cstring>

#include "model/attribute_key.h"
#include "platform/bytes.h"

namespace orx::orxkdb {

namespace {

constexpr std::size_t headerFieldLimit = 256;  // a field and its ";" fit
constexpr std::size_t mostPlainDigits = 9;     // of a number that fits without a check

// Position of the ">" that ends an element, npos without one; doubled ones are stepped over.
std::size_t findElementEnd(std::string_view text) {
  std::size_t end = text.find('>');
  while (end != std::string_view::npos && end + 1 < text.size() && text[end + 1] == '>') {
    end = text.find('>', end + 2);
  }
  return end;
}

// As the attribute classes read a field: what does not begin with digits may have a sign or blanks.
std::int32_t readOddField(std::string_view field, bool& isMisread) {
  const std::string text(field);
  char* end = nullptr;
  const long number = std::strtol(text.c_str(), &end, 10);
  const auto kept = static_cast<std::int32_t>(number);
  const bool hasRest = std::string_view(end).find_first_not_of(' ') != std::string_view::npos;
  isMisread |= end == text.c_str() || hasRest || kept != number;
  return kept;
}

using HeaderFields = std::array<std::int32_t, 3>;  // identifier, group, number of values

// False, and nothing is taken, when the field at the front of `text` is not in its usual form.
bool takePlainField(std::string_view& text, std::int32_t& number) {
  number = 0;
  std::size_t at = 0;
  const std::size_t most = std::min(text.size(), mostPlainDigits);
  for (; at < most && text[at] >= '0' && text[at] <= '9'; ++at)
    number = number * 10 + (text[at] - '0');
  if (at == text.size() || text[at] != ';') return false;
  text.remove_prefix(at + 1);
  return true;
}

bool takePlainHeader(std::string_view& text, HeaderFields& fields) {
  return std::ranges::all_of(fields,
                             [&](std::int32_t& field) { return takePlainField(text, field); });
}

// In whatever form; false when there is none.
bool takeField(std::string_view& text, std::int32_t& number, bool& isMisread) {
  if (takePlainField(text, number)) return true;
  const std::size_t end = text.substr(0, headerFieldLimit).find(';');
  if (end == std::string_view::npos) return false;
  number = readOddField(text.substr(0, end), isMisread);
  text.remove_prefix(end + 1);
  return true;
}

// The number of fields that there are.
std::size_t takeHeader(std::string_view& text, HeaderFields& fields, bool& isMisread) {
  std::size_t count = 0;
  while (count < fields.size() && takeField(text, fields[count], isMisread)) ++count;
  return count;
}

// The bit 0x80 of every byte that is zero.
constexpr std::uint64_t zeroBytes(std::uint64_t word) {
  constexpr std::uint64_t low = 0x7F7F7F7F7F7F7F7Fu;
  return ~(((word & low) + low) | word | low);
}

// Walks over the ";" and ">" of a text that are not doubled; looks at 8 bytes at a time.
class MarkCursor {
 public:
  explicit MarkCursor(std::string_view text) : text_(text) { load(); }

  // The position of the next one, text.size() without one.
  std::size_t next() {
    while (true) {
      const std::size_t at = nextOfAny();
      if (at + 1 >= text_.size() || text_[at + 1] != text_[at]) return at;
      (void)nextOfAny();
    }
  }

 private:
  std::size_t nextOfAny() {
    while (marks_ == 0) {
      if (block_ + wordSize >= text_.size()) return text_.size();
      block_ += wordSize;
      load();
    }
    const auto at = block_ + static_cast<std::size_t>(std::countr_zero(marks_)) / 8;
    marks_ &= marks_ - 1;
    return at;
  }

  void load() {
    constexpr std::uint64_t semicolons = 0x3B3B3B3B3B3B3B3Bu;
    constexpr std::uint64_t brackets = 0x3E3E3E3E3E3E3E3Eu;
    std::array<std::uint8_t, wordSize> bytes{};
    const std::size_t left = text_.size() - block_;
    if (left >= wordSize) {
      std::memcpy(bytes.data(), text_.data() + block_, wordSize);  // of a fixed size: one load
    } else {
      std::memcpy(bytes.data(), text_.data() + block_, left);
    }
    const std::uint64_t word = loadLE64(bytes.data());
    marks_ = zeroBytes(word ^ semicolons) | zeroBytes(word ^ brackets);
  }

  static constexpr std::size_t wordSize = 8;
  std::string_view text_;
  std::size_t block_ = 0;
  std::uint64_t marks_ = 0;  // of the block, those that were not given yet
};

// The length of the value at the front of `text` in its written form, text.size() without an end.
std::size_t valueLength(std::string_view text) {
  MarkCursor cursor(text);
  std::size_t at = cursor.next();
  while (at < text.size() && text[at] != ';') at = cursor.next();
  return at;
}

std::string_view withoutTrailingBlanks(std::string_view value) {
  while (value.ends_with(' ')) value.remove_suffix(1);
  return value;
}

void addValue(std::string_view written, bool endedInMark, ScannedAttribute& attribute) {
  const std::string_view value = withoutTrailingBlanks(written);
  attribute.cutsBlanks |= value.size() != written.size() && written.size() > 1;
  attribute.losesBlank |= value.ends_with('\t');
  attribute.isAmbiguous |= endedInMark && !value.empty();
  ++attribute.valueCount;
}

// Reads the values at the front of `text`, as many as are stated, and finds the end of the element:
// the position of its ">", npos without one.
std::size_t scanValues(std::string_view text, ScannedAttribute& attribute) {
  MarkCursor cursor(text);
  std::int32_t left = attribute.statedCount;
  std::size_t begin = 0;
  bool endsInMark = false;  // the value before
  std::size_t at = cursor.next();
  for (; at < text.size() && text[at] == ';'; at = cursor.next()) {
    if (left == 0) continue;
    left -= left > 0 ? 1 : 0;
    addValue(text.substr(begin, at - begin), endsInMark, attribute);
    endsInMark = at > begin && text[at - 1] == ';';
    begin = at + 1;
  }
  if (at == text.size()) return std::string_view::npos;
  attribute.values = text.substr(0, begin);
  attribute.hasRest = begin != at;
  return at;
}

// Whether a key is another number than its fields say, or is once it has been written.
bool losesKey(std::int32_t attrId, std::int32_t attrGroup, std::int32_t key) {
  const std::int32_t written = key / CMAttributeKey::groupSize;
  return std::int64_t{attrGroup} * CMAttributeKey::groupSize + attrId != key ||
         written != static_cast<std::int16_t>(written);
}

void setHeader(const HeaderFields& fields, std::size_t count, ScannedAttribute& attribute) {
  const auto [attrId, attrGroup, values] = fields;
  if (count < 2) return;
  attribute.key = static_cast<std::int16_t>(attrGroup) * CMAttributeKey::groupSize +
                  static_cast<std::int16_t>(attrId);
  attribute.isMisread |= losesKey(attrId, attrGroup, attribute.key);
  if (count < 3) return;
  attribute.hasHeader = true;
  attribute.statedCount = values;
}

}  // namespace

// A header in its usual form holds no ">". Any other must not be looked for beyond the element.
bool AttributeScanner::next(ScannedAttribute& attribute) {
  if (!rest_.starts_with('<')) return false;
  const std::string_view element = rest_.substr(1);
  attribute = {};
  HeaderFields fields{};
  std::size_t fieldCount = fields.size();
  std::string_view behind = element;
  std::size_t end = 0;
  if (!takePlainHeader(behind, fields)) {
    end = findElementEnd(element);
    if (end == std::string_view::npos) return false;
    behind = element.substr(0, end);
    fieldCount = takeHeader(behind, fields, attribute.isMisread);
    attribute.hasRest = end != 0;
  }
  setHeader(fields, fieldCount, attribute);
  if (attribute.hasHeader) {
    const auto begin = static_cast<std::size_t>(behind.data() - element.data());
    const std::size_t length = scanValues(element.substr(begin), attribute);
    if (length == std::string_view::npos) return false;
    end = begin + length;
  }
  attribute.text = element.substr(0, end);
  attribute.hasTab = hasTab_ && attribute.values.find('\t') != std::string_view::npos;
  rest_.remove_prefix(end + 2);
  return true;
}

void takeValue(std::string_view& values, std::string& value) {
  const std::size_t length = valueLength(values);
  value.clear();
  for (std::size_t at = 0; at < length; ++at) {
    value += values[at];
    const bool doubled =
        (values[at] == ';' || values[at] == '>') && at + 1 < length && values[at + 1] == values[at];
    if (doubled) ++at;
  }
  values.remove_prefix(std::min(length + 1, values.size()));
  value.resize(withoutTrailingBlanks(value).size());
  std::ranges::replace(value, '\t', ' ');
}

}  // namespace orx::orxkdb
