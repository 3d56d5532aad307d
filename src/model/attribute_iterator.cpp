#include "model/attribute_iterator.h"

#include <algorithm>
#include <climits>
#include <cstdint>

#include "model/attribute_trace.h"
#include "model/decimal.h"

namespace orx {

static constexpr const TraceUnit& traceUnit = attributeTraceUnit;

CMAttributeIterator::CMAttributeIterator(const CMAttribute& attribute)
    : attribute_(&attribute), changeable_(nullptr) {
  ORX_TRACE_VALUE("IteratorConstructor");
}

CMAttributeIterator::CMAttributeIterator(CMAttribute& attribute)
    : attribute_(&attribute), changeable_(&attribute) {
  ORX_TRACE_VALUE("IteratorConstructor");
}

CMAttributeIterator::CMAttributeIterator(const CMAttributeIterator& other)
    : CMMemoryManager(other),
      attribute_(other.attribute_),
      changeable_(other.changeable_),
      index_(other.index_),
      cursor_(other.cursor_) {
  ORX_TRACE_VALUE("CopyConstructor");
}

CMAttributeIterator& CMAttributeIterator::operator=(const CMAttributeIterator& other) {
  ORX_TRACE_VALUE("AssignmentOperator");
  if (this == &other) return *trace.exit(this);
  attribute_ = other.attribute_;
  changeable_ = other.changeable_;
  index_ = other.index_;
  cursor_ = other.cursor_;
  return *trace.exit(this);
}

CMAttributeIterator::~CMAttributeIterator() {
  ORX_TRACE_VALUE("Destructor");
}

bool CMAttributeIterator::operator==(const CMAttributeIterator& other) const {
  ORX_TRACE_VALUE("EqualityOperator");
  return trace.exit(attribute_ == other.attribute_ && index_ == other.index_);
}

void CMAttributeIterator::reset() {
  ORX_TRACE_VALUE("reset");
  index_ = 0;
  cursor_ = 0;
}

bool CMAttributeIterator::done() const {
  ORX_TRACE_VALUE("done");
  return trace.exit(index_ >= attribute_->attrCount_);
}

bool CMAttributeIterator::next() {
  ORX_TRACE_VALUE("next");
  if (done()) return trace.exit(false);
  const std::size_t tab = attribute_->stored().find('\t', static_cast<std::size_t>(cursor_));
  if (tab == std::string_view::npos) {
    index_ = attribute_->attrCount_;
    return trace.exit(false);
  }
  cursor_ = static_cast<int>(tab) + 1;
  ++index_;
  return trace.exit(true);
}

bool CMAttributeIterator::set(int n) {
  ORX_TRACE_VALUE("set");
  if (n < index_) reset();
  if (n < 0) {
    index_ = attribute_->attrCount_;
    cursor_ = attribute_->nextAvail_;
    return trace.exit(false);
  }
  bool stepped = true;
  while (stepped && index_ < n) stepped = next();
  return trace.exit(stepped);
}

CMAttributeIterator CMAttributeIterator::operator+(int n) const {
  ORX_TRACE_VALUE("AdditionOperator");
  const std::int64_t target = std::int64_t{index_} + n;
  CMAttributeIterator moved(*this);
  (void)moved.set(static_cast<int>(std::clamp<std::int64_t>(target, -1, INT_MAX)));
  return trace.exit(moved);
}

CMAttributeIterator CMAttributeIterator::operator++(int) {
  ORX_TRACE_VALUE("IncrementOperator");
  (void)next();
  return trace.exit(*this);
}

std::string_view CMAttributeIterator::value() const {
  const std::string_view stored = attribute_->stored();
  const auto start = static_cast<std::size_t>(cursor_);
  if (index_ >= attribute_->attrCount_ || start >= stored.size()) return {};
  return *AttributeValues::iterator(stored.substr(start));
}

int CMAttributeIterator::getValueLength() const {
  ORX_TRACE_VALUE("getValueLength");
  return trace.exit(static_cast<int>(value().size()) + 1);
}

void CMAttributeIterator::getValue(char* buffer, int size) const {
  ORX_TRACE_VALUE("getValue");
  if (size < 1) return;
  buffer[value().copy(buffer, static_cast<std::size_t>(size) - 1)] = '\0';
  if (trace.on(TraceScope::detail)) DIAG_Printf(trace.anchor(), __LINE__, "Value='%s'", buffer);
}

void CMAttributeIterator::getCharValue(char* buffer, int size) const {
  ORX_TRACE_VALUE("getCharValue");
  if (size < 1) return;
  char* out = buffer;
  const char* last = buffer + size - 1;  // the NUL's place at the latest
  for (const char c : value()) {
    const int copies = c == '>' || c == ';' ? 2 : 1;
    if (last - out < copies) break;
    out = std::fill_n(out, copies, c);
  }
  *out = '\0';
  if (trace.on(TraceScope::detail)) DIAG_Printf(trace.anchor(), __LINE__, "Value='%s'", buffer);
}

int CMAttributeIterator::getValueInt(int* isNumeric) const {
  ORX_TRACE_VALUE("getValueInt");
  char text[20] = {};
  if (!done()) getValue(text, sizeof text);
  const std::string_view digits(text);
  const bool numeric = !done() && digits.find_first_not_of("-0123456789") == std::string_view::npos;
  if (isNumeric != nullptr) *isNumeric = numeric ? 1 : 0;
  return trace.exit(numeric ? parseDecimal(digits) : 0);
}

CMConfigHandle& CMAttributeIterator::getValueHandle(CMConfigHandle& out) const {
  ORX_TRACE_VALUE("getValueHandle");
  out = CMConfigHandle();
  if (done()) return *trace.exit(&out);
  char text[48] = {};
  getValue(text, sizeof text);
  if (CMConfigHandle::isExportedFormat(text)) {
    (void)out.importHndl(text);
  } else {
    out.setFromExternChar(text);
  }
  return *trace.exit(&out);
}

void CMAttributeIterator::remove() {
  ORX_TRACE_VALUE("remove");
  if (changeable_ == nullptr || done() || cursor_ >= changeable_->nextAvail_) return;
  changeable_->removeAt(cursor_, static_cast<int>(value().size()) + 1);
}

}  // namespace orx
