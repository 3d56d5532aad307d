#include "platform/locale.h"

#include <gtest/gtest.h>
#include <unicode/ucnv.h>
#include <unicode/unistr.h>

namespace orx {
namespace {

struct Result {
  std::string text;
  int error = -1;
};

Result translate(int to, int from, std::string_view source, int targetSize = 4096) {
  std::string target(static_cast<std::size_t>(targetSize), '\xEE');
  Result result;
  int written = -1;
  LOCX_TranslateString(to, target.data(), targetSize, from, source.data(),
                       static_cast<int>(source.size()), &written, 0, &result.error);
  EXPECT_EQ(target.back(), '\xEE') << "the last byte of the target is never written";
  result.text = target.substr(0, static_cast<std::size_t>(written));
  return result;
}

TEST(Locale, TranslatesPagesOfManyBytesBothWays) {
  const std::tuple<int, std::string, const char*> rows[] = {
      {932, "\x82\xA0\\", "あ\\"},
      {943, "\x82\xA0\\", "あ\\"},
      {1208, "\xF0\x9F\x98\x80", "😀"},
      {1392, "\xB0\xA1\x81\x30\x81\x30", "啊\u0080"}};
  for (const auto& [ccsid, bytes, utf8] : rows) {
    EXPECT_EQ(translate(1208, ccsid, bytes).text, utf8) << ccsid;
    EXPECT_EQ(translate(ccsid, 1208, utf8).text, bytes) << ccsid;
  }
}

// The converters that the identifiers lead to are those that the names of the pages lead to.
TEST(Locale, SingleBytePagesAgreeWithTheirTablesByteByByte) {
  const std::pair<int, const char*> rows[] = {
      {819, "ISO-8859-1"},  {850, "cp850"},    {437, "cp437"},   {1252, "cp1252"},
      {923, "ISO-8859-15"}, {1047, "IBM1047"}, {37, "cp037"},    {500, "cp500"},
      {273, "IBM273"},      {297, "cp297"},    {367, "US-ASCII"}};
  for (const auto& [ccsid, table] : rows) {
    for (int byte = 1; byte < 256; ++byte) {
      const std::string one(1, static_cast<char>(byte));
      std::string expected;
      icu::UnicodeString(one.data(), 1, table).toUTF8String(expected);
      if (expected == "\uFFFD") continue;
      EXPECT_EQ(translate(1208, ccsid, one).text, expected) << ccsid << " byte " << byte;
      EXPECT_EQ(translate(ccsid, 1208, expected).text, one) << ccsid << " byte " << byte;
    }
  }
}

TEST(Locale, ErrorsNameTheirCauseAndStopAtIt) {
  using namespace locale_error;
  const std::tuple<const char*, int, int, std::string_view, int, int, std::string> rows[] = {
      {"fits with its NUL", 819, 1208, "abc", 4, 0, "abc"},
      {"one byte short", 819, 1208, "abc", 3, targetFull, "ab"},
      {"grows beyond the target", 1208, 819, "\xE9\xE9", 4, targetFull, "é\xC3"},
      {"nothing into nothing", 819, 1208, "", 1, 0, ""},
      {"overlong", 819, 1208, "a\xC0\x80", 9, badText, "a"},
      {"surrogate", 1208, 1208, "a\xED\xA0\x80", 9, badText, "a"},
      {"cut short", 819, 1208, "a\xE2\x82", 9, badText, "a"},
      {"unmappable", 819, 1208, "a€", 9, badText, "a"},
      {"unmappable and invisible", 819, 1208, "a\u200D", 9, badText, "a"},
      {"half a double byte", 1208, 943, "a\x82", 9, badText, "a"},
      {"no table for the target", 924, 1208, "a", 9, noConverter, ""},
      {"no table for the source", 1208, 5488, "a", 9, noConverter, ""},
      {"negative identifier", 1208, -37, "a", 9, noConverter, ""}};
  for (const auto& [name, to, from, source, size, error, text] : rows) {
    const Result result = translate(to, from, source, size);
    EXPECT_EQ(result.error, error) << name;
    EXPECT_TRUE(text.starts_with(result.text)) << name << result.text;
  }
}

}  // namespace
}  // namespace orx
