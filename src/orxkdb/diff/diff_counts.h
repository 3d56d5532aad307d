// How much differs, by kind.
#pragma once

#include <array>
#include <cstdint>

#include "orxkdb/diff/change_words.h"

namespace orx::orxkdb {

struct DiffCounts {
  std::array<std::uint64_t, 3> objects{};  // by ObjectChange
  std::uint64_t unchanged = 0;
  // Of the changed objects.
  std::uint64_t headFields = 0;    // that differ
  std::uint64_t chainLengths = 0;  // objects of which they differ
  std::uint64_t attributesAdded = 0;
  std::uint64_t attributesRemoved = 0;
  std::uint64_t attributesChanged = 0;
  std::uint64_t textsNotParsed = 0;   // objects of which a text does not parse
  std::uint64_t onlyInRecords = 0;    // objects of which nothing but the records differs
  std::uint64_t unreadableLines = 0;  // of both inputs

  [[nodiscard]] std::uint64_t of(ObjectChange change) const {
    return objects[static_cast<std::size_t>(change)];
  }
  [[nodiscard]] bool isSame() const {
    return objects == decltype(objects){} && unreadableLines == 0;
  }

  // Counts what differs in a changed object; the object itself is counted in `objects`.
  void add(const ObjectChanges& changes) {
    headFields += changes.head().size();
    chainLengths += changes.chainLength() ? 1 : 0;
    textsNotParsed += changes.textsParse() ? 0 : 1;
    onlyInRecords += changes.onlyInRecords() ? 1 : 0;
    for (const AttributeChange& change : changes.attributes()) {
      const bool isAdded = change.before == nullptr;
      const bool isRemoved = change.after == nullptr;
      ++(isAdded ? attributesAdded : isRemoved ? attributesRemoved : attributesChanged);
    }
  }
};

}  // namespace orx::orxkdb
