#include "orxkdb/check/text_scanner.h"

#include <algorithm>
#include <bit>
#include <cstdint>
#include <cstdlib>
#include <optional>

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

std::optional<std::int32_t> takeField(std::string_view& text, bool& isMisread) {
  std::int32_t number = 0;
  std::size_t at = 0;
  const std::size_t most = std::min(text.size(), mostPlainDigits);
  for (; at < most && text[at] >= '0' && text[at] <= '9'; ++at)
    number = number * 10 + (text[at] - '0');
  if (at == text.size() || text[at] != ';') {
    at = text.substr(0, headerFieldLimit).find(';');
    if (at == std::string_view::npos) return std::nullopt;
    number = readOddField(text.substr(0, at), isMisread);
  }
  text.remove_prefix(at + 1);
  return number;
}

// A word has a zero byte exactly when this is not 0; its lowest bit then is that of the first one.
constexpr std::uint64_t zeroBytes(std::uint64_t word) {
  return (word - 0x0101010101010101u) & ~word & 0x8080808080808080u;
}

// The first ";" or ">" at or behind `at`, text.size() without one. Looks at 8 bytes at a time.
std::size_t findMark(std::string_view text, std::size_t at) {
  constexpr std::uint64_t semicolons = 0x3B3B3B3B3B3B3B3Bu;
  constexpr std::uint64_t brackets = 0x3E3E3E3E3E3E3E3Eu;
  const auto* const bytes = static_cast<const std::uint8_t*>(static_cast<const void*>(text.data()));
  for (; at + 8 <= text.size(); at += 8) {
    const std::uint64_t word = loadLE64(bytes + at);
    const std::uint64_t marks = zeroBytes(word ^ semicolons) | zeroBytes(word ^ brackets);
    if (marks != 0) return at + static_cast<std::size_t>(std::countr_zero(marks)) / 8;
  }
  while (at < text.size() && text[at] != ';' && text[at] != '>') ++at;
  return at;
}

// The length of the value at the front of `text` in its written form, npos without an end.
std::size_t valueLength(std::string_view text) {
  std::size_t at = 0;
  while (true) {
    at = findMark(text, at);
    if (at >= text.size()) return std::string_view::npos;
    const bool doubled = at + 1 < text.size() && text[at + 1] == text[at];
    if (text[at] == ';' && !doubled) return at;
    at += doubled ? 2 : 1;
  }
}

std::string_view withoutTrailingBlanks(std::string_view value) {
  while (value.ends_with(' ')) value.remove_suffix(1);
  return value;
}

void scanValues(std::string_view text, ScannedAttribute& attribute) {
  const char* const start = text.data();
  bool endsInMark = false;  // the value before
  for (std::int32_t left = attribute.statedCount; left != 0; left -= left > 0 ? 1 : 0) {
    const std::size_t length = valueLength(text);
    if (length == std::string_view::npos) break;
    const std::string_view value = withoutTrailingBlanks(text.substr(0, length));
    attribute.cutsBlanks |= value.size() != length && length > 1;
    attribute.losesBlank |= value.ends_with('\t');
    attribute.isAmbiguous |= endsInMark && !value.empty();
    endsInMark = length > 0 && text[length - 1] == ';';
    ++attribute.valueCount;
    text.remove_prefix(length + 1);
  }
  attribute.values = {start, static_cast<std::size_t>(text.data() - start)};
  attribute.hasRest = !text.empty();
}

// Whether a key is another number than its fields say, or is once it has been written.
bool losesKey(std::int32_t attrId, std::int32_t attrGroup, std::int32_t key) {
  const std::int32_t written = key / CMAttributeKey::groupSize;
  return std::int64_t{attrGroup} * CMAttributeKey::groupSize + attrId != key ||
         written != static_cast<std::int16_t>(written);
}

ScannedAttribute scanAttribute(std::string_view text) {
  ScannedAttribute attribute;
  attribute.text = text;
  attribute.hasRest = !text.empty();
  const auto attrId = takeField(text, attribute.isMisread);
  const auto attrGroup = attrId ? takeField(text, attribute.isMisread) : std::nullopt;
  if (!attrGroup) return attribute;
  attribute.key = static_cast<std::int16_t>(*attrGroup) * CMAttributeKey::groupSize +
                  static_cast<std::int16_t>(*attrId);
  attribute.isMisread |= losesKey(*attrId, *attrGroup, attribute.key);
  const auto count = takeField(text, attribute.isMisread);
  if (!count) return attribute;
  attribute.hasHeader = true;
  attribute.statedCount = *count;
  scanValues(text, attribute);
  return attribute;
}

}  // namespace

bool TextScanner::next(ScannedAttribute& attribute) {
  if (!rest_.starts_with('<')) return false;
  const std::size_t end = findElementEnd(rest_.substr(1));
  if (end == std::string_view::npos) return false;
  attribute = scanAttribute(rest_.substr(1, end));
  attribute.hasTab = hasTab_ && attribute.values.find('\t') != std::string_view::npos;
  rest_.remove_prefix(end + 2);
  return true;
}

void takeValue(std::string_view& values, std::string& value) {
  const std::size_t length = std::min(valueLength(values), values.size());
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
