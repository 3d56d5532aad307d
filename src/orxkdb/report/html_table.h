// HtmlTable: a table of a page, row by row.
#pragma once

#include <initializer_list>
#include <string>
#include <string_view>
#include <vector>

namespace orx::orxkdb {

class HtmlTable {
 public:
  enum class Align { text, number };
  struct Column {
    std::string_view heading;
    Align align = Align::text;
  };

  // `bodyId` names the rows for a script; it is trusted, headings and cells are escaped.
  HtmlTable(std::string_view caption, std::initializer_list<Column> columns,
            std::string_view bodyId = "");

  // As many cells as columns, any bytes.
  void row(std::initializer_list<std::string_view> cells);
  [[nodiscard]] std::size_t size() const { return html_.size(); }  // in bytes
  // The whole element; the object is of no use afterwards.
  [[nodiscard]] std::string take();

 private:
  std::vector<Align> aligns_;
  std::string html_;
};

}  // namespace orx::orxkdb
