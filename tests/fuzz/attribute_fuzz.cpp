// The text of an attribute, read and written, and changes of its values beside a plain list.
#include <algorithm>
#include <string>
#include <vector>

#include "model/attribute.h"
#include "model/attribute_iterator.h"
#include "tests/fuzz/fuzz_target.h"

namespace {

using namespace orx;

using Values = std::vector<std::string>;

Values valuesOf(const CMAttribute& attribute) {
  Values values;
  for (const std::string_view value : attribute.values()) values.emplace_back(value);
  return values;
}

// Values that do not read back as they were.
bool readsBack(const Values& values) {
  for (std::size_t i = 0; i < values.size(); ++i) {
    if (i > 0 && values[i].starts_with(';')) return false;
    if (values[i].ends_with(' ')) return false;
  }
  return true;
}

// The same through every way of reading.
void checkReading(const CMAttribute& attribute, const Values& values) {
  fuzz::require(valuesOf(attribute) == values, "the values are those that were added");
  fuzz::require(attribute.attrCount() == static_cast<int>(values.size()), "they are counted");
  CMAttributeIterator iterator(attribute);
  for (std::size_t i = 0; i < values.size(); ++i, (void)iterator.next()) {
    const int index = static_cast<int>(i);
    std::string value;
    attribute.getValue3(value, index);
    fuzz::require(value == values[i] && iterator.value() == values[i], "each is found by index");
    std::string room(value.size() / 2 + 1, 'x');
    attribute.getValue2(room.data(), static_cast<int>(room.size()), index);
    fuzz::require(room.c_str() == value.substr(0, room.size() - 1), "and cut to its room");
    CMConfigHandle handle;
    (void)iterator.getValueHandle(handle);
    int isNumeric = 0;
    fuzz::require(iterator.getValueInt(&isNumeric) == attribute.getValue(nullptr, index),
                  "a number is the same by index and iterator");
    std::string escaped(2 * value.size() + 1, 'x');
    iterator.getCharValue(escaped.data(), static_cast<int>(escaped.size()));
  }
  fuzz::require(iterator.done(), "behind the last value is the end");
}

void checkText(const CMAttribute& attribute) {
  const std::string text = attribute.text();
  std::string room(static_cast<std::size_t>(attribute.getCharAttributeSize()), 'x');
  fuzz::require(room.size() > text.size(), "the text fits the size that is told");
  attribute.getCharAttribute(room.data(), static_cast<int>(room.size()));
  fuzz::require(room.c_str() == text, "both ways of writing agree");
  const CMAttribute copy(attribute);
  fuzz::require(copy == attribute && copy.text() == text, "a copy is equal");
  if (readsBack(valuesOf(attribute))) {
    fuzz::require(CMAttribute(text, 1) == attribute, "what was written reads back");
  }
}

void change(CMAttribute& attribute, Values& values, fuzz::Input& input) {
  const std::uint8_t choice = input.byte();
  const std::size_t index = values.empty() ? 0 : input.byte() % values.size();
  switch (choice % 6) {
    case 0:
      attribute.removeValue(static_cast<int>(index));
      if (!values.empty()) values.erase(values.begin() + static_cast<std::ptrdiff_t>(index));
      break;
    case 1: {
      CMAttributeIterator iterator(attribute);
      const bool found = iterator.set(static_cast<int>(index)) && !iterator.done();
      iterator.remove();
      if (found) values.erase(values.begin() + static_cast<std::ptrdiff_t>(index));
      break;
    }
    case 2:
      if (choice < 16) attribute.reset();
      if (choice < 32) attribute.clearValues();
      if (choice < 32) values.clear();
      break;
    case 3: {  // of its own
      if (values.empty()) break;
      const auto own = *std::next(attribute.values().begin(), static_cast<std::ptrdiff_t>(index));
      std::string value = values[index];
      value.resize(value.find_last_not_of(' ') + 1);
      attribute.setValue(own);
      values.push_back(value);
      break;
    }
    default: {
      std::string value(input.upTo('\n'));
      attribute.setValue(value);
      value.resize(std::min(value.size(), value.find('\0')));
      value.resize(value.find_last_not_of(' ') + 1);
      std::ranges::replace(value, '\t', ' ');
      values.push_back(value);
    }
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  fuzz::Input input(data, size);
  const int unescape = input.byte() % 2;
  CMAttribute attribute(input.upTo('\n'), unescape);
  Values values = valuesOf(attribute);
  checkReading(attribute, values);
  checkText(attribute);
  while (!input.isEmpty()) change(attribute, values, input);
  checkReading(attribute, values);
  checkText(attribute);
  return 0;
}
