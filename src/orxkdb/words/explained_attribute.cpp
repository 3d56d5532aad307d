#include "orxkdb/words/explained_attribute.h"

#include <nlohmann/json.hpp>

#include "orxkdb/keys/handle_number.h"
#include "orxkdb/words/counted.h"
#include "orxkdb/words/handle_words.h"
#include "orxkdb/words/printable.h"
#include "restore/handle_attributes.h"
#include "restore/known_attributes.h"
#include "restore/merge_types.h"
#include "restore/use_count_types.h"

namespace orx::orxkdb {

ExplainedAttribute::ExplainedAttribute(const ScannedAttribute& scanned, const DataBuffer& head)
    : scanned_(scanned),
      attribute_(scanned.text, 1),
      isOfSystem_(head.hasNullObject()),
      isOfModel_(isCountedModel(head.recType())) {}

// Empty for an attribute whose meaning only the objects' own programs know.
const char* ExplainedAttribute::name() const {
  if (isOfSystem_ && key() == known_attribute::systemParameters) return "system parameters";
  if (isOfSystem_ && key() == known_attribute::counters) return "identifier counters";
  if (isOfModel_ && key() == known_attribute::useCount) return "use count";
  if (key() == known_attribute::signatures) return "signatures";
  return isHandleAttribute(key()) ? "handles" : "";
}

// The handle type that a counter belongs to.
std::optional<int> ExplainedAttribute::counterType(std::size_t index) const {
  const bool isCounter = isOfSystem_ && key() == known_attribute::counters;
  if (!isCounter || index >= handlerTypes.size()) return std::nullopt;
  return handlerTypes[index];
}

// Sixteen digits may be anything, unless the attribute is one of handles.
std::optional<CMConfigHandle> ExplainedAttribute::handleIn(std::string_view value) const {
  if (!value.starts_with('<') && !isHandleAttribute(key())) return std::nullopt;
  const auto number = readHandleText(value);
  return number ? std::optional(handleOf(*number)) : std::nullopt;
}

std::string ExplainedAttribute::valueWords(std::string_view value, std::size_t index) const {
  std::string text;
  if (const auto type = counterType(index)) text += "type " + std::to_string(*type) + ": ";
  const auto handle = handleIn(value);
  return text + (handle ? handleWords(*handle) : "\"" + printable(value) + "\"");
}

nlohmann::ordered_json ExplainedAttribute::valueJson(std::string_view value,
                                                     std::size_t index) const {
  nlohmann::ordered_json json{{"text", value}};
  if (const auto type = counterType(index)) json["type"] = *type;
  if (const auto handle = handleIn(value)) json["handle"] = handleJson(*handle);
  return json;
}

std::string ExplainedAttribute::title() const {
  const CMAttributeKey& number = attribute_.key();
  std::string text = "attribute " + std::to_string(number.attrId()) + " of group " +
                     std::to_string(number.attrGroup()) + ", key " + std::to_string(key());
  if (*name() != '\0') text.append(" (").append(name()).append(")");
  return text;
}

std::string ExplainedAttribute::text() const {
  const auto count = static_cast<std::uint64_t>(attribute_.attrCount());
  std::string text = "  " + title() + ", " + counted(count, "value");
  if (scanned_.statedCount != attribute_.attrCount()) {
    text += ", though it states " + std::to_string(scanned_.statedCount);
  }
  text += "\n";
  std::size_t index = 0;
  for (const std::string_view value : attribute_.values()) {
    text += "    " + valueWords(value, index++) + "\n";
  }
  return text;
}

nlohmann::ordered_json ExplainedAttribute::titleJson() const {
  return {{"key", key()},
          {"attrId", attribute_.key().attrId()},
          {"attrGroup", attribute_.key().attrGroup()}};
}

nlohmann::ordered_json ExplainedAttribute::valuesJson() const {
  nlohmann::ordered_json values = nlohmann::ordered_json::array();
  for (const std::string_view value : attribute_.values()) {
    values.push_back(valueJson(value, values.size()));
  }
  return values;
}

nlohmann::ordered_json ExplainedAttribute::json() const {
  nlohmann::ordered_json json = titleJson();
  json["statedCount"] = scanned_.statedCount;
  json["values"] = valuesJson();
  if (*name() != '\0') json["name"] = name();
  return json;
}

}  // namespace orx::orxkdb
