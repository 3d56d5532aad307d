#include "orxkdb/diff/record_words.h"

#include <algorithm>
#include <nlohmann/json.hpp>
#include <string_view>

#include "orxkdb/keys/record_name.h"
#include "orxkdb/words/handle_words.h"
#include "orxkdb/words/printable.h"

namespace orx::orxkdb {

namespace {

using Json = nlohmann::ordered_json;

constexpr std::size_t shownBytes = 32;

std::string excerpt(std::string_view text, std::size_t from) {
  const std::string_view rest = text.substr(from);
  return "\"" + printable(rest.substr(0, shownBytes)) + "\"" +
         (rest.size() > shownBytes ? "..." : "");
}

std::string textWords(std::string_view before, std::string_view after) {
  const auto at =
      static_cast<std::size_t>(std::ranges::mismatch(before, after).in1 - before.begin());
  std::string text = "text of " + std::to_string(before.size());
  if (before.size() != after.size()) text += " -> " + std::to_string(after.size());
  return text + " bytes, from byte " + std::to_string(at) + " on " + excerpt(before, at) + " -> " +
         excerpt(after, at);
}

bool sameKey(const DataBuffer& a, const DataBuffer& b) {
  return std::ranges::equal(a.key(), b.key());
}

bool sameBytesBehindText(const DataBuffer& a, const DataBuffer& b) {
  return std::ranges::equal(a.attrText().subspan(a.text().size()),
                            b.attrText().subspan(b.text().size()));
}

std::string fieldsText(const DataBuffer& before, const DataBuffer& after) {
  std::string text;
  const auto add = [&text](const std::string& field) {
    text.append(text.empty() ? "" : ", ").append(field);
  };
  if (!sameKey(before, after)) {
    add("the key that it holds: " + recordName(before) + " -> " + recordName(after));
  }
  for (const HeadFieldName& field : differingFields(before, after)) {
    add(std::string(field.name) + " " + fieldWords(field.field, before) + " -> " +
        fieldWords(field.field, after));
  }
  if (before.text() != after.text()) {
    add(textWords(before.text(), after.text()));
  } else if (!sameBytesBehindText(before, after)) {
    add("bytes behind the zero byte that ends the text");
  }
  return text;
}

Json fieldsJson(const DataBuffer& before, const DataBuffer& after) {
  Json json = Json::object();
  const auto add = [&json](const char* name, const Json& old, const Json& now) {
    json[name] = {{"old", old}, {"new", now}};
  };
  if (!sameKey(before, after)) add("key", recordName(before), recordName(after));
  for (const HeadFieldName& field : differingFields(before, after)) {
    add(field.name, fieldJson(field.field, before), fieldJson(field.field, after));
  }
  if (before.text() != after.text()) add("text", before.text(), after.text());
  if (before.text() == after.text() && !sameBytesBehindText(before, after)) {
    json["bytesBehindText"] = "changed";
  }
  return json;
}

const KeyedRecord& eitherOf(const RecordChange& change) {
  return change.before != nullptr ? *change.before : *change.after;
}

const char* nameOf(const RecordChange& change) {
  if (change.before == nullptr) return "added";
  return change.after == nullptr ? "removed" : "changed";
}

bool isOneSided(const RecordChange& change) {
  return change.before == nullptr || change.after == nullptr;
}

}  // namespace

std::string fieldWords(HeadField field, const DataBuffer& record) {
  switch (field) {
    case HeadField::recType:
      return std::to_string(record.recType());
    case HeadField::modelHandle:
      return handleWords(record.modelHandle());
    case HeadField::auxValue1:
      return std::to_string(record.auxValue1());
    case HeadField::auxValue2:
      break;
  }
  return std::to_string(record.auxValue2());
}

Json fieldJson(HeadField field, const DataBuffer& record) {
  switch (field) {
    case HeadField::recType:
      return record.recType();
    case HeadField::modelHandle:
      return handleJson(record.modelHandle());
    case HeadField::auxValue1:
      return record.auxValue1();
    case HeadField::auxValue2:
      break;
  }
  return record.auxValue2();
}

std::string recordText(const RecordChange& change) {
  const KeyedRecord& record = eitherOf(change);
  std::string text = "record " + std::to_string(record.key.recn) + ": ";
  if (!isOneSided(change)) return text + fieldsText(change.before->record, change.after->record);
  return text + nameOf(change) + " with " + std::to_string(record.record.text().size()) +
         " bytes of text, " + excerpt(record.record.text(), 0);
}

Json recordJson(const RecordChange& change) {
  const KeyedRecord& record = eitherOf(change);
  Json json{{"recn", record.key.recn}, {"change", nameOf(change)}};
  if (isOneSided(change)) {
    json["text"] = record.record.text();
  } else {
    json["fields"] = fieldsJson(change.before->record, change.after->record);
  }
  return json;
}

}  // namespace orx::orxkdb
