#include "encoding/code_pages.h"

#include <gtest/gtest.h>
#include <unicode/ustring.h>

#include <cstdlib>
#include <cstring>

namespace orx {
namespace {

// Whether ICU reads the bytes as characters throughout.
bool icuAccepts(const std::string& bytes) {
  UChar utf16[8];
  UErrorCode status = U_ZERO_ERROR;
  (void)u_strFromUTF8(utf16, 8, nullptr, bytes.data(), static_cast<int>(bytes.size()), &status);
  return U_SUCCESS(status);
}

TEST(Utf8, EverySequenceOfUpToFourBytesIsJudgedAsIcuJudgesIt) {
  // All pairs of bytes; for longer sequences all first bytes and the borders of every range.
  const char borders[] = "\x01\x7F\x80\x8F\x90\x9F\xA0\xBF\xC0\xFF";
  int valid = 0;
  const auto check = [&valid](const std::string& bytes) {
    const bool expected = icuAccepts(bytes);
    valid += expected ? 1 : 0;
    ASSERT_EQ(isValidUTF8String(bytes.c_str()) == 1, expected) << testing::PrintToString(bytes);
  };
  for (int a = 1; a < 256; ++a) {
    const std::string one(1, static_cast<char>(a));
    for (int b = 1; b < 256; ++b) check(one + static_cast<char>(b));
    for (int i = 0; i < 1000; ++i) {
      const std::string three = one + borders[i / 100] + borders[i / 10 % 10];
      check(three);
      check(three + borders[i % 10]);
    }
  }
  EXPECT_GT(valid, 1000);
  EXPECT_EQ(isValidUTF8String(""), 1);
}

TEST(Utf8, FindsTheStartOfTheCharacterThatCoversAByte) {
  const char* euro = "a\xE2\x82\xAC";
  const int starts[] = {0, 1, 1, 1, 4};
  for (int end = 0; end < 5; ++end) EXPECT_EQ(myfindUTF8Len(euro, end), starts[end]) << end;
  EXPECT_EQ(myfindUTF8Len("\x80\xBF", 1), -1);
  EXPECT_EQ(myfindUTF8Len(euro, -1), -1);
  EXPECT_EQ(myfindUTF8Len(nullptr, 9), 0);
}

TEST(Fields, AreFilledToTheirWidthAndNoFurther) {
  const std::tuple<const char*, int, const char*, const char*> rows[] = {
      {"abcdef", 4, "abcd####", "abcdef\0#"}, {"ab", 4, "ab  ####", "ab  ####"},
      {"", 3, "   #####", "   #####"},        {"ab", 0, "########", "ab\0#####"},
      {"ab", -5, "########", "ab\0#####"},    {"ab", 2, "ab######", "ab\0#####"}};
  for (const auto& [text, width, copied, filled] : rows) {
    char field[9] = "########";
    UTF8StrNCopy(field, text, width);
    EXPECT_EQ(std::string(field, 8), std::string(copied, 8)) << text << width;
    std::strcpy(field, "########");
    std::strcpy(field, text);
    UTF8FillTail(field, width);
    EXPECT_EQ(std::string(field, 8), std::string(filled, 8)) << text << width;
  }
}

TEST(Conversion, GoesInTheDirectionOfTheFlag) {
  const std::tuple<int, int, std::string, const char*> rows[] = {
      {0, 1252, "\x80", "€"}, {1, 1252, "€", "\x80"}, {-7, 273, "ä", "\xC0"}};
  for (const auto& [flag, ccsid, source, expected] : rows) {
    char target[16] = {};
    const auto size = static_cast<int>(source.size());
    EXPECT_EQ(ConvertStringToUTF8(flag, target, sizeof target, source.c_str(), size, ccsid), 0);
    EXPECT_STREQ(target, expected) << ccsid;
  }
}

TEST(Conversion, ATextOfAnyLengthIsConvertedInPlaceOrStaysAsItWas) {
  for (std::size_t length = 0; length <= 1100; length += length < 505 || length > 1015 ? 1 : 85) {
    std::string text(length, '\xE9');
    EXPECT_EQ(ConvertStringToUTF8_RWCString(0, text, 819), 0);
    ASSERT_EQ(text.size(), 2 * length);
    EXPECT_EQ(ConvertStringToUTF8_RWCString(2, text, 819), 0);
    EXPECT_EQ(text, std::string(length, '\xE9'));
    const std::string bad = std::string(length, 'x') + "€";
    std::string broken = bad;
    const int error = ConvertStringToUTF8_RWCString(1, broken, 819);
    EXPECT_TRUE(error != 0 && error != 15) << error;
    EXPECT_EQ(broken, bad);
  }
}

// In a process of its own, where nothing is known yet.
TEST(LocalCodePageDeathTest, IsAskedUntilItIsKnownAndThenKept) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  EXPECT_EXIT(
      {
        (void)setenv("LC_ALL", "xx_XX.NOSUCH", 1);
        if (UTF8GetLocaleDefaultCodePageID() != 0) std::exit(2);
        (void)setenv("LC_ALL", "C.UTF-8", 1);
        if (UTF8GetLocaleDefaultCodePageID() != 1208) std::exit(3);
        (void)setenv("LC_ALL", "C", 1);
        if (UTF8GetLocaleDefaultCodePageID() != 1208) std::exit(4);
        std::string text = "é";
        std::exit(ConvertStringToUTF8_RWCString(1, text, 0) == 0 && text == "é" ? 0 : 5);
      },
      testing::ExitedWithCode(0), "");
}

TEST(Ebcdic, AcceptsExactlyTheFormsOfTheAsciiCharacters) {
  int accepted = 0;
  for (int byte = 1; byte < 256; ++byte) {
    std::string text(1, static_cast<char>(byte));
    const int isValid = isValidEBCDICEnglishString(text.c_str());
    EXPECT_EQ(ConvertStringToUTF8_RWCString(0, text, 1047), 0);
    EXPECT_EQ(isValid, text.size() == 1 ? 1 : 0) << byte;  // ASCII alone is one byte in UTF-8
    accepted += isValid;
  }
  EXPECT_EQ(accepted, 127);
  EXPECT_EQ(isValidEBCDICEnglishString(""), 1);
  EXPECT_EQ(isValidEBCDICEnglishString("\xC8\x85\x93\x93\x96\x41"), 0);
}

TEST(ManagedSystems, TheFirstRegistrationStays) {
  const char* const longName = "a rather long name of a managed system";
  const std::pair<const char*, int> systems[] = {{"ALPHA", 37}, {longName, 500}, {"ALPHA", 273}};
  for (const auto& [name, ccsid] : systems) insertCodedCharSetId(name, ccsid);
  EXPECT_TRUE(findCodedCharSetId("ALPHA") == 37 && findCodedCharSetId("alpha") == 0);
  EXPECT_EQ(findCodedCharSetId(longName), 500);
}

}  // namespace
}  // namespace orx
