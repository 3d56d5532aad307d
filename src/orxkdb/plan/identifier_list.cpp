#include "orxkdb/plan/identifier_list.h"

#include <algorithm>
#include <limits>

namespace orx::orxkdb {

namespace {

void makeAscending(std::vector<std::uint32_t>& numbers) {
  std::ranges::sort(numbers);
  numbers.erase(std::unique(numbers.begin(), numbers.end()), numbers.end());
}

bool continues(const IdentifierRange& range, std::uint32_t identifier, std::uint32_t shift) {
  constexpr std::uint32_t highest = std::numeric_limits<std::uint32_t>::max();
  return range.last != highest && identifier == range.last + 1 && identifier + shift != 0;
}

std::vector<IdentifierRange> rangesOf(const std::vector<std::uint32_t>& ascending,
                                      std::uint32_t shift) {
  std::vector<IdentifierRange> ranges;
  for (const std::uint32_t identifier : ascending) {
    if (!ranges.empty() && continues(ranges.back(), identifier, shift)) {
      ranges.back().last = identifier;
    } else {
      ranges.push_back({identifier, identifier});
    }
  }
  return ranges;
}

TypeIdentifiers describe(std::uint8_t type, std::vector<std::uint32_t>& identifiers,
                         const MergeTables& tables) {
  TypeIdentifiers result{.type = type, .isRenumbered = tables.renumbers(CMHandleType(type))};
  if (result.isRenumbered) result.shift = tables.idBase[type] - 1;
  for (std::uint32_t& identifier : identifiers) identifier -= result.shift;
  makeAscending(identifiers);
  result.count = identifiers.size();
  result.ranges = rangesOf(identifiers, result.shift);
  return result;
}

}  // namespace

void IdentifierList::add(const CMConfigHandle& object) {
  const HandleNumber number = numberOf(object.bytes());
  if (number != nullHandle) byType_[typeOf(number)].push_back(identifierOf(number));
}

std::vector<TypeIdentifiers> IdentifierList::take(const MergeTables& tables) {
  std::vector<TypeIdentifiers> types;
  for (std::size_t type = 0; type < byType_.size(); ++type) {
    if (byType_[type].empty()) continue;
    types.push_back(describe(static_cast<std::uint8_t>(type), byType_[type], tables));
    byType_[type] = {};
  }
  return types;
}

}  // namespace orx::orxkdb
