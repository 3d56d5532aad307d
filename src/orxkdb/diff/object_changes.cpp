#include "orxkdb/diff/object_changes.h"

#include <algorithm>

namespace orx::orxkdb {

namespace {

bool isComplete(const ScannedAttribute& attribute) {
  const bool hasAll = attribute.statedCount < 0 || attribute.statedCount == attribute.valueCount;
  return attribute.hasHeader && hasAll && !attribute.hasRest;
}

bool sameAttribute(const ScannedAttribute& a, const ScannedAttribute& b) {
  return a.text == b.text || valuesOf(a) == valuesOf(b);
}

bool sameRecord(const KeyedRecord& a, const KeyedRecord& b) {
  return a.record == b.record;
}

// What only one of two lists in ascending order of `key` has, and what both have but not the same.
template <typename Item, typename Key, typename Same>
std::vector<Change<Item>> mergeLists(const std::vector<Item>& before,
                                     const std::vector<Item>& after, Key key, Same same) {
  std::vector<Change<Item>> changes;
  auto left = before.begin();
  auto right = after.begin();
  while (left != before.end() || right != after.end()) {
    const bool takesLeft =
        right == after.end() || (left != before.end() && key(*left) <= key(*right));
    const bool takesRight =
        left == before.end() || (right != after.end() && key(*right) <= key(*left));
    const Change<Item> change{takesLeft ? &*left++ : nullptr, takesRight ? &*right++ : nullptr};
    if (!takesLeft || !takesRight || !same(*change.before, *change.after)) {
      changes.push_back(change);
    }
  }
  return changes;
}

}  // namespace

ChainText::ChainText(const Chain& chain) {
  for (const KeyedRecord& record : chain.records) text_ += record.record.text();
  AttributeScanner scanner(text_);
  for (ScannedAttribute attribute; scanner.next(attribute);) attributes_.push_back(attribute);
  parses_ = scanner.rest().empty() && std::ranges::all_of(attributes_, isComplete);
  std::ranges::stable_sort(attributes_, {}, &ScannedAttribute::key);
}

Values valuesOf(const ScannedAttribute& attribute) {
  Values values;
  for (std::string_view rest = attribute.values; !rest.empty();) {
    takeValue(rest, values.emplace_back());
  }
  return values;
}

ObjectChanges::ObjectChanges(const Chain& before, const Chain& after)
    : before_(before), after_(after), beforeText_(before), afterText_(after) {
  if (!textsParse()) return;
  const auto key = [](const ScannedAttribute& attribute) { return attribute.key; };
  attributes_ = mergeLists(beforeText_.attributes(), afterText_.attributes(), key, sameAttribute);
}

std::vector<RecordChange> ObjectChanges::records() const {
  const auto recn = [](const KeyedRecord& record) { return record.key.recn; };
  return mergeLists(before_.records, after_.records, recn, sameRecord);
}

}  // namespace orx::orxkdb
