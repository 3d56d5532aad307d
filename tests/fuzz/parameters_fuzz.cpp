// The text of the system parameters, read, written in both ways and read again.
#include <algorithm>
#include <string>

#include "model/sym_parm_set.h"
#include "restore/sym_parm_attribute.h"
#include "tests/fuzz/fuzz_target.h"
#include "tests/support/attributes.h"

namespace orx::fuzz {
namespace {

// Fields with a mark at an end are told from the delimiter beside them by nothing.
bool readsBack(const CMSymParmSet& set) {
  const auto isMark = [](char c) { return c == ',' || c == '='; };
  bool all = true;
  set.forEach([&](const CMSymParm& parameter) {
    for (const std::string_view field : {std::string_view(parameter.name()), parameter.value(),
                                         std::string_view(parameter.description())}) {
      all = all && (field.empty() || (!isMark(field.front()) && !isMark(field.back())));
    }
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

const Registration target("parameters", [](Input& input) {
  CMSymParmSet first = test::parametersOf(std::string(input.upTo('\n')));
  const CMSymParmSet second = test::parametersOf(std::string(input.rest()));
  const CMSymParmSet copy(first);
  require(areEqual(copy, first), "a copy is equal");
  CMSymParmSet again;
  again = first.ConstructFromSymParmSet();
  if (readsBack(first)) require(areEqual(first, again), "what was written reads back");
  const std::size_t before = first.entries();
  first.merge(second);
  require(first.entries() >= std::max(before, second.entries()), "a merge holds both");
  second.forEach([&](const CMSymParm& parameter) {
    require(first.contains(parameter), "a merge holds every name");
  });
  const CMAttribute plain = makeSymParmAttribute(first);
  require(plain.attrCount() == 1, "the parameters are one value");
  again = plain;
  require(plain.text().find('=') != std::string::npos || first.entries() == 0,
          "each is written with its sign");
});

}  // namespace
}  // namespace orx::fuzz
