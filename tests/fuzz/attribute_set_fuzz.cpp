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

// What the scanner makes of an attribute is what reading it makes of it.
void compare(const orxkdb::ScannedAttribute& scanned) {
  const CMAttribute attribute(scanned.text, 1);
  require(scanned.key == attribute.key().number(), "the scanner reads the key");
  require(scanned.valueCount == attribute.attrCount(), "the scanner counts the values");
  std::string_view rest = scanned.values;
  std::string value;
  for (const std::string_view read : attribute.values()) {
    orxkdb::takeValue(rest, value);
    require(value == read, "the scanner takes the values");
  }
  const CMAttribute again(attribute.text(), 1);
  require(scanned.losesBlank == !(again == attribute), "the scanner sees a blank that gets lost");
  // With a header and without a rest, one value more in the text would be one more that is read.
  if (scanned.hasHeader && !scanned.hasRest && scanned.statedCount > 0) {
    const CMAttribute more(std::string(scanned.text) + "x;", 1);
    require(more.attrCount() == std::min(scanned.statedCount, scanned.valueCount + 1),
            "the scanner reads how many values there should be");
  }
}

// Whether `check` would call the text one that reading keeps as it is.
bool isKept(const std::string& text, const CMAttributeSet& read) {
  bool kept = true;
  orxkdb::AttributeScanner scanner(text);
  orxkdb::ScannedAttribute attribute;
  std::size_t count = 0;
  for (int lastKey = -1; scanner.next(attribute); ++count) {
    compare(attribute);
    kept &= attribute.hasHeader && attribute.statedCount == attribute.valueCount &&
            !attribute.hasRest && !attribute.isMisread && !attribute.losesBlank &&
            !attribute.hasTab && !attribute.cutsBlanks && !attribute.isAmbiguous &&
            attribute.key > lastKey;
    lastKey = attribute.key;
  }
  require(count == read.entries(), "the scanner sees every attribute");
  return kept && scanner.rest().empty();
}

const Registration target("attribute_set", [](Input& input) {
  std::string text;
  for (int records = 0; !input.isEmpty() && records < 64; ++records) {
    DataBuffer record;
    record.setAttrText(input.take(data_layout::attrTextSize));
    text += record.text();
  }
  const CMAttributeSet attributes(text.c_str(), 1);
  const std::string written = chainOf(attributes);
  require(written == attributes.text(), "a chain holds the whole text");
  const CMAttributeSet again(written.c_str(), 1);
  if (isKept(text, attributes)) require(again == attributes, "a text without a finding comes back");
  if (isKept(written, again)) {
    const CMAttributeSet third(chainOf(again).c_str(), 1);
    require(third == again, "neither does one that was written get lost");
  }
});

}  // namespace
}  // namespace orx::fuzz
