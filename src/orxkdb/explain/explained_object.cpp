#include "orxkdb/explain/explained_object.h"

#include <algorithm>
#include <cctype>
#include <charconv>
#include <nlohmann/json.hpp>
#include <optional>

#include "orxkdb/input/database_reader.h"
#include "orxkdb/words/attribute_words.h"
#include "orxkdb/words/handle_words.h"
#include "orxkdb/words/printable.h"

namespace orx::orxkdb {

namespace {

constexpr std::uint32_t highestType = 255;

std::optional<std::uint32_t> readNumber(std::string_view text) {
  std::uint32_t number = 0;
  const char* const end = text.data() + text.size();
  const auto [stop, error] = std::from_chars(text.data(), end, number);
  if (text.empty() || error != std::errc() || stop != end) return std::nullopt;
  return number;
}

std::optional<HandleNumber> readTypeAndIdentifier(std::string_view text) {
  const std::size_t colon = text.find(':');
  if (colon == std::string_view::npos) return std::nullopt;
  const auto type = readNumber(text.substr(0, colon));
  const auto identifier = readNumber(text.substr(colon + 1));
  if (!type || !identifier || *type > highestType) return std::nullopt;
  const CMHandleType handleType(static_cast<std::int32_t>(*type));
  return numberOf(CMConfigHandle::createPermanentHandle(handleType, *identifier).bytes());
}

std::string upperCase(std::string_view text) {
  std::string upper(text);
  std::ranges::transform(upper, upper.begin(),
                         [](unsigned char c) { return static_cast<char>(std::toupper(c)); });
  return upper;
}

std::string joinedText(const ObjectRecords& records) {
  std::string text;
  for (const DataBuffer& record : records) text += record.text();
  return text;
}

std::string recordText(const DataBuffer& record) {
  return "  record " + std::to_string(record.recn()) + ": recType " +
         std::to_string(record.recType()) + ", auxValue1 " + std::to_string(record.auxValue1()) +
         ", auxValue2 " + std::to_string(record.auxValue2()) + ", " +
         std::to_string(record.text().size()) +
         " bytes of text\n    model: " + handleWords(record.modelHandle()) + "\n";
}

nlohmann::ordered_json recordJson(const DataBuffer& record) {
  return {{"recn", record.recn()},
          {"recType", record.recType()},
          {"modelHandle", handleJson(record.modelHandle())},
          {"auxValue1", record.auxValue1()},
          {"auxValue2", record.auxValue2()},
          {"textBytes", record.text().size()}};
}

}  // namespace

Result readQuery(std::string_view text, ObjectQuery& query) {
  if (const auto number = readTypeAndIdentifier(text)) {
    query = {*number, false};
    return {};
  }
  if (const auto number = readHandleText(upperCase(text))) {
    query = {*number, !text.starts_with('<')};
    return {};
  }
  return fail(exitUsage, "this is no handle", text,
              "give it as \"<1;1;4;0;0;0;9;>\", as 16 hexadecimal digits or as TYPE:ID");
}

Result findObjects(const std::string& database, const ObjectQuery& query,
                   std::vector<ObjectRecords>& objects) {
  DatabaseReader reader;
  if (Result result = reader.open(database); !result.ok()) return result;
  return reader.forEach([&](const DataBuffer& record) -> Result {
    if (!query.matches(numberOf(record.objectBytes()))) return {};
    const bool continues = !objects.empty() && record.isOfSameObject(objects.back().front());
    if (!continues) objects.emplace_back();
    objects.back().push_back(record);
    return {};
  });
}

std::string objectText(const ObjectRecords& records) {
  const DataBuffer& head = records.front();
  std::string text = head.hasNullHandles() ? "system record\n" : "object\n";
  text += "  handle: " + handleWords(head.objectHandle()) + "\n";
  text += "  parent: " + handleWords(head.parentHandle()) + "\n";
  for (const DataBuffer& record : records) text += recordText(record);
  const std::string joined = joinedText(records);
  text += attributesText(joined, head);
  const std::string_view unread = unreadText(joined);
  if (!unread.empty()) text += "  text that is not read: \"" + printable(unread) + "\"\n";
  return text;
}

nlohmann::ordered_json objectJson(const ObjectRecords& records) {
  const DataBuffer& head = records.front();
  const std::string joined = joinedText(records);
  nlohmann::ordered_json list = nlohmann::ordered_json::array();
  for (const DataBuffer& record : records) list.push_back(recordJson(record));
  return {{"handle", handleJson(head.objectHandle())},
          {"parent", handleJson(head.parentHandle())},
          {"records", list},
          {"attributes", attributesJson(joined, head)},
          {"unreadText", unreadText(joined)}};
}

}  // namespace orx::orxkdb
