// The scanner of attribute texts says what the attribute classes do, whatever the text.
#include "orxkdb/input/attribute_scanner.h"

#include <gtest/gtest.h>

#include <random>
#include <sstream>

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

TEST(AttributeScanner, AgreesWithTheAttributeClassesOnRandomTexts) {
  std::mt19937 random(7);
  std::vector<std::string> pieces = {" ", "\t"};
  std::istringstream words(
      "< > ; ;; >> a - 0 1 2; >< x; <5;0; 2;0; <7;0;2;a;b;> <17;1;1; <-3;9999999999;2; ;;;");
  for (std::string word; words >> word;) pieces.push_back(word);
  std::size_t attributes = 0;
  for (int round = 0; round < 30000; ++round) {
    std::string text = random() % 4 != 0 ? "<3;0;2;" : "";
    for (std::size_t left = random() % 16; left > 0; --left)
      text += pieces[random() % pieces.size()];
    CMAttributeSet set(text.c_str(), 1);
    AttributeScanner scanner(text);
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

TEST(AttributeScanner, TellsWhatCanBeReadInTwoWays) {
  const std::pair<const char*, bool> cases[] = {
      {"<2;0;2;a;;;b;>", true},    // "a;" and "b", or "a" and ";b"
      {"<2;0;2;a;;; ;>", false},   // "a;" and ""
      {"<2;0;2;a;;b;c;>", false},  // "a;b" and "c"
      {"<2;0;2;a;;;;>", false},    // "a" and ";" as they are written: no value is read
  };
  for (const auto& [text, isAmbiguous] : cases) {
    ScannedAttribute scanned;
    AttributeScanner scanner(text);
    ASSERT_TRUE(scanner.next(scanned)) << text;
    EXPECT_EQ(scanned.isAmbiguous, isAmbiguous) << text;
  }
}

}  // namespace
}  // namespace orx::orxkdb
