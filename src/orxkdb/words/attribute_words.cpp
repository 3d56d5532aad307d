#include "orxkdb/words/attribute_words.h"

#include <nlohmann/json.hpp>

#include "orxkdb/input/attribute_scanner.h"
#include "orxkdb/words/explained_attribute.h"

namespace orx::orxkdb {

std::string attributesText(std::string_view text, const DataBuffer& head) {
  std::string words;
  AttributeScanner scanner(text);
  for (ScannedAttribute scanned; scanner.next(scanned);) {
    words += ExplainedAttribute(scanned, head).text();
  }
  return words;
}

nlohmann::ordered_json attributesJson(std::string_view text, const DataBuffer& head) {
  nlohmann::ordered_json json = nlohmann::ordered_json::array();
  AttributeScanner scanner(text);
  for (ScannedAttribute scanned; scanner.next(scanned);) {
    json.push_back(ExplainedAttribute(scanned, head).json());
  }
  return json;
}

std::string_view unreadText(std::string_view text) {
  AttributeScanner scanner(text);
  for (ScannedAttribute scanned; scanner.next(scanned);) continue;
  return scanner.rest();
}

}  // namespace orx::orxkdb
