// Reading and writing the text form of a parameter set.
#include "model/sym_parm_set.h"
#include "model/sym_parm_set_trace.h"

namespace orx {

namespace {

constexpr const TraceUnit& traceUnit = symParmSetTraceUnit;
constexpr char entryDelimiter = ',';
constexpr char fieldDelimiter = '=';

std::string strippedOfBlanks(const std::string& text) {
  const std::size_t first = text.find_first_not_of(' ');
  if (first == std::string::npos) return {};
  return text.substr(first, text.find_last_not_of(' ') + 1 - first);
}

std::string entryText(const CMSymParm& parameter) {
  const std::string value = CMAttribute::getSymparmString(parameter.value().data());
  const std::string description =
      strippedOfBlanks(CMAttribute::getSymparmString(parameter.description().c_str()));
  std::string entry = CMAttribute::getSymparmString(parameter.name()) + fieldDelimiter;
  entry += value.empty() ? " " : value;
  if (!description.empty()) entry += "= " + description;
  return entry;
}

}  // namespace

const char* CMSymParmSet::getToken(const char* position, char delimiter, std::string& token, int) {
  ORX_TRACE("CMSymParmSet::getToken");
  token.clear();
  for (; *position != '\0'; ++position) {
    if (*position == delimiter) {
      ++position;
      if (*position != delimiter) return trace.exit(position);
    }
    token += *position;
  }
  return trace.exit(position);
}

void CMSymParmSet::operator=(const CMAttribute& attribute) {
  ORX_TRACE("AssignmentOperator2");
  if (attribute.key().number() != attributeKey) return;
  clearAndDestroy();
  if (attribute.attrCount() == 0) return;
  const CountedBuffer value(static_cast<std::size_t>(attribute.getValueLength(0)));
  attribute.getValue2(value.data(), static_cast<int>(value.size()), 0);
  readText(value.data());
}

void CMSymParmSet::readText(const char* text) {
  std::string entry;
  for (text = getToken(text, entryDelimiter, entry, 0); !entry.empty();
       text = getToken(text, entryDelimiter, entry, 0)) {
    readEntry(entry);
  }
}

void CMSymParmSet::readEntry(const std::string& entry) {
  std::string name, value, description;
  const char* position = getToken(entry.c_str(), fieldDelimiter, name, 0);
  position = getToken(position, fieldDelimiter, value, 0);
  (void)getToken(position, fieldDelimiter, description, 0);
  if (name.empty()) return;
  auto parameter = std::make_unique<CMSymParm>(name.c_str(), strippedOfBlanks(value).c_str(),
                                               sym_parm_kind::fromText, 0,
                                               strippedOfBlanks(description).c_str());
  (void)insertUniqueParm(parameter);
}

CMAttribute CMSymParmSet::ConstructFromSymParmSet() const {
  ORX_TRACE("ConstructFromSymParmSet");
  CMAttribute attribute{CMAttributeKey(attributeKey)};
  attribute.setValue(text());
  return trace.exit(attribute);
}

std::string CMSymParmSet::text() const {
  std::string text;
  for (const auto& parameter : parameters_) {
    if (parameter != parameters_.front()) text += entryDelimiter;
    text += entryText(*parameter);
  }
  return text;
}

}  // namespace orx
