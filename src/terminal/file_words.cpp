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
  for (const char character : text) {
    if (character == '\'' || character == '\\') word += '\\';
    if (!isControlCharacter(character)) {
      word += character;
      continue;
    }
    std::array<char, 5> code{};
    (void)std::snprintf(code.data(), code.size(), "\\%03o", static_cast<unsigned>(character));
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

std::string onOneLine(std::string text) {
  std::ranges::replace_if(text, isControlCharacter, '?');
  return text;
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
  if (std::ranges::any_of(word, isControlCharacter)) return inCodes(word);
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
