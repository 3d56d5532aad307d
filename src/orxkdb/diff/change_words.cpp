#include "orxkdb/diff/change_words.h"

#include <nlohmann/json.hpp>

#include "orxkdb/diff/record_words.h"
#include "orxkdb/words/counted.h"
#include "orxkdb/words/explained_attribute.h"
#include "orxkdb/words/handle_words.h"

namespace orx::orxkdb {

namespace {

using Json = nlohmann::ordered_json;

// With its digits where the exported form of another handle may be the same.
std::string handleName(HandleNumber handle) {
  std::string name = exportedForm(handle);
  if (normalForm(handle) == handle) return name;
  return name + " (" + handleOf(handle).externText().c_str() + ")";
}

std::string heading(ObjectChange change, const ObjectKey& key) {
  return std::string(nameOf(change)) + ": object " + handleName(key.object) + " parent " +
         handleName(key.parent);
}

Json headingJson(ObjectChange change, const ObjectKey& key) {
  return {{"change", nameOf(change)},
          {"object", handleJson(handleOf(key.object))},
          {"parent", handleJson(handleOf(key.parent))}};
}

// --- attributes

std::string valueLine(const char* mark, const ExplainedAttribute& words, const Values& values,
                      std::size_t index) {
  return std::string("    ") + mark + " " + std::to_string(index + 1) + ": " +
         words.valueWords(values[index], index) + "\n";
}

std::string oneSidedAttributeText(const ScannedAttribute& attribute, const DataBuffer& head,
                                  bool isAdded) {
  const ExplainedAttribute words(attribute, head);
  const Values values = valuesOf(attribute);
  std::string text = "  " + words.title() + ", " + (isAdded ? "added" : "removed") + " with " +
                     counted(values.size(), "value") + "\n";
  for (std::size_t index = 0; index < values.size(); ++index) {
    text += valueLine(isAdded ? "+" : "-", words, values, index);
  }
  return text;
}

std::string changedAttributeText(const AttributeChange& change, const ObjectChanges& changes) {
  const ExplainedAttribute oldWords(*change.before, changes.before().head());
  const ExplainedAttribute newWords(*change.after, changes.after().head());
  const Values before = valuesOf(*change.before);
  const Values after = valuesOf(*change.after);
  const ValueChanges values = compareValues(before, after);
  std::string text = "  " + newWords.title() + ", " + counted(before.size(), "value");
  if (before.size() != after.size()) text += " -> " + std::to_string(after.size());
  if (values.reordered) text += ", values that both have stand in another order";
  text += "\n";
  for (const std::size_t index : values.removed) text += valueLine("-", oldWords, before, index);
  for (const std::size_t index : values.added) text += valueLine("+", newWords, after, index);
  return text;
}

std::string attributeText(const AttributeChange& change, const ObjectChanges& changes) {
  if (change.before == nullptr) {
    return oneSidedAttributeText(*change.after, changes.after().head(), true);
  }
  if (change.after == nullptr) {
    return oneSidedAttributeText(*change.before, changes.before().head(), false);
  }
  return changedAttributeText(change, changes);
}

Json attributeJson(const AttributeChange& change, const ObjectChanges& changes) {
  const bool isRemoved = change.after == nullptr;
  const bool isAdded = change.before == nullptr;
  const DataBuffer& head = isRemoved ? changes.before().head() : changes.after().head();
  Json json = ExplainedAttribute(isRemoved ? *change.before : *change.after, head).titleJson();
  json["change"] = isAdded ? "added" : isRemoved ? "removed" : "changed";
  if (!isAdded) {
    json["old"] = ExplainedAttribute(*change.before, changes.before().head()).valuesJson();
  }
  if (!isRemoved) json["new"] = ExplainedAttribute(*change.after, head).valuesJson();
  return json;
}

// --- objects

std::string headText(const ObjectChanges& changes) {
  std::string text;
  for (const HeadFieldName& field : changes.head()) {
    text += "  " + std::string(field.name) + ": " +
            fieldWords(field.field, changes.before().head()) + " -> " +
            fieldWords(field.field, changes.after().head()) + "\n";
  }
  return text;
}

Json headJson(const ObjectChanges& changes) {
  Json list = Json::array();
  for (const HeadFieldName& field : changes.head()) {
    list.push_back({{"field", field.name},
                    {"old", fieldJson(field.field, changes.before().head())},
                    {"new", fieldJson(field.field, changes.after().head())}});
  }
  return list;
}

bool showsRecords(const ObjectChanges& changes, bool withRecords) {
  return withRecords || !changes.textsParse() || changes.onlyInRecords();
}

}  // namespace

const char* nameOf(ObjectChange change) {
  switch (change) {
    case ObjectChange::added:
      return "added";
    case ObjectChange::removed:
      return "removed";
    case ObjectChange::changed:
      break;
  }
  return "changed";
}

std::string oneSidedText(ObjectChange change, const Chain& chain) {
  return heading(change, chain.key) + ", recType " + std::to_string(chain.head().recType()) + ", " +
         counted(chain.records.size(), "record") + ", " +
         counted(ChainText(chain).attributes().size(), "attribute") + "\n";
}

Json oneSidedJson(ObjectChange change, const Chain& chain) {
  Json json = headingJson(change, chain.key);
  json["recType"] = chain.head().recType();
  json["records"] = chain.records.size();
  json["attributes"] = ChainText(chain).attributes().size();
  return json;
}

std::string changedText(const ObjectChanges& changes, bool withRecords) {
  std::string text = heading(ObjectChange::changed, changes.before().key) + "\n";
  text += headText(changes);
  if (changes.chainLength()) {
    text += "  chain: " + counted(changes.before().records.size(), "record") + " -> " +
            std::to_string(changes.after().records.size()) + "\n";
  }
  for (const AttributeChange& change : changes.attributes()) text += attributeText(change, changes);
  if (!changes.textsParse()) text += "  text that does not parse, compared byte by byte\n";
  if (changes.onlyInRecords()) text += "  same attributes, other records\n";
  if (!showsRecords(changes, withRecords)) return text;
  for (const RecordChange& change : changes.records()) text += "  " + recordText(change) + "\n";
  return text;
}

Json changedJson(const ObjectChanges& changes, bool withRecords) {
  Json json = headingJson(ObjectChange::changed, changes.before().key);
  json["head"] = headJson(changes);
  json["chain"] = {{"old", changes.before().records.size()},
                   {"new", changes.after().records.size()}};
  json["textsParse"] = changes.textsParse();
  Json& attributes = json["attributes"] = Json::array();
  for (const AttributeChange& change : changes.attributes()) {
    attributes.push_back(attributeJson(change, changes));
  }
  if (!showsRecords(changes, withRecords)) return json;
  Json& records = json["records"] = Json::array();
  for (const RecordChange& change : changes.records()) records.push_back(recordJson(change));
  return json;
}

}  // namespace orx::orxkdb
