// The text of an object, from its records into a set of attributes and back.
#include <string>
#include <vector>

#include "model/attribute_set.h"
#include "orxkdb/check/text_scanner.h"
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
  bool isCanonical = true;
  std::size_t attributes = 0;
};

Scanned scan(const std::string& text) {
  Scanned found;
  orxkdb::TextScanner scanner(text);
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
  if (scanned.isKept) fuzz::require(written == text, "a text without a finding comes back");
  const CMAttributeSet again(written.c_str(), 1);
  if (scan(written).isKept) {
    fuzz::require(joined(chainOf(again)) == written, "what was written reads back");
    fuzz::require(again == attributes, "and gives equal attributes");
  }
  CMAttributeSet copy;
  copy = attributes;
  copy.copyInto(again);
  fuzz::require(copy.findAttrKey(9, 0) == nullptr ||
                    attributes.findAttrKey(CMAttributeKey(9)) != nullptr ||
                    again.findAttrKey(CMAttributeKey(9)) != nullptr,
                "copies come from somewhere");
  return 0;
}
