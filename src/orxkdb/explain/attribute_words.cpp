#include "orxkdb/explain/attribute_words.h"

#include <nlohmann/json.hpp>
#include <optional>

#include "model/attribute.h"
#include "orxkdb/check/text_scanner.h"
#include "orxkdb/explain/handle_words.h"
#include "orxkdb/handle_number.h"
#include "orxkdb/known_attributes.h"
#include "orxkdb/printable.h"
#include "restore/use_count_types.h"

namespace orx::orxkdb {

namespace {

// One attribute of an object whose role tells what its values mean.
class ExplainedAttribute {
 public:
  ExplainedAttribute(const ScannedAttribute& scanned, const DataBuffer& head)
      : scanned_(scanned),
        attribute_(scanned.text, 1),
        isOfSystem_(head.objectHandle().isNull()),
        isOfModel_(takesPartInUseCount(head.recType()) && isModel(head.recType())) {}

  [[nodiscard]] std::string text() const;
  [[nodiscard]] nlohmann::ordered_json json() const;

 private:
  [[nodiscard]] int key() const { return scanned_.key; }
  [[nodiscard]] const char* name() const;
  [[nodiscard]] std::optional<int> counterType(std::size_t index) const;
  [[nodiscard]] std::optional<CMConfigHandle> handleIn(std::string_view value) const;
  [[nodiscard]] std::string valueText(std::string_view value, std::size_t index) const;
  [[nodiscard]] nlohmann::ordered_json valueJson(std::string_view value, std::size_t index) const;

  ScannedAttribute scanned_;
  CMAttribute attribute_;
  bool isOfSystem_;
  bool isOfModel_;
};

// Empty for an attribute whose meaning only the objects' own programs know.
const char* ExplainedAttribute::name() const {
  if (isOfSystem_ && key() == known_attribute::systemParameters) return "system parameters";
  if (isOfSystem_ && key() == known_attribute::counters) return "identifier counters";
  if (isOfModel_ && key() == known_attribute::useCount) return "use count";
  if (key() == known_attribute::signatures) return "signatures";
  return holdsHandles(key()) ? "handles" : "";
}

// The handle type that a counter belongs to.
std::optional<int> ExplainedAttribute::counterType(std::size_t index) const {
  const bool isCounter = isOfSystem_ && key() == known_attribute::counters;
  if (!isCounter || index >= handlerTypes.size()) return std::nullopt;
  return handlerTypes[index];
}

// Sixteen digits may be anything, unless the attribute is one of handles.
std::optional<CMConfigHandle> ExplainedAttribute::handleIn(std::string_view value) const {
  if (!value.starts_with('<') && !holdsHandles(key())) return std::nullopt;
  const auto number = readHandleText(value);
  return number ? std::optional(handleOf(*number)) : std::nullopt;
}

std::string ExplainedAttribute::valueText(std::string_view value, std::size_t index) const {
  std::string text = "    ";
  if (const auto type = counterType(index)) text += "type " + std::to_string(*type) + ": ";
  const auto handle = handleIn(value);
  return text + (handle ? handleWords(*handle) : "\"" + printable(value) + "\"") + "\n";
}

nlohmann::ordered_json ExplainedAttribute::valueJson(std::string_view value,
                                                     std::size_t index) const {
  nlohmann::ordered_json json{{"text", value}};
  if (const auto type = counterType(index)) json["type"] = *type;
  if (const auto handle = handleIn(value)) json["handle"] = handleJson(*handle);
  return json;
}

std::string ExplainedAttribute::text() const {
  const CMAttributeKey& number = attribute_.key();
  std::string text = "  attribute " + std::to_string(number.attrId()) + " of group " +
                     std::to_string(number.attrGroup()) + ", key " + std::to_string(key());
  if (*name() != '\0') text.append(" (").append(name()).append(")");
  text.append(", ").append(std::to_string(attribute_.attrCount()));
  text.append(attribute_.attrCount() == 1 ? " value" : " values");
  if (scanned_.statedCount != attribute_.attrCount()) {
    text += ", though it states " + std::to_string(scanned_.statedCount);
  }
  text += "\n";
  std::size_t index = 0;
  for (const std::string_view value : attribute_.values()) text += valueText(value, index++);
  return text;
}

nlohmann::ordered_json ExplainedAttribute::json() const {
  nlohmann::ordered_json values = nlohmann::ordered_json::array();
  for (const std::string_view value : attribute_.values()) {
    values.push_back(valueJson(value, values.size()));
  }
  nlohmann::ordered_json json{{"key", key()},
                              {"attrId", attribute_.key().attrId()},
                              {"attrGroup", attribute_.key().attrGroup()},
                              {"statedCount", scanned_.statedCount},
                              {"values", values}};
  if (*name() != '\0') json["name"] = name();
  return json;
}

}  // namespace

std::string attributesText(std::string_view text, const DataBuffer& head) {
  std::string words;
  TextScanner scanner(text);
  for (ScannedAttribute scanned; scanner.next(scanned);) {
    words += ExplainedAttribute(scanned, head).text();
  }
  return words;
}

nlohmann::ordered_json attributesJson(std::string_view text, const DataBuffer& head) {
  nlohmann::ordered_json json = nlohmann::ordered_json::array();
  TextScanner scanner(text);
  for (ScannedAttribute scanned; scanner.next(scanned);) {
    json.push_back(ExplainedAttribute(scanned, head).json());
  }
  return json;
}

std::string_view unreadText(std::string_view text) {
  TextScanner scanner(text);
  for (ScannedAttribute scanned; scanner.next(scanned);) continue;
  return scanner.rest();
}

}  // namespace orx::orxkdb
