#include "driver/file_words.h"

#include <algorithm>
#include <filesystem>
#include <string_view>

#include "platform/file.h"

namespace orx {

namespace {

bool isControl(char character) {
  const auto code = static_cast<unsigned char>(character);
  return code < 0x20 || code == 0x7F;
}

// Bytes of other scripts need no quoting.
bool isPlain(char character) {
  constexpr std::string_view punctuation = "_-./+,:@%=";
  const auto code = static_cast<unsigned char>(character);
  return (code >= '0' && code <= '9') || (code >= 'A' && code <= 'Z') ||
         (code >= 'a' && code <= 'z') || code >= 0x80 ||
         punctuation.find(character) != std::string_view::npos;
}

std::string inQuotes(std::string_view text) {
  std::string word = "'";
  for (const char character : text) {
    word += character == '\'' ? std::string("'\\''") : std::string(1, character);
  }
  return word + "'";
}

std::string printable(std::string text) {
  std::ranges::replace_if(text, isControl, '?');
  return text;
}

}  // namespace

std::string absolutePath(const std::string& name) {
  std::error_code error;
  const std::filesystem::path path = std::filesystem::absolute(name, error);
  return printable(error ? name : path.lexically_normal().string());
}

std::string parentOf(const std::string& name) {
  return directoryOf(name);
}

std::string shellWord(const std::string& name) {
  const std::string word = printable(name.starts_with('-') ? "./" + name : name);
  return !word.empty() && std::ranges::all_of(word, isPlain) ? word : inQuotes(word);
}

}  // namespace orx
