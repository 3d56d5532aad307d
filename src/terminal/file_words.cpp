#include "terminal/file_words.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <filesystem>
#include <string_view>

#include "platform/control_character.h"
#include "platform/file.h"

namespace orx {

namespace {

// Bytes of other scripts need no quoting.
bool isPlain(char character) {
  constexpr std::string_view punctuation = "_-./+,:@%=";
  const auto code = static_cast<unsigned char>(character);
  return (code >= '0' && code <= '9') || (code >= 'A' && code <= 'Z') ||
         (code >= 'a' && code <= 'z') || code >= 0x80 ||
         punctuation.find(character) != std::string_view::npos;
}

// With the codes of control characters: $'a\nb'.
std::string inCodes(std::string_view text) {
  std::string word = "$'";
  for (std::size_t at = 0; at < text.size(); ++at) {
    const char character = text[at];
    if (character == '\'' || character == '\\') word += '\\';
    if (!isControlAt(text, at)) {
      word += character;
      continue;
    }
    std::array<char, 5> code{};
    const auto byte = static_cast<unsigned char>(character);
    (void)std::snprintf(code.data(), code.size(), "\\%03o", unsigned{byte});
    word += code.data();
  }
  return word + "'";
}

std::string inQuotes(std::string_view text) {
  std::string word = "'";
  for (const char character : text) {
    word += character == '\'' ? std::string("'\\''") : std::string(1, character);
  }
  return word + "'";
}

}  // namespace

std::string onOneLine(const std::string& text) {
  std::string shown = text;
  for (std::size_t at = 0; at < text.size(); ++at) {
    if (isControlAt(text, at)) shown[at] = '?';
  }
  return shown;
}

std::string absolutePath(const std::string& name) {
  std::error_code error;
  const std::filesystem::path path = std::filesystem::absolute(name, error);
  return onOneLine(error ? name : path.lexically_normal().string());
}

std::string parentOf(const std::string& name) {
  return directoryOf(name);
}

std::string shellWord(const std::string& name) {
  const std::string word = name.starts_with('-') ? "./" + name : name;
  if (onOneLine(word) != word) return inCodes(word);
  return !word.empty() && std::ranges::all_of(word, isPlain) ? word : inQuotes(word);
}

std::string filled(std::string_view text, std::span<const Placed> places) {
  std::string result;
  while (!text.empty()) {
    const auto place =
        std::ranges::find_if(places, [text](const Placed& p) { return text.starts_with(p.first); });
    const bool isPlace = place != places.end();
    result += isPlace ? place->second : std::string(1, text.front());
    text.remove_prefix(isPlace ? place->first.size() : 1);
  }
  return result;
}

}  // namespace orx
