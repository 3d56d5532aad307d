#include "descriptions/description_field.h"

#include <gmock/gmock.h>

#include <memory>

#include "descriptions/marker_sequences.h"
#include "model/attribute_set.h"
#include "tests/support/attributes.h"

namespace orx {
namespace {

using testing::ElementsAre;

const auto make = test::makeAttribute;

std::string times(int count, const std::string& text) {
  std::string all;
  for (int i = 0; i < count; ++i) all += text;
  return all;
}

// The field, with a byte beyond it that must stay; "" for a failure that left it zeroed.
std::string fieldOf(const CMAttribute& attribute, int width) {
  std::string field(static_cast<std::size_t>(width) + 1, '#');
  const int done = createUTF8Desc(attribute, field.data(), width);
  EXPECT_EQ(field.back(), '#');
  field.pop_back();
  if (done == 1) return field;
  EXPECT_EQ(field, std::string(static_cast<std::size_t>(width), '\0'));
  return "";
}

TEST(DescriptionField, IsWrittenToItsWidthWithoutSplittingACharacter) {
  const std::tuple<int, const char*, int, const char*> cases[] = {
      {6, "abcdef", 6, "6;abc "},   {6, "", 4, "6;  "},
      {6, "aé", 5, "6;a  "},        {6, "aé", 6, "6;aé "},
      {6, "€", 5, "6;   "},         {6, "€", 6, "6;€ "},
      {6, "a😀b", 7, "6;a    "},     {6, "\xBF\xBF\xBF", 6, "6;    "},
      {6, "ab\xFF", 8, "6;ab    "}, {6103, "x", 6, "6103; "},
      {6103, "x", 5, ""},           {6103, "x", 1, ""}};
  for (const auto& [key, value, width, field] : cases) {
    EXPECT_EQ(fieldOf(make(key, {value}), width), field) << value << width;
  }
  EXPECT_EQ(createUTF8Desc(make(6, {"x"}), nullptr, 0), 0);
}

TEST(DescriptionField, IsReadBackOrLeavesTheAttributeAlone) {
  const std::tuple<const char*, int, std::string> cases[] = {{"46;Mail relay   ", 46, "Mail relay"},
                                                             {"6;a;b<>", 6, "a;b<>"},
                                                             {"0007;", 7, ""},
                                                             {";x", 0, "x"},
                                                             {"2147483647;x", 2147483647, "x"}};
  for (const auto& [text, key, value] : cases) {
    CMAttribute attribute = make(1, {"first", "second"});
    EXPECT_EQ(getUTF8Desc(text, &attribute, 0, 0), 1) << text;
    EXPECT_TRUE(attribute == make(key, {value})) << text << attribute.text();
  }
  std::string longNumber(64, '0');
  longNumber += "6;x";
  for (const char* bad : {"", "abc", "46", "x6;abc", "6x;abc", "-6;abc", " 6;abc", "2147483648;x",
                          longNumber.c_str(), static_cast<const char*>(nullptr)}) {
    CMAttribute attribute = make(1, {"kept"});
    EXPECT_EQ(getUTF8Desc(bad, &attribute, 1, 0), 0) << bad;
    EXPECT_TRUE(attribute == make(1, {"kept"})) << bad;
  }
  EXPECT_EQ(getUTF8Desc("6;x", nullptr, 0, 0), 0);
}

TEST(DescriptionField, ReadingCanTranslateAndKeepsUtf8WhereItCannot) {
  const std::tuple<std::string, int, int, CMAttribute> cases[] = {
      {"6;é€  ", 1, 1252, make(6, {"\xE9\x80"})},
      {"7;é€  ", 1, 819, make(7, {"é€"})},
      {"6;" + times(70, "é"), 2, 819, make(6, {times(64, "\xE9")})}};
  for (const auto& [text, translate, ccsid, expected] : cases) {
    CMAttribute attribute;
    EXPECT_EQ(getUTF8Desc(text.c_str(), &attribute, translate, ccsid), 1) << text;
    EXPECT_TRUE(attribute == expected) << text << attribute.text();
  }
}

TEST(DescriptionTranslation, CutsAtSixtyFourBytesBetweenCharacters) {
  const std::tuple<const char*, std::string, int, int, int, std::string> cases[] = {
      {"exact fit", times(64, "é"), 0, 819, 1, times(64, "\xE9")},
      {"code page", times(70, "é"), 0, 819, 1, times(64, "\xE9")},
      {"no limit", times(70, "é"), 0, 819, 0, times(70, "\xE9")},
      {"two bytes, even", times(40, "\xE9"), 1, 819, 1, times(32, "é")},
      {"two bytes, odd", "x" + times(40, "\xE9"), 2, 819, 2, "x" + times(31, "é")},
      {"three bytes", times(30, "\x80"), -1, 1252, -1, times(21, "€")},
      {"UTF-8 as code page", times(22, "€"), 0, 1208, 1, times(21, "€")},
      {"UTF-8 as local code page", times(22, "€"), 0, 0, 1, times(21, "€")},
      {"only 510 bytes count", times(600, "x"), 1, 819, 0, times(510, "x")}};
  for (const auto& [name, value, toUTF8, ccsid, limit64, expected] : cases) {
    CMAttribute attribute = make(6, {value, "second"});
    EXPECT_EQ(TranslateAttrValue(&attribute, toUTF8, ccsid, limit64), 1) << name;
    EXPECT_TRUE(attribute == make(6, {expected})) << name << attribute.text();
  }
}

TEST(DescriptionTranslation, FailsWithoutAChange) {
  const std::tuple<const char*, std::string, int, int> cases[] = {
      {"no UTF-8", "\xE9", 0, 819},
      {"no such page", "x", 1, 924},
      {"cut within a character at 510 bytes", "x" + times(300, "é"), 0, 819},
      {"too long in UTF-8", times(300, "\xE9"), 1, 819}};
  for (const auto& [name, value, toUTF8, ccsid] : cases) {
    CMAttribute attribute = make(6, {value, "second"});
    EXPECT_EQ(TranslateAttrValue(&attribute, toUTF8, ccsid, 1), 0) << name;
    EXPECT_TRUE(attribute == make(6, {value, "second"})) << name;
  }
  EXPECT_EQ(TranslateAttrValue(nullptr, 1, 819, 1), 0);
}

TEST(DescriptionSearch, FollowsTheTableAndDetachesOnDemand) {
  CMAttributeSet set("<1;0;1;A;><4094;1;0;><4096;1;1;C;><13;0;1;B;><7;0;1;A;><46;0;1;D;>", 1);
  EXPECT_EQ(findDescAttr(&set, 0)->key().number(), 7);
  EXPECT_EQ(set.entries(), 6u);
  std::vector<int> keys;
  for (std::unique_ptr<CMAttribute> taken(findDescAttr(&set, 1)); taken != nullptr;
       taken.reset(findDescAttr(&set, 1))) {
    keys.push_back(taken->key().number());
  }
  EXPECT_THAT(keys, ElementsAre(7, 13, 46, 8190));
  EXPECT_EQ(set.entries(), 2u);
  EXPECT_EQ(findDescAttr(nullptr, 1), nullptr);
}

#define LESS "\xFE\xFD\xFC\xFB\xFA\xF0"
#define MORE "\xFE\xFD\xFC\xFB\xF0\xFA"
#define SEMI "\xFE\xFD\xFC\xFB\xFA\xF1"

TEST(MarkerSequences, AreFoundInOrderAndReplaced) {
  // The position is -1 where there is no marker.
  const std::tuple<const char*, int, int, const char*> cases[] = {
      {"", -1, -1, nullptr},
      {"a<b>;", -1, -1, nullptr},
      {"a" LESS "b", 1, 0, "a<b"},
      {LESS MORE SEMI, 0, 0, "<>;"},
      {SEMI "x" LESS, 0, 2, ";x<"},
      {MORE MORE "tail", 0, 1, ">>tail"},
      {"ab" SEMI, 2, 2, "ab;"},
      {"\xFE\xFD\xFC\xFB\xFA", -1, -1, nullptr},
      {"\xFE\xFD\xFC\xFB\xFA\xF2", -1, -1, nullptr},
      {"\xFE\xFD\xFC\xFB", -1, -1, nullptr},
      {"\xFE\xFD\xFC\xFB" MORE "\xFE\xFD", 4, 1, "\xFE\xFD\xFC\xFB>\xFE\xFD"},
      {"\xFE" LESS "\xFA\xF0", 1, 0, "\xFE<\xFA\xF0"}};
  for (const auto& [text, position, marker, expected] : cases) {
    int which = 7;
    const char* found = searchSpecString(text, &which);
    EXPECT_EQ(found == nullptr ? -1 : found - text, position) << text;
    EXPECT_EQ(which, marker) << text;
    const auto replaced = replaceSpecString(text);
    EXPECT_STREQ(replaced.get(), expected) << text;
  }
}

}  // namespace
}  // namespace orx
