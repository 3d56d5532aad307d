#include "orxkdb/check/object_checker.h"

#include <algorithm>
#include <cstring>

#include "model/attribute_set.h"
#include "model/written_text.h"
#include "orxkdb/check/system_check.h"
#include "orxkdb/words/attribute_label.h"
#include "orxkdb/words/counted.h"
#include "orxkdb/words/head_fields.h"
#include "orxkdb/words/quote.h"
#include "restore/handle_attributes.h"
#include "restore/known_attributes.h"
#include "restore/system_record.h"
#include "restore/use_count_types.h"

namespace orx::orxkdb {

namespace {

// From recType up to auxValue1, side by side in a record.
constexpr std::size_t sharedSize = data_layout::attrText - data_layout::recType;

bool sharesAll(const DataBuffer& record, const DataBuffer& head) {
  return record.auxValue2() == head.auxValue2() &&
         std::memcmp(record.data() + data_layout::recType, head.data() + data_layout::recType,
                     sharedSize) == 0;
}

std::string differences(const DataBuffer& record, const DataBuffer& head) {
  std::string text;
  for (const HeadFieldName& field : differingFields(record, head)) {
    text.append(text.empty() ? "" : ", ").append(field.name);
  }
  return text;
}

std::string numbers(std::uint32_t first, std::uint32_t last) {
  if (first == last) return "record " + std::to_string(first) + " is missing";
  return "records " + std::to_string(first) + " to " + std::to_string(last) + " are missing";
}

std::optional<std::int32_t> readUseCount(const ScannedAttribute& scanned) {
  const CMAttribute attribute(scanned.text, 1);
  std::string value;
  attribute.getValue3(value, 0);
  const auto number = plainNumber(value);
  if (!number || attribute.attrCount() != 1) return std::nullopt;
  return static_cast<std::int32_t>(*number);
}

}  // namespace

// Most texts are as a set writes them, and hold nothing that others refer to: a look at their bytes
// tells.
bool ObjectChecker::isPlainText(std::string_view text) {
  const auto refersToNone = [](int key) {
    return key != known_attribute::useCount && !isHandleAttribute(key);
  };
  return sizeOfWrittenText(text, refersToNone).has_value();
}

void ObjectChecker::add(const DataBuffer& record, std::uint64_t line, bool isPlain) {
  if (belongsToObject(record)) {
    isPlain_ = false;
  } else {
    endObject();
    begin(record, line, isPlain);
  }
  checkNumber(record, line);
  checkShared(record, line);
  text_ += record.text();
  if (!SystemRecord::holds(record)) return;
  ++systemRecords_;
  systemBytes_ += record.text().size();
  systemText_ += record.text();
}

void ObjectChecker::finish() {
  endObject();
  const auto systemRecord = inventory_.systemRecord();
  if (!systemRecord) return;
  checkSystemText(systemText_, inventory_.placeOf(*systemRecord), findings_, inventory_);
}

bool ObjectChecker::belongsToObject(const DataBuffer& record) const {
  return hasObject_ && record.isOfSameObject(head_);
}

void ObjectChecker::begin(const DataBuffer& record, std::uint64_t line, bool isPlain) {
  hasObject_ = true;
  head_ = record;
  object_ = {numberOf(record.parentBytes()), numberOf(record.objectBytes())};
  line_ = line;
  systemRecords_ = 0;
  systemBytes_ = 0;
  nextRecn_ = 0;
  text_.clear();
  isPlain_ = isPlain;
}

void ObjectChecker::checkNumber(const DataBuffer& record, std::uint64_t line) {
  const std::uint32_t recn = record.recn();
  if (recn != nextRecn_) {
    findings_.add(FindingKind::chainGap, {line, object_, recn}, [&] {
      return recn > nextRecn_ ? numbers(nextRecn_, recn - 1) + joinedTo()
                              : "it stands behind record " + std::to_string(nextRecn_ - 1);
    });
  }
  nextRecn_ = recn + 1;
}

// The text for an object without its first record.
std::string ObjectChecker::joinedTo() {
  if (nextRecn_ != 0 || !isCountedModel(head_.recType())) return {};
  const std::optional<Place::Object>& model = modelAhead();
  if (!model) return {};
  return "; \"orxrestore -u\" joins the others to those of " + exportedForm(model->object);
}

// A rebuild spreads the models over lists by identifier, each in key order.
std::optional<Place::Object>& ObjectChecker::modelAhead() {
  const auto identifier = static_cast<std::int32_t>(head_.objectHandle());
  return modelsAhead_[static_cast<std::uint32_t>(identifier) % modelsAhead_.size()];
}

void ObjectChecker::checkRecordType() {
  constexpr std::uint32_t highest = 254;
  const std::int32_t type = head_.recType();
  if (static_cast<std::uint32_t>(type) <= highest) return;
  findings_.add(FindingKind::recordType, place(), [&] { return "it is " + std::to_string(type); });
}

// A merge does not ask for the parent of what it reads, but writes a chain without one.
void ObjectChecker::checkStrayRecords() {
  if (systemRecords_ == 0 || head_.hasNullHandles()) return;
  findings_.add(FindingKind::straySystemRecord, place(), [&] {
    return counted(systemRecords_, "record") + " with auxValue2 0, " +
           counted(systemBytes_, "byte") + " of text";
  });
}

void ObjectChecker::checkShared(const DataBuffer& record, std::uint64_t line) {
  if (sharesAll(record, head_)) return;
  findings_.add(FindingKind::chainDisagrees, {line, object_, record.recn()}, [&] {
    return "not as in record " + std::to_string(head_.recn()) + ": " + differences(record, head_);
  });
}

void ObjectChecker::endObject() {
  if (!hasObject_) return;
  hasObject_ = false;
  const std::uint32_t source = inventory_.addObject(object_, line_);
  if (systemRecords_ > 0) inventory_.setSystemRecord(source);
  checkStrayRecords();
  checkRecordType();
  addModelReference(source);
  const Noted noted = checkText(source);
  const bool isModel = isCountedModel(head_.recType());
  if (isModel) addModel(noted, source);
  if (noted.hasSignatures && !(isModel && noted.hasUseCount)) addHandles(noted.signatures, source);
}

void ObjectChecker::addModelReference(std::uint32_t source) {
  const HandleNumber model = numberOf(head_.modelBytes());
  if (model == nullHandle) return;
  const bool counts = isCountedReference(head_);
  inventory_.addReference(
      {model, source, counts ? ReferenceFrom::countedModel : ReferenceFrom::model});
}

ObjectChecker::Noted ObjectChecker::checkText(std::uint32_t source) {
  Noted noted;
  if (isPlain_ || isPlainText(text_)) return noted;
  ScannedAttribute attribute;
  AttributeScanner scanner(text_);
  keys_.clear();
  while (scanner.next(attribute)) {
    checkAttribute(attribute);
    note(attribute, source, noted);
    keys_.push_back(attribute.key);
  }
  if (!scanner.rest().empty()) {
    findings_.add(FindingKind::textLeftOver, place(), [&] {
      return std::to_string(scanner.rest().size()) + " bytes from " + quote(scanner.rest());
    });
  }
  checkKeys();
  return noted;
}

void ObjectChecker::checkAttribute(const ScannedAttribute& attribute) {
  const auto add = [&](FindingKind kind, auto text) {
    findings_.add(kind, place(), [&] { return attributeLabel(attribute.key) + " " + text(); });
  };
  if (!attribute.hasHeader) {
    add(FindingKind::valueCount,
        [&] { return "has no header of three numbers: " + quote(attribute.text); });
  } else if (attribute.statedCount != attribute.valueCount) {
    add(FindingKind::valueCount, [&] {
      return "states " + std::to_string(attribute.statedCount) + " values, " +
             std::to_string(attribute.valueCount) + " can be read";
    });
  } else if (attribute.hasRest) {
    add(FindingKind::valueCount, [&] {
      return "has more than the " + std::to_string(attribute.statedCount) + " values it states";
    });
  }
  if (attribute.isMisread && attribute.hasHeader) {
    add(FindingKind::attributeHeader, [&] { return "is written " + quote(attribute.header()); });
  }
  if (attribute.losesBlank) {
    add(FindingKind::notReadBack, [] { return "has a value that ends in a TAB"; });
  } else if (attribute.hasTab) {
    add(FindingKind::notReadBack, [] { return "has a value with a TAB"; });
  }
  if (attribute.cutsBlanks) {
    add(FindingKind::notReadBack, [] { return "has a value that ends in blanks"; });
  }
  if (attribute.isAmbiguous) {
    add(FindingKind::ambiguousValue, [] { return "has \";;;\" between two values"; });
  }
}

void ObjectChecker::note(const ScannedAttribute& attribute, std::uint32_t source, Noted& noted) {
  switch (attribute.key) {
    case known_attribute::useCount:
      if (!noted.hasUseCount) noted.useCount = attribute;
      noted.hasUseCount = true;
      break;
    case known_attribute::signatures:
      if (!noted.hasSignatures) noted.signatures = attribute;
      noted.hasSignatures = true;
      break;
    default:
      if (isHandleAttribute(attribute.key)) addHandles(attribute, source);
  }
}

void ObjectChecker::checkKeys() {
  if (std::ranges::adjacent_find(keys_, std::ranges::greater_equal()) == keys_.end()) return;
  std::ranges::sort(keys_);
  const auto repeated = std::ranges::adjacent_find(keys_);
  if (repeated == keys_.end()) return;
  findings_.add(FindingKind::repeatedAttribute, place(), [&] { return attributeLabel(*repeated); });
}

void ObjectChecker::addModel(const Noted& noted, std::uint32_t source) {
  std::optional<Place::Object>& ahead = modelAhead();
  if (head_.recn() == 0 || !ahead) ahead = object_;
  Model model{object_.object, source, noted.hasUseCount};
  handles_.clear();
  if (noted.hasUseCount) model.useCount = readUseCount(noted.useCount);
  if (noted.hasUseCount && noted.hasSignatures) readHandles(noted.signatures);
  inventory_.addModel(model, handles_);
}

// Into handles_, in normal form, 0 for what is no handle.
void ObjectChecker::readHandles(const ScannedAttribute& attribute) {
  handles_.clear();
  std::string_view values = attribute.values;
  while (!values.empty()) {
    takeValue(values, value_);
    const auto handle = readHandleText(value_);
    handles_.push_back(handle ? normalForm(*handle) : nullHandle);
    if (handle) continue;
    findings_.add(FindingKind::handleValue, place(), [&] {
      return attributeLabel(attribute.key) + " has the value " + quote(value_);
    });
  }
}

void ObjectChecker::addHandles(const ScannedAttribute& attribute, std::uint32_t source) {
  readHandles(attribute);
  for (const HandleNumber handle : handles_) {
    if (handle == nullHandle) continue;
    inventory_.addReference({handle, source, static_cast<ReferenceFrom>(attribute.key)});
  }
}

}  // namespace orx::orxkdb
