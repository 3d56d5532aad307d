// The text of an object, from its records into a set of attributes and back.
#include <string>
#include <vector>

#include "model/attribute_set.h"
#include "orxkdb/input/attribute_scanner.h"
#include "records/data_buffer.h"
#include "restore/chain_writer.h"
#include "tests/fuzz/fuzz_target.h"

namespace {

using namespace orx;

std::string joined(const std::vector<DataBuffer>& records) {
  std::string text;
  for (const DataBuffer& record : records) text += record.text();
  return text;
}

std::vector<DataBuffer> chainOf(const CMAttributeSet& attributes) {
  const std::string text = chainText(attributes);
  std::vector<DataBuffer> records;
  for (std::size_t i = 0; i < chainLength(text); ++i) {
    records.push_back(chainRecord(DataBuffer(), text, i));
  }
  return records;
}

// Whether `check` would call the text one that reading keeps as it is.
struct Scanned {
  bool isKept = true;
  std::size_t attributes = 0;
};

Scanned scan(const std::string& text) {
  Scanned found;
  orxkdb::AttributeScanner scanner(text);
  orxkdb::ScannedAttribute attribute;
  int lastKey = -1;
  for (; scanner.next(attribute); ++found.attributes) {
    found.isKept &= attribute.hasHeader && attribute.statedCount == attribute.valueCount &&
                    !attribute.hasRest && !attribute.isMisread && !attribute.losesBlank &&
                    !attribute.hasTab && !attribute.cutsBlanks && !attribute.isAmbiguous &&
                    attribute.key > lastKey;
    lastKey = attribute.key;
  }
  found.isKept &= scanner.rest().empty();
  return found;
}

std::size_t countOf(const CMAttributeSet& attributes) {
  std::size_t count = 0;
  attributes.forEach([&count](const CMAttribute&) { ++count; });
  return count;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  fuzz::Input input(data, size);
  std::vector<DataBuffer> records;
  while (!input.isEmpty() && records.size() < 64) {
    records.emplace_back().setAttrText(input.take(data_layout::attrTextSize));
  }
  const std::string text = joined(records);
  const CMAttributeSet attributes(text.c_str(), 1);
  const Scanned scanned = scan(text);
  fuzz::require(countOf(attributes) == scanned.attributes, "the scanner sees every attribute");
  const std::string written = joined(chainOf(attributes));
  fuzz::require(written == attributes.text(), "a chain holds the whole text");
  const CMAttributeSet again(written.c_str(), 1);
  if (scanned.isKept) fuzz::require(again == attributes, "a text without a finding comes back");
  if (scan(written).isKept) {
    const CMAttributeSet third(joined(chainOf(again)).c_str(), 1);
    fuzz::require(third == again, "neither does one that was written get lost");
  }
  CMAttributeSet copy;
  copy = attributes;
  copy.copyInto(again);
  fuzz::require(countOf(copy) <= countOf(attributes) + countOf(again), "a copy adds nothing");
  again.forEach([&copy](const CMAttribute& attribute) {
    fuzz::require(copy.findAttrKey(attribute.key()) != nullptr, "a copy has every key");
  });
  return 0;
}
