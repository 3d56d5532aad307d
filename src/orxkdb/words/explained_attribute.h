// ExplainedAttribute: one attribute of an object, whose role tells what its values mean. The text
// that was scanned outlives it.
#pragma once

#include <nlohmann/json_fwd.hpp>
#include <optional>
#include <string>
#include <string_view>

#include "model/attribute.h"
#include "orxkdb/input/attribute_scanner.h"
#include "records/data_buffer.h"

namespace orx::orxkdb {

class ExplainedAttribute {
 public:
  // `head` is the first record of the object.
  ExplainedAttribute(const ScannedAttribute& scanned, const DataBuffer& head);

  // "attribute 17 of group 0, key 17 (use count)".
  [[nodiscard]] std::string title() const;
  // A value in words, `index` its place from 0 on.
  [[nodiscard]] std::string valueWords(std::string_view value, std::size_t index) const;
  // The whole attribute, a line for each value.
  [[nodiscard]] std::string text() const;

  // "key", "attrId", "attrGroup".
  [[nodiscard]] nlohmann::ordered_json titleJson() const;
  // An array with "text" of each value and, where it is one, "handle".
  [[nodiscard]] nlohmann::ordered_json valuesJson() const;
  // The whole attribute, titleJson() and the values.
  [[nodiscard]] nlohmann::ordered_json json() const;

 private:
  [[nodiscard]] int key() const { return scanned_.key; }
  [[nodiscard]] const char* name() const;
  [[nodiscard]] std::optional<int> counterType(std::size_t index) const;
  [[nodiscard]] std::optional<CMConfigHandle> handleIn(std::string_view value) const;
  [[nodiscard]] nlohmann::ordered_json valueJson(std::string_view value, std::size_t index) const;

  ScannedAttribute scanned_;
  CMAttribute attribute_;
  bool isOfSystem_;
  bool isOfModel_;
};

}  // namespace orx::orxkdb
