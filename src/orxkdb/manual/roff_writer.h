// RoffWriter: a manual page as man(1) reads it, in the macros of man(7).
//
// Parts come in the order of the page. Texts are plain ASCII; plain() escapes whatever roff would
// take for a command, and bold() makes a word bold. Pages are written without a date, so that one
// source makes one page.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace orx::orxkdb {

class RoffWriter {
 public:
  // Begins the page NAME(SECTION); `manual` is what stands in the middle of its head. These and the
  // titles are plain text, which is escaped here.
  RoffWriter(std::string_view name, int section, std::string_view manual);

  // `text` as roff, for what takes roff below.
  [[nodiscard]] static std::string plain(std::string_view text);
  [[nodiscard]] static std::string bold(std::string_view text);

  void section(std::string_view title);
  void subsection(std::string_view title);

  // These take text that went through plain() or bold().
  void paragraph(std::string_view roff);
  void line(std::string_view roff);
  void item(std::string_view termRoff, std::string_view roff);
  void bullet(std::string_view roff);
  // Of roff too; the first row is the head, and tells how many columns there are.
  void table(const std::vector<std::vector<std::string>>& rows);

  // Plain text, as it stands, indented.
  void literal(const std::vector<std::string>& lines);

  [[nodiscard]] const std::string& page() const { return page_; }

 private:
  std::string page_;
};

}  // namespace orx::orxkdb
