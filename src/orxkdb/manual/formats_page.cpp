#include "orxkdb/manual/formats_page.h"

#include <algorithm>
#include <cctype>
#include <string_view>

#include "orxkdb/manual/roff_writer.h"

namespace orx::orxkdb {

namespace {

constexpr std::string_view fence = "```";
constexpr std::string_view codeIndent = "    ";
constexpr std::string_view bulletMark = "- ";
constexpr std::string_view titleMark = "# ";
constexpr std::string_view headingMark = "## ";

using Lines = std::vector<std::string>;

std::string upperCase(std::string text) {
  std::ranges::transform(text, text.begin(), [](unsigned char character) {
    return static_cast<char>(std::toupper(character));
  });
  return text;
}

// Takes MARK words MARK off the beginning of `rest`; false when it does not stand there.
bool takeMarked(std::string_view& rest, std::string_view mark, std::string& roff) {
  if (!rest.starts_with(mark)) return false;
  const auto end = rest.find(mark, mark.size());
  if (end == std::string_view::npos) return false;
  roff += RoffWriter::bold(rest.substr(mark.size(), end - mark.size()));
  rest.remove_prefix(end + mark.size());
  return true;
}

// A link to another document of the project is its text alone.
bool takeLink(std::string_view& rest, std::string& roff) {
  const auto middle = rest.find("](");
  const auto end = rest.find(')', middle);
  if (!rest.starts_with('[') || middle == std::string_view::npos || end == std::string_view::npos) {
    return false;
  }
  const std::string_view address = rest.substr(middle + 2, end - middle - 2);
  roff += RoffWriter::plain(rest.substr(1, middle - 1));
  if (address.find("://") != std::string_view::npos) {
    roff.append(" (").append(RoffWriter::plain(address)).append(")");
  }
  rest.remove_prefix(end + 1);
  return true;
}

std::string inlineText(std::string_view rest) {
  std::string roff;
  while (!rest.empty()) {
    if (takeMarked(rest, "`", roff) || takeMarked(rest, "**", roff) || takeLink(rest, roff))
      continue;
    roff += RoffWriter::plain(rest.substr(0, 1));
    rest.remove_prefix(1);
  }
  return roff;
}

std::string trimmed(std::string_view text) {
  const auto begin = text.find_first_not_of(' ');
  if (begin == std::string_view::npos) return {};
  return std::string(text.substr(begin, text.find_last_not_of(' ') - begin + 1));
}

// "| a | b |"
Lines cellsOf(std::string_view line) {
  Lines cells;
  line.remove_prefix(1);
  for (auto end = line.find('|'); end != std::string_view::npos; end = line.find('|')) {
    cells.push_back(inlineText(trimmed(line.substr(0, end))));
    line.remove_prefix(end + 1);
  }
  return cells;
}

bool isRule(std::string_view line) {
  return line.find_first_not_of("|-: ") == std::string_view::npos;
}

// Reads the document block by block.
class Converter {
 public:
  Converter(const Lines& lines, RoffWriter& roff) : lines_(lines), roff_(roff) {}

  void convert() {
    while (next_ < lines_.size()) convertBlock(lines_[next_]);
  }

 private:
  void convertBlock(std::string_view line) {
    if (line.empty() || line.starts_with(titleMark)) return void(++next_);
    if (line.starts_with(headingMark)) return heading(line);
    if (line.starts_with(fence)) return fenced();
    if (line.starts_with(codeIndent)) return indented();
    if (line.starts_with('|')) return table();
    if (line.starts_with(bulletMark)) return roff_.bullet(inlineText(joined(bulletMark.size())));
    roff_.paragraph(inlineText(joined(0)));
  }

  void heading(std::string_view line) {
    roff_.section(upperCase(std::string(line.substr(headingMark.size()))));
    ++next_;
  }

  void fenced() {
    Lines block;
    while (++next_ < lines_.size() && lines_[next_] != fence) block.push_back(lines_[next_]);
    ++next_;
    roff_.literal(block);
  }

  void indented() {
    Lines block;
    for (; next_ < lines_.size() && lines_[next_].starts_with(codeIndent); ++next_) {
      block.push_back(lines_[next_].substr(codeIndent.size()));
    }
    roff_.literal(block);
  }

  void table() {
    std::vector<Lines> rows;
    for (; next_ < lines_.size() && lines_[next_].starts_with('|'); ++next_) {
      if (!isRule(lines_[next_])) rows.push_back(cellsOf(lines_[next_]));
    }
    roff_.table(rows);
  }

  // The lines of a paragraph or of an entry of a list, as one text without its mark.
  std::string joined(std::size_t mark) {
    std::string text = lines_[next_].substr(mark);
    for (++next_; next_ < lines_.size() && goesOn(lines_[next_]); ++next_) {
      text.append(" ").append(trimmed(lines_[next_]));
    }
    return text;
  }

  static bool goesOn(std::string_view line) {
    return !line.empty() && !line.starts_with(bulletMark) && !line.starts_with(fence) &&
           !line.starts_with('|') && !line.starts_with(headingMark);
  }

  const Lines& lines_;
  RoffWriter& roff_;
  std::size_t next_ = 0;
};

}  // namespace

std::string formatsPage(const std::vector<std::string>& lines) {
  RoffWriter roff("orxkdb-formats", 5, "File Formats");
  roff.section("NAME");
  roff.line(RoffWriter::plain("orxkdb-formats") + " \\- " +
            RoffWriter::plain("the files and records that orxrestore and orxkdb work on"));
  roff.section("DESCRIPTION");
  Converter(lines, roff).convert();
  roff.section("SEE ALSO");
  roff.paragraph(RoffWriter::plain("orxrestore(1), orxkdb(1)"));
  return roff.page();
}

}  // namespace orx::orxkdb
