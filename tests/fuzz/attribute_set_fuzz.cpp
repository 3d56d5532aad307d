// The text of an object, from its records into a set of attributes and back.
#include <string>

#include "model/attribute_set.h"
#include "orxkdb/input/attribute_scanner.h"
#include "records/data_buffer.h"
#include "restore/chain_writer.h"
#include "tests/fuzz/fuzz_target.h"

namespace orx::fuzz {
namespace {

// The texts of the records that the attributes become.
std::string chainOf(const CMAttributeSet& attributes) {
  const std::string text = chainText(attributes);
  std::string joined;
  for (std::size_t i = 0; i < chainLength(text); ++i) {
    joined += chainRecord(DataBuffer(), text, i).text();
  }
  return joined;
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

const Registration target("attribute_set", [](Input& input) {
  std::string text;
  for (int records = 0; !input.isEmpty() && records < 64; ++records) {
    DataBuffer record;
    record.setAttrText(input.take(data_layout::attrTextSize));
    text += record.text();
  }
  const CMAttributeSet attributes(text.c_str(), 1);
  const Scanned scanned = scan(text);
  require(countOf(attributes) == scanned.attributes, "the scanner sees every attribute");
  const std::string written = chainOf(attributes);
  require(written == attributes.text(), "a chain holds the whole text");
  const CMAttributeSet again(written.c_str(), 1);
  if (scanned.isKept) require(again == attributes, "a text without a finding comes back");
  if (scan(written).isKept) {
    const CMAttributeSet third(chainOf(again).c_str(), 1);
    require(third == again, "neither does one that was written get lost");
  }
  CMAttributeSet copy;
  copy = attributes;
  copy.copyInto(again);
  require(countOf(copy) <= countOf(attributes) + countOf(again), "a copy adds nothing");
  again.forEach([&copy](const CMAttribute& attribute) {
    require(copy.findAttrKey(attribute.key()) != nullptr, "a copy has every key");
  });
});

}  // namespace
}  // namespace orx::fuzz
