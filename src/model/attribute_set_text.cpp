// The text form of CMAttributeSet, read and written.
#include <climits>
#include <memory>
#include <new>

#include "model/attribute_set.h"
#include "model/attribute_set_trace.h"
#include "model/cut_text.h"

namespace orx {

static constexpr const TraceUnit& traceUnit = attributeSetTraceUnit;

namespace {

// Position of the first ">" that is not one of a pair, pairs being taken from the left.
std::size_t findEnd(std::string_view text) {
  std::size_t end = text.find('>');
  while (end != std::string_view::npos && end + 1 < text.size() && text[end + 1] == '>') {
    end = text.find('>', end + 2);
  }
  return end;
}

}  // namespace

CMAttributeSet::CMAttributeSet(const char* text, int unescape) : unescape_(unescape) {
  ORX_TRACE("Constructor");
  *this = text;
}

CMAttributeSet& CMAttributeSet::operator=(const char* text) {
  ORX_TRACE("AssignmentOperator1");
  CMAttributeSet fresh;
  fresh.unescape_ = unescape_;
  if (text != nullptr) fresh.readText(text);
  swapEntries(fresh);
  return *trace.exit(this);
}

void CMAttributeSet::readText(std::string_view text) {
  while (!text.empty() && text.front() == '<') {
    text.remove_prefix(1);
    const std::size_t end = findEnd(text);
    if (end == std::string_view::npos) return;
    auto attribute = std::make_unique<CMAttribute>(text.substr(0, end), unescape_);
    insertFresh(*attribute);
    (void)attribute.release();
    text.remove_prefix(end + 1);
  }
}

int CMAttributeSet::getCharAttributeSize() const {
  ORX_TRACE("getCharAttributeSize");
  std::size_t size = 1;
  forEach([&](const CMAttribute& attribute) {
    size += static_cast<std::size_t>(attribute.getCharAttributeSize()) + 1;
  });
  if (size > INT_MAX) throw std::bad_alloc();
  return trace.exit(static_cast<int>(size));
}

void CMAttributeSet::getCharAttribute(char* buffer, int size) const {
  writeCut(*this, buffer, size);
}

std::string CMAttributeSet::text() const {
  std::string text(static_cast<std::size_t>(getCharAttributeSize()), '\0');
  text.resize(static_cast<std::size_t>(writeText(text.data()) - text.data()));
  return text;
}

char* CMAttributeSet::writeText(char* out) const {
  ORX_TRACE("getCharAttribute");  // by this name, whoever asks for the text
  forEach([&](const CMAttribute& attribute) {
    *out++ = '<';
    out = attribute.writeText(out);
    *out++ = '>';
  });
  return out;
}

}  // namespace orx
