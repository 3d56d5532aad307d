// The scanner of attribute texts says what the attribute classes do, whatever the text.
#include "orxkdb/check/text_scanner.h"

#include <gtest/gtest.h>

#include <random>
#include <string>
#include <vector>

#include "model/attribute.h"
#include "model/attribute_set.h"
#include "model/attribute_set_iterator.h"

namespace orx::orxkdb {
namespace {

std::vector<std::string> valuesOf(const CMAttribute& attribute) {
  std::vector<std::string> values;
  for (const std::string_view value : attribute.values()) values.emplace_back(value);
  return values;
}

std::vector<std::string> valuesOf(const ScannedAttribute& scanned) {
  std::vector<std::string> values;
  for (std::string_view rest = scanned.values; !rest.empty();)
    takeValue(rest, values.emplace_back());
  return values;
}

void expectAgreement(const ScannedAttribute& scanned, const std::string& text) {
  const CMAttribute attribute(scanned.text, 1);
  EXPECT_EQ(scanned.key, attribute.key().number()) << text;
  EXPECT_EQ(scanned.valueCount, attribute.attrCount()) << text;
  EXPECT_EQ(valuesOf(scanned), valuesOf(attribute)) << text;
  const CMAttribute again(attribute.text(), 1);
  EXPECT_EQ(scanned.losesBlank, !(again == attribute)) << text;
  // With a header and without a rest, one value more in the text would be one more that is read.
  if (scanned.hasHeader && !scanned.hasRest && scanned.statedCount > 0) {
    const CMAttribute more(std::string(scanned.text) + "x;", 1);
    EXPECT_EQ(more.attrCount(), std::min(scanned.statedCount, scanned.valueCount + 1)) << text;
  }
}

TEST(TextScanner, AgreesWithTheAttributeClassesOnRandomTexts) {
  std::mt19937 random(7);
  const std::vector<std::string> pieces = {"<",
                                           ">",
                                           ";",
                                           ";;",
                                           ">>",
                                           "a",
                                           " ",
                                           "\t",
                                           "-",
                                           "0",
                                           "1",
                                           "2;",
                                           "><",
                                           "x;",
                                           "<5;0;",
                                           "2;0;",
                                           "<7;0;2;a;b;>",
                                           "<17;1;1;",
                                           "<-3;9999999999;2;",
                                           ";;;"};
  std::size_t attributes = 0;
  for (int round = 0; round < 30000; ++round) {
    std::string text = random() % 4 != 0 ? "<3;0;2;" : "";
    for (std::size_t left = random() % 16; left > 0; --left)
      text += pieces[random() % pieces.size()];
    CMAttributeSet set(text.c_str(), 1);
    TextScanner scanner(text);
    std::size_t count = 0;
    for (ScannedAttribute scanned; scanner.next(scanned); ++count) expectAgreement(scanned, text);
    EXPECT_EQ(count, set.entries()) << text;
    const std::string read = text.substr(0, text.size() - scanner.rest().size());
    EXPECT_EQ(CMAttributeSet(read.c_str(), 1).text(), set.text()) << text;
    if (HasFailure()) break;
    attributes += count;
  }
  EXPECT_GT(attributes, 10000u);
}

TEST(TextScanner, TellsWhatIsReadInDoubt) {
  struct {
    const char* text;
    std::int32_t stated, read;
    bool rest, ambiguous;
  } const cases[] = {
      {"<2;0;2;a;b;>", 2, 2, false, false},
      {"<2;0;3;a;b;>", 3, 2, false, false},
      {"<2;0;1;a;b;>", 1, 1, true, false},
      {"<2;0;2;a;;;b;>", 2, 2, false, true},    // "a;" and "b", or "a" and ";b"
      {"<2;0;2;a;;; ;>", 2, 2, false, false},   // "a;" and ""
      {"<2;0;2;a;;b;c;>", 2, 2, false, false},  // "a;b" and "c"
      {"<2;0;2;a;;;;>", 2, 0, true, false},     // "a" and ";" as they are written
      {"<2;0;-1;a;b;c>", -1, 2, true, false},
  };
  for (const auto& expected : cases) {
    ScannedAttribute scanned;
    TextScanner scanner(expected.text);
    ASSERT_TRUE(scanner.next(scanned)) << expected.text;
    EXPECT_EQ(scanned.statedCount, expected.stated) << expected.text;
    EXPECT_EQ(scanned.valueCount, expected.read) << expected.text;
    EXPECT_EQ(scanned.hasRest, expected.rest) << expected.text;
    EXPECT_EQ(scanned.isAmbiguous, expected.ambiguous) << expected.text;
    EXPECT_EQ(scanner.rest(), "");
  }
}

}  // namespace
}  // namespace orx::orxkdb
