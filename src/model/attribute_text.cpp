// The text form of CMAttribute, read and written.
#include <algorithm>
#include <charconv>
#include <climits>
#include <cstdlib>
#include <new>
#include <optional>

#include "model/attribute.h"
#include "model/attribute_trace.h"
#include "model/cut_text.h"
#include "model/granted_size.h"

namespace orx {

static constexpr const TraceUnit& traceUnit = attributeTraceUnit;

namespace {

constexpr std::size_t headerFieldLimit = 256;  // a field and its ";" fit
constexpr std::size_t headerLimit = 64;        // three numbers and their ";"

// Takes header fields and values off the front of a text.
class TextReader {
 public:
  TextReader(std::string_view text, bool unescape)
      : rest_(text), unescape_(unescape), copies_(unescape ? 1 : 2) {}

  std::optional<int> headerField() {
    const std::size_t end = rest_.substr(0, headerFieldLimit).find(';');
    if (end == std::string_view::npos) return std::nullopt;
    const std::string field(rest_.substr(0, end));
    rest_.remove_prefix(end + 1);
    return static_cast<int>(std::strtol(field.c_str(), nullptr, 10));
  }

  // False when the value has no end; `value` is then of no use.
  bool value(std::string& value) {
    value.clear();
    for (;;) {
      const std::size_t stop = findMark();
      if (stop == rest_.size()) return false;
      const char mark = rest_[stop];
      const bool doubled = stop + 1 < rest_.size() && rest_[stop + 1] == mark;
      value.append(rest_, 0, stop);
      rest_.remove_prefix(stop + (doubled ? 2 : 1));
      if (mark == ';' && !doubled) return true;
      value.append(copies_, mark);
    }
  }

 private:
  [[nodiscard]] std::size_t findMark() const {
    const auto isMark = [this](char c) { return c == ';' || (unescape_ && c == '>'); };
    return static_cast<std::size_t>(std::find_if(rest_.begin(), rest_.end(), isMark) -
                                    rest_.begin());
  }

  std::string_view rest_;
  bool unescape_;
  std::size_t copies_;  // of a mark that was doubled
};

// What of the stored bytes makes the text longer than the storage.
struct Growth {
  std::size_t marks = 0;    // written twice
  std::size_t tabs = 0;     // ends of values
  std::size_t empties = 0;  // values that get a blank
};

Growth growthOf(std::string_view stored) {
  Growth growth;
  char before = '\0';
  for (const char c : stored) {
    growth.marks += c == ';' || c == '>' ? 1U : 0U;
    growth.tabs += c == '\t' ? 1U : 0U;
    growth.empties += c == '\t' && before == '\t' ? 1U : 0U;
    before = c;
  }
  return growth;
}

char* putNumber(char* out, int number) {
  out = std::to_chars(out, out + 12, number).ptr;
  *out++ = ';';
  return out;
}

}  // namespace

CMAttribute::CMAttribute(const char* text, int unescape)
    : CMAttribute(text == nullptr ? std::string_view() : std::string_view(text), unescape) {}

CMAttribute::CMAttribute(std::string_view text, int unescape) {
  ORX_TRACE("ConstructorFromString");
  readText(text.substr(0, text.find('\0')), unescape != 0);
}

void CMAttribute::readText(std::string_view text, bool unescape) {
  TextReader reader(text, unescape);
  const auto attrId = reader.headerField();
  if (!attrId) return;
  const auto attrGroup = reader.headerField();
  if (!attrGroup) return;
  setKey(CMAttributeKey(static_cast<short>(*attrId), static_cast<short>(*attrGroup)));
  const auto count = reader.headerField();
  if (!count) return;
  std::string value;
  for (int left = *count; left != 0 && reader.value(value); left -= left > 0 ? 1 : 0) {
    setValue(value);
  }
}

int CMAttribute::getCharAttributeSize() const {
  ORX_TRACE("getCharAttributeSize");
  if (sizeOfCharAttr_ == -1) sizeOfCharAttr_ = measureText();
  return trace.exit(sizeOfCharAttr_);
}

int CMAttribute::measureText() const {
  const Growth growth = growthOf(stored());
  char header[headerLimit];
  const auto headerLength = static_cast<std::size_t>(writeHeader(header) - header);
  const std::size_t size =
      grantedSize(headerLength, static_cast<std::size_t>(nextAvail_) + growth.marks, growth.tabs,
                  growth.empties);
  if (size > INT_MAX) throw std::bad_alloc();
  return static_cast<int>(size);
}

void CMAttribute::getCharAttribute(char* buffer, int size) const {
  writeCut(*this, buffer, size);
}

std::string CMAttribute::text() const {
  std::string text(static_cast<std::size_t>(getCharAttributeSize()), '\0');
  text.resize(static_cast<std::size_t>(writeText(text.data()) - text.data()));
  return text;
}

// The trace knows the writing of a text by one name, whoever asks for it.
char* CMAttribute::writeText(char* out) const {
  ORX_TRACE("getCharAttribute");
  out = writeHeader(out);
  const std::string_view bytes = stored();
  for (std::size_t i = 0; i < bytes.size(); ++i) {
    const char c = bytes[i];
    if (c == '\t') {
      *out++ = ';';
      if (i + 1 < bytes.size() && bytes[i + 1] == '\t') *out++ = ' ';
      continue;
    }
    if (c == ';' || c == '>') *out++ = c;
    *out++ = c;
  }
  if (trace.on(TraceScope::detail)) print();
  return out;
}

char* CMAttribute::writeHeader(char* out) const {
  out = putNumber(out, key_.attrId());
  out = putNumber(out, static_cast<short>(key_.attrGroup()));
  return putNumber(out, attrCount_);
}

}  // namespace orx
