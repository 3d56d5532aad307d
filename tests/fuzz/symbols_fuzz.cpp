// Symbolic parameters in a text, resolved against a set whose values may refer to each other.
#include <algorithm>
#include <cstring>
#include <string>
#include <vector>

#include "model/symbol_resolution.h"
#include "tests/fuzz/fuzz_target.h"

namespace orx::fuzz {
namespace {

// Few and short parameters: many that refer to each other take seconds until the limits are met.
constexpr std::size_t fewParameters = 6;
constexpr std::size_t shortValue = 16;

// "NAME=VALUE" lines up to an empty one.
void readParameters(Input& input, bool isLimited, CMSymParmSet& set) {
  for (auto line = input.upTo('\n'); !line.empty(); line = input.upTo('\n')) {
    if (isLimited && set.entries() == fewParameters) continue;
    const std::size_t sign = std::min(line.find('='), line.size());
    const std::string name(line.substr(0, sign));
    std::string value(line.substr(std::min(sign + 1, line.size())));
    if (isLimited) value.resize(std::min(value.size(), shortValue));
    auto parameter = std::make_unique<CMSymParm>(name.c_str(), value.c_str(),
                                                 sym_parm_kind::fromText, 0, nullptr);
    (void)set.insertUniqueParm(parameter);
  }
}

void checkRange(const std::string& text) {
  SubstrRange range;
  const int length = static_cast<int>(text.size());
  if (getSubstrRange(text.c_str(), length, range, 0) == 1) {
    require(std::strlen(text.c_str()) < 100, "a range is shorter than 100 bytes");
  }
  std::string part;
  AddCharToString(part, text.c_str(), length, &range);
  require(text.find(part) != std::string::npos, "a part of a text is found in it");
}

const Registration target("symbols", [](Input& input) {
  constexpr std::uint8_t unlimited = 0xFF;
  const std::uint8_t first = input.byte();
  const int utf8Mode = first % 2;
  CMSymParmSet set;
  readParameters(input, first != unlimited, set);
  const std::string text(input.rest());
  const std::size_t entries = set.entries();
  std::vector<CMSymParm*> changed;
  const std::string result = ResolveSymbolsInString(text.c_str(), &set, utf8Mode, &changed);
  require(set.entries() == entries, "no parameter gets lost");
  require(result.size() <= symbol_limits::resultBytes + text.size(),
          "the result keeps within its limit");
  if (text.find('&') == std::string::npos) {
    require(result == text.c_str(), "a text without references stays");
  }
  const auto without = ResolveSymbolsInString(text.c_str(), nullptr, utf8Mode);
  require(without.size() <= text.size(), "without a set nothing grows");
  checkRange(text);
});

}  // namespace
}  // namespace orx::fuzz
