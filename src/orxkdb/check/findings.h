// What a check finds: the kinds of findings, and the findings themselves, all counted and some kept
// to be shown.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "orxkdb/keys/handle_number.h"

namespace orx::orxkdb {

// In the order of the report; findingKinds, in the same order, has a row for each and says what it
// means.
enum class FindingKind : std::uint8_t {
  lineLength,
  zeroByte,
  handleColumn,
  numberColumn,
  dataLength,
  duplicateKey,
  storedKey,
  notCarried,
  chainGap,
  chainDisagrees,
  recordType,
  textLeftOver,
  attributeHeader,
  valueCount,
  notReadBack,
  ambiguousValue,
  repeatedAttribute,
  handleValue,
  missingObject,
  parentCycle,
  notAModel,
  noUseCount,
  useCount,
  signatures,
  noSystemRecord,
  straySystemRecord,
  noCounters,
  counter,
  systemParameters,
  nearLimit,
};

struct FindingKindText {
  FindingKind kind;
  std::string_view name;          // of the kind, for scripts: "line-length"
  std::string_view meaningLines;  // what follows from such a finding, in the lines of a report

  // The same on one line.
  [[nodiscard]] std::string meaning() const;
};

inline constexpr std::size_t findingKindCount =
    static_cast<std::size_t>(FindingKind::nearLimit) + 1;
extern const std::array<FindingKindText, findingKindCount> findingKinds;

[[nodiscard]] inline std::string_view nameOf(FindingKind kind) {
  return findingKinds[static_cast<std::size_t>(kind)].name;
}

// Where a finding is: any of these may be missing.
struct Place {
  std::uint64_t line = 0;  // of a backup, from 1 on; 0 for none
  struct Object {
    HandleNumber parent;
    HandleNumber object;
  };
  std::optional<Object> object;
  std::optional<std::uint32_t> recn;
};

struct Finding {
  Place place;
  std::string text;  // what is wrong, as the end of a line; bytes of the input may be in it
};

class Findings {
 public:
  // Keeps at most `limit` findings of each kind; 0 keeps all.
  explicit Findings(std::size_t limit) : limit_(limit) {}

  // `text` is called, for the text of the finding, only when it is kept.
  template <typename Text>
  void add(FindingKind kind, const Place& place, Text text) {
    Entry& entry = entries_[static_cast<std::size_t>(kind)];
    ++entry.count;
    if (limit_ == 0 || entry.kept.size() < limit_) entry.kept.push_back({place, text()});
  }

  [[nodiscard]] std::uint64_t count(FindingKind kind) const {
    return entries_[static_cast<std::size_t>(kind)].count;
  }
  [[nodiscard]] const std::vector<Finding>& kept(FindingKind kind) const {
    return entries_[static_cast<std::size_t>(kind)].kept;
  }
  [[nodiscard]] std::uint64_t total() const;
  [[nodiscard]] std::size_t kindsFound() const;

 private:
  struct Entry {
    std::uint64_t count = 0;
    std::vector<Finding> kept;
  };

  std::size_t limit_;
  std::array<Entry, findingKindCount> entries_;
};

}  // namespace orx::orxkdb
