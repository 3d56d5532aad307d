#include "descriptions/description_field.h"

#include <gtest/gtest.h>

#include <memory>

#include "descriptions/marker_sequences.h"
#include "model/attribute_set.h"
#include "tests/support/attributes.h"

namespace orx {
namespace {

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
  CMAttribute attribute;
  EXPECT_EQ(getUTF8Desc("6;é€  ", &attribute, 1, 1252), 1);
  EXPECT_TRUE(attribute == make(6, {"\xE9\x80"}));
  EXPECT_EQ(getUTF8Desc("7;é€  ", &attribute, 1, 819), 1);
  EXPECT_TRUE(attribute == make(7, {"é€"}));
}

// What cannot be converted ("" here) leaves the attribute as it is.
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
      {"only 510 bytes count", times(600, "x"), 1, 819, 0, times(510, "x")},
      {"no UTF-8", "\xE9", 0, 819, 1, ""},
      {"no such page", "x", 1, 924, 1, ""},
      {"cut within a character at 510 bytes", "x" + times(300, "é"), 0, 819, 1, ""},
      {"too long in UTF-8", times(300, "\xE9"), 1, 819, 1, ""}};
  for (const auto& [name, value, toUTF8, ccsid, limit64, expected] : cases) {
    CMAttribute attribute = make(6, {value, "second"});
    EXPECT_EQ(TranslateAttrValue(&attribute, toUTF8, ccsid, limit64), expected != "") << name;
    EXPECT_TRUE(attribute ==
                make(6, expected == "" ? test::Values{value, "second"} : test::Values{expected}))
        << name << attribute.text();
  }
}

TEST(DescriptionSearch, FollowsTheTableAndDetachesOnDemand) {
  CMAttributeSet set("<1;0;1;A;><4094;1;0;><4096;1;1;C;><13;0;1;B;><7;0;1;A;><46;0;1;D;>", 1);
  EXPECT_EQ(findDescAttr(&set, 0)->key().number(), 7);
  EXPECT_EQ(set.entries(), 6u);
  for (const int key : {7, 13, 46, 8190}) {
    const std::unique_ptr<CMAttribute> taken(findDescAttr(&set, 1));
    ASSERT_NE(taken, nullptr);
    EXPECT_EQ(taken->key().number(), key);
  }
  EXPECT_EQ(findDescAttr(&set, 1), nullptr);
}

TEST(MarkerSequences, AreFoundInOrderAndReplaced) {
  const std::string less = "\xFE\xFD\xFC\xFB\xFA\xF0", more = "\xFE\xFD\xFC\xFB\xF0\xFA";
  const std::string semicolon = "\xFE\xFD\xFC\xFB\xFA\xF1", part = less.substr(0, 4);
  // The position is -1 where there is no marker.
  const std::tuple<std::string, int, int, std::string> cases[] = {
      {"", -1, -1, ""},
      {"a<b>;" + part + "\xFA\xF2", -1, -1, ""},
      {"a" + less + "b", 1, 0, "a<b"},
      {semicolon + "x" + less + more, 0, 2, ";x<>"},
      {more + more + "tail", 0, 1, ">>tail"},
      {"ab" + semicolon, 2, 2, "ab;"},
      {part + "\xFA", -1, -1, ""},
      {part + more + "\xFE\xFD", 4, 1, part + ">\xFE\xFD"},
      {"\xFE" + less + "\xFA\xF0", 1, 0, "\xFE<\xFA\xF0"}};
  for (const auto& [text, position, marker, expected] : cases) {
    int which = 7;
    const char* found = searchSpecString(text.c_str(), &which);
    EXPECT_EQ(found == nullptr ? -1 : found - text.c_str(), position) << text;
    EXPECT_EQ(which, marker) << text;
    const auto replaced = replaceSpecString(text.c_str());
    EXPECT_STREQ(replaced.get(), position < 0 ? nullptr : expected.c_str()) << text;
  }
}

}  // namespace
}  // namespace orx
