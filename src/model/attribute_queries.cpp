// The queries of CMAttribute: its values by index, and what is among them.
#include <algorithm>
#include <string>
#include <utility>

#include "model/attribute.h"
#include "model/attribute_iterator.h"
#include "model/attribute_trace.h"

namespace orx {

static constexpr const TraceUnit& traceUnit = attributeTraceUnit;

namespace {

CMAttributeIterator at(const CMAttribute& attribute, int index) {
  CMAttributeIterator value(attribute);
  (void)value.set(index);
  return value;
}

}  // namespace

int CMAttribute::getValueLength(int index) const {
  ORX_TRACE("getValueLength");
  return trace.exit(at(*this, index).getValueLength());
}

void CMAttribute::getValue2(char* buffer, int size, int index) const {
  ORX_TRACE("getValue2");
  if (trace.on(TraceScope::detail)) print();
  at(*this, index).getValue(buffer, size);
}

void CMAttribute::getValue3(std::string& out, int index) const {
  ORX_TRACE("getValue3");
  out = at(*this, index).value();
  if (trace.on(TraceScope::detail)) {
    DIAG_Printf(trace.anchor(), __LINE__, "Value='%s'", out.c_str());
  }
}

CMConfigHandle& CMAttribute::getValue3(CMConfigHandle& out, int index) const {
  ORX_TRACE("getValue3");
  if (trace.on(TraceScope::detail)) print();
  return *trace.exit(&at(*this, index).getValueHandle(out));
}

int CMAttribute::getValue(int* isNumeric, int index) const {
  ORX_TRACE("getValue");
  if (trace.on(TraceScope::detail)) print();
  return trace.exit(at(*this, index).getValueInt(isNumeric));
}

bool CMAttribute::isNull() const {
  ORX_TRACE("isNull");
  return trace.exit(nextAvail_ == attrCount_);  // nothing but the values' TABs
}

bool CMAttribute::doesValueExist(long number) const {
  ORX_TRACE("doesValueExist");
  for (CMAttributeIterator value(*this); !value.done(); (void)value.next()) {
    int isNumeric = 0;
    if (value.getValueInt(&isNumeric) == number && isNumeric != 0) return trace.exit(true);
  }
  return trace.exit(false);
}

bool CMAttribute::doesValueExist2(const char* value) const {
  ORX_TRACE("doesValueExist2");
  if (value == nullptr) return trace.exit(false);
  const std::string_view wanted(value);
  const AttributeValues all = values();
  return trace.exit(std::find(all.begin(), all.end(), wanted) != all.end());
}

bool CMAttribute::doesHandleExist(const CMConfigHandle& handle) const {
  ORX_TRACE("doesHandleExist");
  CMConfigHandle found;
  for (CMAttributeIterator value(*this); !value.done(); (void)value.next()) {
    if (value.getValueHandle(found) == handle) return trace.exit(true);
  }
  return trace.exit(false);
}

std::string CMAttribute::getSymparmString(const char* text) {
  ORX_TRACE("CMAttribute::getSymparmString");
  std::string doubled;
  for (; *text != '\0'; ++text) {
    if (*text == ',' || *text == '=') doubled += *text;
    doubled += *text;
  }
  return trace.exit(std::move(doubled));
}

}  // namespace orx
