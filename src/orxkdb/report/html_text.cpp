#include "orxkdb/report/html_text.h"

#include <unicode/utf.h>
#include <unicode/utf8.h>

namespace orx::orxkdb {

namespace {

void appendBytes(std::string_view bytes, std::string& shown) {
  constexpr char digits[] = "0123456789ABCDEF";
  for (const char c : bytes) {
    const auto byte = static_cast<unsigned char>(c);
    shown.append("\\x").append(1, digits[byte >> 4]).append(1, digits[byte & 0xF]);
  }
}

bool turnsDirection(UChar32 character) {
  return (character >= 0x202A && character <= 0x202E) ||
         (character >= 0x2066 && character <= 0x2069);
}

// `character` is negative for bytes that are no UTF-8.
bool isShown(UChar32 character) {
  const bool isControl = character < 0x20 || (character >= 0x7F && character < 0xA0);
  return !isControl && !U_IS_UNICODE_NONCHAR(character) && !turnsDirection(character);
}

void appendCharacter(std::string_view bytes, std::string& shown) {
  switch (bytes.front()) {
    case '&':
      shown += "&amp;";
      break;
    case '<':
      shown += "&lt;";
      break;
    case '>':
      shown += "&gt;";
      break;
    case '"':
      shown += "&quot;";
      break;
    case '\'':
      shown += "&#39;";
      break;
    default:
      shown += bytes;
  }
}

// The macro narrows on purpose.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wconversion"
UChar32 nextCharacter(std::string_view text, std::size_t& at) {
  UChar32 character = 0;
  U8_NEXT(text.data(), at, text.size(), character);
  return character;
}
#pragma GCC diagnostic pop

bool continuesCharacter(char byte) {
  return (static_cast<unsigned char>(byte) & 0xC0) == 0x80;
}

}  // namespace

std::string escaped(std::string_view text) {
  std::string shown;
  shown.reserve(text.size());
  for (std::size_t at = 0; at < text.size();) {
    const std::size_t start = at;
    const UChar32 character = nextCharacter(text, at);
    const std::string_view bytes = text.substr(start, at - start);
    isShown(character) ? appendCharacter(bytes, shown) : appendBytes(bytes, shown);
  }
  return shown;
}

std::string shortened(std::string_view text, std::size_t most) {
  if (text.size() <= most) return std::string(text);
  constexpr std::size_t longestCharacter = 4;
  std::size_t end = most;
  while (end > 0 && most - end < longestCharacter && continuesCharacter(text[end])) --end;
  return std::string(text.substr(0, end)) + "...";
}

std::string grouped(std::uint64_t number) {
  constexpr std::size_t groupSize = 3;
  std::string digits = std::to_string(number);
  for (std::size_t at = digits.size(); at > groupSize;) digits.insert(at -= groupSize, ",");
  return digits;
}

std::string groupedCount(std::uint64_t count, std::string_view noun) {
  return grouped(count).append(" ").append(noun).append(count == 1 ? "" : "s");
}

std::string typeName(std::int64_t type) {
  return "type " + std::to_string(type);
}

std::string shortName(HandleNumber handle) {
  if (handle == nullHandle) return "-";
  if (!isPlain(handle)) return exportedForm(handle);
  return std::to_string(typeOf(handle)) + ":" + std::to_string(identifierOf(handle));
}

}  // namespace orx::orxkdb
