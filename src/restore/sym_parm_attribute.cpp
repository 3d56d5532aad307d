#include "restore/sym_parm_attribute.h"

#include <string>
#include <string_view>

#include "messages/trace_unit.h"
#include "model/sym_parm_set.h"

namespace orx {

namespace {

std::string_view strippedOfBlanks(std::string_view text) {
  const std::size_t first = text.find_first_not_of(' ');
  if (first == std::string_view::npos) return {};
  return text.substr(first, text.find_last_not_of(' ') + 1 - first);
}

void appendEntry(std::string& text, const CMSymParm& parameter) {
  text.append(parameter.name()).append("=").append(parameter.value());
  const std::string_view description = strippedOfBlanks(parameter.description());
  if (!description.empty()) text.append("=").append(description);
}

}  // namespace

CMAttribute makeSymParmAttribute(const CMSymParmSet& parameters) {
  ORX_TRACE("makeSymParmAttribute");
  std::string text;
  bool first = true;
  parameters.forEach([&](const CMSymParm& parameter) {
    if (!first) text += ',';
    first = false;
    appendEntry(text, parameter);
  });
  CMAttribute attribute;
  attribute.setKey(CMAttributeKey(CMSymParmSet::attributeKey));
  attribute.setValue(text);
  return trace.exit(attribute);
}

}  // namespace orx
