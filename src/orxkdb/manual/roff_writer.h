// RoffWriter: a manual page as man(1) reads it, in the macros of man(7).
//
// Texts come as plain ASCII; whatever roff would take for a command is escaped. Within a text
// marked() gives a word in bold. Pages are written without a date, so that one source makes one
// page.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace orx::orxkdb {

class RoffWriter {
 public:
  // `manual` is what stands in the middle of the page's head.
  RoffWriter(std::string_view name, int section, std::string_view manual);

  [[nodiscard]] static std::string plain(std::string_view text);
  [[nodiscard]] static std::string bold(std::string_view text);

  void section(std::string_view title);
  void subsection(std::string_view title);

  // These take text that went through plain() or bold().
  void paragraph(std::string_view roff);
  void line(std::string_view roff);
  void item(std::string_view termRoff, std::string_view roff);
  void bullet(std::string_view roff);
  // The first row is the head.
  void table(const std::vector<std::vector<std::string>>& rows);

  // As they stand, indented.
  void literal(const std::vector<std::string>& lines);

  [[nodiscard]] const std::string& page() const { return page_; }

 private:
  std::string page_;
};

}  // namespace orx::orxkdb
