// AttributeScanner: walks the text of an attribute set in place and tells what reading it with
// CMAttributeSet would keep, change or lose, without building anything.
//
//   AttributeScanner scanner(text);
//   while (scanner.next(attribute)) ...   // scanner.rest() is what reading would leave over
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace orx::orxkdb {

// One "<...>" of a set text. The views live as long as the text.
struct ScannedAttribute {
  std::string_view text;         // between "<" and ">"
  std::string_view values;       // the values that are read, each with the ";" behind it
  std::int32_t key = 0;          // 0 without two header fields, as CMAttribute has it
  std::int32_t statedCount = 0;  // of the header; negative: as many as there are
  std::int32_t valueCount = 0;   // values that are read
  bool hasHeader = false;        // all three fields
  bool hasRest = false;          // bytes behind the last value, which reading leaves over
  bool losesBlank = false;       // a value ends in a TAB, which is written as a blank and then cut
  bool isMisread = false;   // a header field is no number or does not fit: it comes back as another
  bool cutsBlanks = false;  // blanks are cut off a value; one alone is how an empty one is written
  bool hasTab = false;      // in a value: it becomes a blank
  bool isAmbiguous = false;  // ";;;" ends a value before another: its ";" may belong to that

  // The three fields before the values, without the last ";".
  [[nodiscard]] std::string_view header() const {
    return text.substr(0, static_cast<std::size_t>(values.data() - text.data()) - 1);
  }
};

class AttributeScanner {
 public:
  // `text` holds no zero byte.
  explicit AttributeScanner(std::string_view text)
      : rest_(text), hasTab_(text.find('\t') != std::string_view::npos) {}

  // False, with `attribute` of no use, at the end and where reading ends at a fault.
  [[nodiscard]] bool next(ScannedAttribute& attribute);
  // Empty when the whole text was read.
  [[nodiscard]] std::string_view rest() const { return rest_; }

 private:
  std::string_view rest_;
  bool hasTab_;  // anywhere
};

// Takes the first value off `values`, those of a ScannedAttribute and not empty. `value` becomes
// what reading makes of it: doubled marks are single, trailing blanks cut, and TABs blanks.
void takeValue(std::string_view& values, std::string& value);

}  // namespace orx::orxkdb
