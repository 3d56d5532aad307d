#include "orxkdb/manual/roff_writer.h"

#include <algorithm>

namespace orx::orxkdb {

namespace {

constexpr std::size_t widestCell = 24;  // a column with wider cells shares the rest of the line

std::string_view escapeOf(char character) {
  switch (character) {
    case '\\':
      return "\\e";
    case '-':
      return "\\-";
    case '\'':
      return "\\(aq";
    case '"':
      return "\\(dq";
    case '`':
      return "\\(ga";
    case '^':
      return "\\(ha";
    case '~':
      return "\\(ti";
    default:
      return {};
  }
}

// A line that begins with a point would be a command.
std::string lineText(std::string_view roff) {
  return (roff.starts_with('.') ? "\\&" : "") + std::string(roff) + "\n";
}

using Row = std::vector<std::string>;

std::vector<bool> wideColumns(const std::vector<Row>& rows) {
  std::vector<bool> wide(rows.front().size(), false);
  for (const Row& row : rows) {
    for (std::size_t i = 0; i < std::min(row.size(), wide.size()); ++i) {
      if (row[i].size() > widestCell) wide[i] = true;
    }
  }
  return wide;
}

std::string columnFormats(const std::vector<bool>& wide) {
  std::string formats;
  for (const bool expands : wide) {
    formats.append(formats.empty() ? "" : " ").append(expands ? "lx" : "l");
  }
  return formats + ".\n";
}

std::string rowText(const Row& row, const std::vector<bool>& wide) {
  std::string text;
  for (std::size_t i = 0; i < wide.size(); ++i) {
    const std::string cell = i < row.size() ? row[i] : "";
    text.append(i == 0 ? "" : "\t");
    text.append(wide[i] ? "T{\n" + lineText(cell) + "T}" : cell);
  }
  return text + "\n";
}

}  // namespace

RoffWriter::RoffWriter(std::string_view name, int section, std::string_view manual) {
  const std::string number = std::to_string(section);
  page_ = "'\\\" t\n.TH \"" + plain(name) + "\" " + number + " \"\" \"orxrestore " ORX_VERSION +
          "\" \"" + plain(manual) + "\"\n.nr HY 0\n.nh\n.ad l\n";
}

std::string RoffWriter::plain(std::string_view text) {
  std::string roff;
  for (const char character : text) {
    const std::string_view escape = escapeOf(character);
    if (escape.empty()) {
      roff += character;
    } else {
      roff.append(escape);
    }
  }
  return roff;
}

std::string RoffWriter::bold(std::string_view text) {
  return "\\fB" + plain(text) + "\\fR";
}

void RoffWriter::section(std::string_view title) {
  page_.append(".SH \"").append(plain(title)).append("\"\n");
}

void RoffWriter::subsection(std::string_view title) {
  page_.append(".SS \"").append(plain(title)).append("\"\n");
}

void RoffWriter::paragraph(std::string_view roff) {
  page_.append(".PP\n").append(lineText(roff));
}

void RoffWriter::line(std::string_view roff) {
  page_.append(lineText(roff)).append(".br\n");
}

void RoffWriter::item(std::string_view termRoff, std::string_view roff) {
  page_.append(".TP\n").append(lineText(termRoff)).append(lineText(roff));
}

void RoffWriter::bullet(std::string_view roff) {
  page_.append(".IP \\(bu 2\n").append(lineText(roff));
}

void RoffWriter::table(const std::vector<std::vector<std::string>>& rows) {
  if (rows.empty()) return;
  const std::vector<bool> wide = wideColumns(rows);
  page_.append(".PP\n.TS\nallbox;\n").append(columnFormats(wide));
  for (const Row& row : rows) page_.append(rowText(row, wide));
  page_.append(".TE\n");
}

void RoffWriter::literal(const std::vector<std::string>& lines) {
  page_.append(".PP\n.RS 4\n.EX\n");
  for (const std::string& text : lines) page_.append(lineText(plain(text)));
  page_.append(".EE\n.RE\n");
}

}  // namespace orx::orxkdb
