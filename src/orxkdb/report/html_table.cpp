#include "orxkdb/report/html_table.h"

#include <utility>

#include "orxkdb/report/html_text.h"

namespace orx::orxkdb {

namespace {

std::string_view classOf(HtmlTable::Align align) {
  return align == HtmlTable::Align::number ? " class=\"n\"" : "";
}

}  // namespace

// A wide table scrolls in its own box, not with the page.
HtmlTable::HtmlTable(std::string_view caption, std::initializer_list<Column> columns,
                     std::string_view bodyId) {
  html_ = "<div class=\"wide\"><table><caption>" + escaped(caption) + "</caption>\n<thead><tr>";
  for (const Column& column : columns) {
    aligns_.push_back(column.align);
    html_.append("<th scope=\"col\"").append(classOf(column.align)).append(">");
    html_.append(escaped(column.heading)).append("</th>");
  }
  html_ += "</tr></thead>\n<tbody";
  if (!bodyId.empty()) html_.append(" id=\"").append(bodyId).append("\"");
  html_ += ">\n";
}

void HtmlTable::row(std::initializer_list<std::string_view> cells) {
  html_ += "<tr>";
  const Align* align = aligns_.data();
  for (const std::string_view cell : cells) {
    html_.append("<td").append(classOf(*align++)).append(">").append(escaped(cell));
    html_.append("</td>");
  }
  html_ += "</tr>\n";
}

std::string HtmlTable::take() {
  return std::exchange(html_, {}) + "</tbody></table></div>\n";
}

}  // namespace orx::orxkdb
