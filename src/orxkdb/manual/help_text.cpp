#include "orxkdb/manual/help_text.h"

#include <array>
#include <sstream>

namespace orx::orxkdb {

namespace {

constexpr std::array<std::string_view, 2> titles{"Examples", "Exit codes"};

// Takes the title of a paragraph off its first line.
std::string takeTitle(std::string_view& line) {
  for (const std::string_view title : titles) {
    if (!line.starts_with(title) || !line.substr(title.size()).starts_with(':')) continue;
    line.remove_prefix(title.size() + 1);
    return std::string(title);
  }
  return {};
}

}  // namespace

std::string HelpParagraph::flowing() const {
  std::string text;
  for (const std::string& line : lines) text.append(text.empty() ? "" : " ").append(line);
  return text;
}

std::vector<HelpParagraph> helpParagraphs(std::string_view text) {
  std::vector<HelpParagraph> paragraphs;
  bool inside = false;
  for (const std::string& whole : linesOf(text)) {
    std::string_view line = whole;
    if (!inside && !line.empty()) paragraphs.push_back({takeTitle(line), {}});
    inside = !whole.empty();
    line = withoutIndent(line);
    if (!line.empty()) paragraphs.back().lines.emplace_back(line);
  }
  return paragraphs;
}

std::vector<std::string> linesOf(std::string_view text) {
  std::istringstream stream{std::string(text)};
  std::vector<std::string> lines;
  for (std::string line; std::getline(stream, line);) lines.push_back(line);
  return lines;
}

std::string_view withoutIndent(std::string_view line) {
  const auto begin = line.find_first_not_of(' ');
  return begin == std::string_view::npos ? std::string_view() : line.substr(begin);
}

std::pair<std::string, std::string> termAndWords(std::string_view line) {
  const auto end = line.find("  ");
  if (end == std::string_view::npos) return {std::string(line), {}};
  return {std::string(line.substr(0, end)), std::string(withoutIndent(line.substr(end)))};
}

}  // namespace orx::orxkdb
