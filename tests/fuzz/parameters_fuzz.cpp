// The text of the system parameters, read, written in both ways and read again.
#include <algorithm>
#include <string>

#include "model/sym_parm_set.h"
#include "restore/sym_parm_attribute.h"
#include "tests/fuzz/fuzz_target.h"

namespace {

using namespace orx;

CMAttribute attributeOf(std::string_view text) {
  CMAttribute attribute{CMAttributeKey(CMSymParmSet::attributeKey)};
  attribute.setValue(text);
  return attribute;
}

bool isIn(const std::string& text, char mark) {
  return text.find(mark) != std::string::npos;
}

bool beginsOrEndsWith(std::string_view text, std::string_view marks) {
  return !text.empty() && (marks.find(text.front()) != std::string_view::npos ||
                           marks.find(text.back()) != std::string_view::npos);
}

// Fields with a mark at an end are told from the delimiter beside them by nothing.
bool readsBack(const CMSymParmSet& set) {
  bool all = true;
  set.forEach([&all](const CMSymParm& parameter) {
    const std::string name = parameter.name();
    const std::string value(parameter.value());
    all = all && !beginsOrEndsWith(name, ",=") && !beginsOrEndsWith(value, ",=") &&
          !beginsOrEndsWith(parameter.description(), ",=");
  });
  return all;
}

bool areEqual(const CMSymParmSet& a, const CMSymParmSet& b) {
  bool all = a.entries() == b.entries();
  a.forEach([&](const CMSymParm& parameter) {
    const CMSymParm* other = b.findSymbolName1(parameter.name());
    all = all && other != nullptr && other->value() == parameter.value() &&
          other->description() == parameter.description();
  });
  return all;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  fuzz::Input input(data, size);
  CMSymParmSet first, second;
  first = attributeOf(input.upTo('\n'));
  second = attributeOf(input.rest());
  const CMSymParmSet copy(first);
  fuzz::require(areEqual(copy, first), "a copy is equal");
  CMSymParmSet again;
  again = first.ConstructFromSymParmSet();
  if (readsBack(first)) fuzz::require(areEqual(first, again), "what was written reads back");
  const std::size_t before = first.entries();
  first.merge(second);
  fuzz::require(first.entries() >= std::max(before, second.entries()), "a merge holds both");
  second.forEach([&](const CMSymParm& parameter) {
    fuzz::require(first.contains(parameter), "a merge holds every name");
  });
  const CMAttribute plain = makeSymParmAttribute(first);
  fuzz::require(plain.attrCount() == 1, "the parameters are one value");
  again = plain;
  fuzz::require(isIn(plain.text(), '=') || first.entries() == 0, "each is written with its sign");
  return 0;
}
