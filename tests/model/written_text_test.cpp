#include "model/written_text.h"

#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <vector>

#include "model/attribute_set.h"

namespace orx {
namespace {

std::optional<std::size_t> sizeOf(const std::string& text) {
  return sizeOfWrittenText(text, [](int) { return true; });
}

// What is said of a text must be what reading and writing it gives.
void expectTrue(const std::string& text) {
  const auto size = sizeOf(text);
  if (!size) return;
  const CMAttributeSet set(text.c_str(), 1);
  EXPECT_EQ(set.text(), text);
  EXPECT_EQ(static_cast<std::size_t>(set.getCharAttributeSize()), *size) << text;
}

TEST(WrittenText, KnowsTheFormThatASetWrites) {
  for (const char* text : {"", "<1;0;1;a;>", "<0;1;2; a;b c;><4095;7;1;x;>", "<84;0;3;<1;2&;3;>",
                           "<9;0;12;1;2;3;4;5;6;7;8;9;10;11;12;>"}) {
    EXPECT_TRUE(sizeOf(text)) << text;
    expectTrue(text);
  }
}

TEST(WrittenText, SaysNothingOfOneKeyTwiceOrOfOneThatIsNotAccepted) {
  EXPECT_FALSE(sizeOf("<1;0;1;a;><1;0;1;b;>"));
  const char* const text = "<84;0;1;a;><2801;1;1;b;>";
  EXPECT_TRUE(sizeOfWrittenText(text, [](int key) { return key == 84 || key == 6897; }));
  EXPECT_FALSE(sizeOfWrittenText(text, [](int key) { return key != 6897; }));
}

// Each byte of a text becomes another, is lost or doubled: numbers out of form, counts that do not
// fit, keys out of order or twice, empty values, blanks, marks.
TEST(WrittenText, IsNeverWrongAboutATextThatASetWouldChange) {
  const std::string text = "<2;0;2;ab;c d;><1801;1;1; e;><4000;7;10;0;1;2;3;4;5;6;7;8;9;>";
  ASSERT_TRUE(sizeOf(text));
  for (std::size_t at = 0; at < text.size(); ++at) {
    for (const char c : std::string(" ;<>\t-+0189a\0", 13)) {
      std::string changed = text;
      changed[at] = c;
      expectTrue(changed);
      expectTrue(std::string(text).insert(at, 1, c));
    }
    expectTrue(std::string(text).erase(at, 1));
    expectTrue(text.substr(0, at));
  }
}

}  // namespace
}  // namespace orx
