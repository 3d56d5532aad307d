// The paragraphs of a help text, as operators read it on the terminal.
//
// Paragraphs stand between empty lines. One whose first line begins with "Examples:" or
// "Exit codes:" has this title, and its lines, which may begin behind the title, are taken as they
// stand; the lines of any other are one flowing text.
#pragma once

#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace orx::orxkdb {

struct HelpParagraph {
  std::string title;               // without its colon; empty for flowing text
  std::vector<std::string> lines;  // without the blanks at their beginning

  // The lines as one, with blanks between them.
  [[nodiscard]] std::string flowing() const;
};

[[nodiscard]] std::vector<HelpParagraph> helpParagraphs(std::string_view text);

// The lines of `text` without line ends.
[[nodiscard]] std::vector<std::string> linesOf(std::string_view text);

// Without the blanks at its beginning; a view of `line`.
[[nodiscard]] std::string_view withoutIndent(std::string_view line);

// "TERM  WORDS" at its first two blanks; all of the line is the term when there are none.
[[nodiscard]] std::pair<std::string, std::string> termAndWords(std::string_view line);

}  // namespace orx::orxkdb
