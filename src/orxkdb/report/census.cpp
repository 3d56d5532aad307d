#include "orxkdb/report/census.h"

#include "orxkdb/input/attribute_scanner.h"
#include "orxkdb/input/database_reader.h"
#include "orxkdb/report/html_text.h"
#include "restore/use_count_types.h"

namespace orx::orxkdb {

namespace {

constexpr std::size_t longestLabel = 48;

}  // namespace

std::string labelOf(const DataBuffer& head) {
  if (head.hasNullHandles()) return "system record";
  AttributeScanner scanner(head.text());
  ScannedAttribute attribute;
  std::string value;
  if (!scanner.next(attribute) || attribute.values.empty()) return value;
  takeValue(attribute.values, value);
  return shortened(value, longestLabel);
}

void Census::add(const DataBuffer& record) {
  const bool continues = records_ > 0 && record.isOfSameObject(head_);
  if (!continues) {
    endObject();
    head_ = record;
  }
  ++records_;
  textBytes_ += record.text().size();
}

void Census::finish() {
  endObject();
}

void Census::endObject() {
  if (records_ == 0) return;
  const bool isModel = isCountedModel(head_.recType());
  ++objects_;
  ++objectsOfType_[head_.recType()];
  chainLengths_.add(records_);
  textSizes_.add(textBytes_);
  countUses(isModel);
  if (list_.wants(isModel)) {
    list_.add({numberOf(head_.parentBytes()), numberOf(head_.objectBytes()),
               numberOf(head_.modelBytes()), head_.recType(), records_, textBytes_, labelOf(head_)},
              isModel);
  }
  records_ = 0;
  textBytes_ = 0;
}

void Census::countUses(bool isModel) {
  const HandleNumber object = numberOf(head_.objectBytes());
  if (isModel) uses_.addModel(object, head_.recType(), labelOf(head_));
  if (!isCountedReference(head_)) return;
  const bool isRemembered = uses_.references() < ModelUses::mostReferrers;
  uses_.addReference(
      {object, head_.recType(), isRemembered ? labelOf(head_) : "", numberOf(head_.modelBytes())});
}

Result takeCensus(const std::string& database, Census& census) {
  DatabaseReader reader;
  if (Result result = reader.open(database); !result.ok()) return result;
  DataBuffer record;
  while (reader.next(record)) census.add(record);
  census.finish();
  return reader.result();
}

}  // namespace orx::orxkdb
