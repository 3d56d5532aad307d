// The text of an attribute, read and written, and changes of its values beside a plain list.
#include <algorithm>

#include "model/attribute_iterator.h"
#include "tests/fuzz/fuzz_target.h"
#include "tests/support/attributes.h"

namespace orx::fuzz {
namespace {

using test::Values, test::valuesOf;

// Whether the values read back as they are.
bool readsBack(const Values& values) {
  return std::ranges::none_of(values, [&](const std::string& value) {
    return value.ends_with(' ') || (value.starts_with(';') && &value != values.data());
  });
}

// The same through every way of reading, and of writing.
void check(const CMAttribute& attribute, const Values& values) {
  require(valuesOf(attribute) == values, "the values are those that were added");
  require(attribute.attrCount() == static_cast<int>(values.size()), "they are counted");
  CMAttributeIterator iterator(attribute);
  for (std::size_t i = 0; i < values.size(); ++i, (void)iterator.next()) {
    const int index = static_cast<int>(i);
    std::string value;
    attribute.getValue3(value, index);
    require(value == values[i] && iterator.value() == values[i], "each is found by index");
    std::string room(value.size() / 2 + 1, 'x');
    attribute.getValue2(room.data(), static_cast<int>(room.size()), index);
    require(room.c_str() == value.substr(0, room.size() - 1), "and cut to its room");
    CMConfigHandle handle;
    (void)iterator.getValueHandle(handle);
    int isNumeric = 0;
    require(iterator.getValueInt(&isNumeric) == attribute.getValue(nullptr, index),
            "a number is the same by index and iterator");
    std::string escaped(2 * value.size() + 1, 'x');
    iterator.getCharValue(escaped.data(), static_cast<int>(escaped.size()));
  }
  require(iterator.done(), "behind the last value is the end");
  const std::string text = attribute.text();
  std::string room(static_cast<std::size_t>(attribute.getCharAttributeSize()), 'x');
  require(room.size() > text.size(), "the text fits the size that is told");
  attribute.getCharAttribute(room.data(), static_cast<int>(room.size()));
  require(room.c_str() == text, "both ways of writing agree");
  const CMAttribute copy(attribute);  // NOLINT: the copy is what is tested
  require(copy == attribute && copy.text() == text, "a copy is equal");
  if (readsBack(values)) require(CMAttribute(text, 1) == attribute, "what was written reads back");
}

void change(CMAttribute& attribute, Values& values, Input& input) {
  const std::uint8_t choice = input.byte();
  const std::size_t index = values.empty() ? 0 : input.byte() % values.size();
  switch (choice % 6) {
    case 0:
      attribute.removeValue(static_cast<int>(index));
      if (!values.empty()) values.erase(values.begin() + static_cast<std::ptrdiff_t>(index));
      break;
    case 1: {
      CMAttributeIterator iterator(attribute);
      (void)iterator.set(static_cast<int>(index));
      iterator.remove();
      if (!values.empty()) values.erase(values.begin() + static_cast<std::ptrdiff_t>(index));
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

const Registration target("attribute", [](Input& input) {
  const int unescape = input.byte() % 2;
  CMAttribute attribute(input.upTo('\n'), unescape);
  Values values = valuesOf(attribute);
  check(attribute, values);
  while (!input.isEmpty()) change(attribute, values, input);
  check(attribute, values);
});

}  // namespace
}  // namespace orx::fuzz
