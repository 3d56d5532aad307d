// ObjectChanges: what differs between two chains of one object.
#pragma once

#include <string>
#include <vector>

#include "orxkdb/diff/chain.h"
#include "orxkdb/diff/value_changes.h"
#include "orxkdb/input/attribute_scanner.h"
#include "orxkdb/words/head_fields.h"

namespace orx::orxkdb {

// The joined text of a chain and the attributes in it, in ascending order of their keys, those with
// one key in the order read. They are views of the text, so it is neither copied nor moved; the
// chain is needed no longer.
class ChainText {
 public:
  explicit ChainText(const Chain& chain);
  ChainText(const ChainText&) = delete;
  ChainText& operator=(const ChainText&) = delete;

  [[nodiscard]] const std::vector<ScannedAttribute>& attributes() const { return attributes_; }
  // Whether reading takes all of it, and every attribute has as many values as it states.
  [[nodiscard]] bool parses() const { return parses_; }

 private:
  std::string text_;
  std::vector<ScannedAttribute> attributes_;
  bool parses_ = false;
};

// Its values as reading takes them.
[[nodiscard]] Values valuesOf(const ScannedAttribute& attribute);

// One side is null where the other has an attribute or a record that this one has not. Both point
// into the ObjectChanges, or the chains, that they come from.
template <typename Item>
struct Change {
  const Item* before = nullptr;
  const Item* after = nullptr;
};
using AttributeChange = Change<ScannedAttribute>;
using RecordChange = Change<KeyedRecord>;

// Refers to both chains, which outlive it.
class ObjectChanges {
 public:
  ObjectChanges(const Chain& before, const Chain& after);

  [[nodiscard]] const Chain& before() const { return before_; }
  [[nodiscard]] const Chain& after() const { return after_; }

  // The fields of the first records that differ.
  [[nodiscard]] std::vector<HeadFieldName> head() const {
    return differingFields(before_.head(), after_.head());
  }
  // Whether the numbers of records differ.
  [[nodiscard]] bool chainLength() const { return before_.records.size() != after_.records.size(); }
  // Whether both texts parse; if not, attributes() is empty and the records tell.
  [[nodiscard]] bool textsParse() const { return beforeText_.parses() && afterText_.parses(); }
  // Those that differ, in ascending order of their keys.
  [[nodiscard]] const std::vector<AttributeChange>& attributes() const { return attributes_; }
  // Whether nothing but the records tells what differs.
  [[nodiscard]] bool onlyInRecords() const {
    return textsParse() && attributes_.empty() && head().empty() && !chainLength();
  }
  // Those that differ, in order.
  [[nodiscard]] std::vector<RecordChange> records() const;

 private:
  const Chain& before_;
  const Chain& after_;
  ChainText beforeText_;
  ChainText afterText_;
  std::vector<AttributeChange> attributes_;
};

}  // namespace orx::orxkdb
