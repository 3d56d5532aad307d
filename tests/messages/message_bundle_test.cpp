#include "messages/message_bundle.h"

#include <gtest/gtest.h>
#include <unicode/locid.h>

#include <limits>

#include "messages/bundle_files.h"
#include "messages/error_msg.h"
#include "messages/message_print.h"
#include "tests/support/program_runs.h"
#include "tests/support/test_bundle.h"

namespace orx {
namespace {

void speak(const char* locale) {
  UErrorCode status = U_ZERO_ERROR;
  icu::Locale::setDefault(icu::Locale(locale), status);
}

class Bundle : public testing::Test {
 protected:
  Bundle() { speak("en_US"); }

  test::TempDir directory_;
  test::WorkingDirectory inDirectory_{directory_.path()};
  MessageBundle bundle_;
};

std::string textOf(MessageBundle& bundle, const char* key) {
  const char* text = bundle.getMessage(key);
  return text == nullptr ? "(none)" : text;
}

void expectAsNew(const MessageBundle& bundle) {
  EXPECT_STREQ(bundle.path(), "");
  EXPECT_STREQ(bundle.localeName(), "");
  EXPECT_EQ(bundle.capacity(), 0);
  EXPECT_EQ(bundle.status(), U_ZERO_ERROR);
}

TEST_F(Bundle, IsEmptyWhenItCannotBeOpened) {
  expectAsNew(bundle_);
  EXPECT_EQ(bundle_.open(nullptr), -1);
  EXPECT_EQ(bundle_.open(bundleName), -2);
  expectAsNew(bundle_);
  EXPECT_EQ(textOf(bundle_, "IDS_MAIN_FIRST"), "(none)");

  std::filesystem::remove(directory_.path());
  EXPECT_EQ(bundle_.open(bundleName), -2);
  expectAsNew(bundle_);
}

TEST_F(Bundle, GivesEveryNonEmptyStringAsItStands) {
  test::compileBundle(directory_.path(), "root", R"(root {
    SHORT { "a" } LONG { "0123456789" } ANY_FORMAT { "%n %*d" } EMPTY { "" }
    NUMBER:int { 3 } LIST:array { "a", "b" } TABLE { INNER { "x" } } LONE { "<\uD800>" } })");
  ASSERT_EQ(bundle_.open(bundleName), 0);
  EXPECT_EQ(bundle_.path(), (std::filesystem::current_path() / bundleName).string());
  EXPECT_STREQ(bundle_.localeName(), "en_US");
  const std::tuple<const char*, const char*, std::int32_t> cases[] = {
      {"SHORT", "a", 1},       {"LONG", "0123456789", 10},     {"SHORT", "a", 10},
      {"EMPTY", "(none)", 10}, {"ANY_FORMAT", "%n %*d", 10},   {"NUMBER", "(none)", 10},
      {"LIST", "(none)", 10},  {"TABLE", "(none)", 10},        {"ABSENT", "(none)", 10},
      {nullptr, "(none)", 10}, {"LONE", "<\xEF\xBF\xBD>", 10},
  };
  for (const auto& [key, text, capacity] : cases) {
    EXPECT_EQ(textOf(bundle_, key), text) << (key == nullptr ? "null" : key);
    EXPECT_EQ(bundle_.capacity(), capacity) << text;
  }
  bundle_.close();
  expectAsNew(bundle_);
  EXPECT_EQ(textOf(bundle_, "SHORT"), "(none)");
}

TEST_F(Bundle, AFileThatWasCutCountsAsMissingAndReleasesTheFirstBundle) {
  test::writeShippedBundle(directory_.path());
  const auto file = directory_ / "PRESTORE_restore/root.res";
  const std::string whole = test::readFile(file);
  ASSERT_EQ(bundle_.open(bundleName), 0);
  for (std::size_t length = 0; length < whole.size(); length += 41) {
    test::writeFile(file, whole.substr(0, length));
    EXPECT_EQ(bundle_.open(bundleName), -2) << length;
    expectAsNew(bundle_);
  }
}

// A key that a language lacks would come from root, so it would read as in English; so does a
// language that is not there.
TEST_F(Bundle, EveryLanguageHasEveryTextWithExactlyItsArguments) {
  test::writeShippedBundle(directory_.path());
  ASSERT_EQ(bundleFiles().size(), 5u);
  MessageBundle inEnglish;
  ASSERT_EQ(inEnglish.open(bundleName), 0);
  for (const std::string locale :
       {"en_US_POSIX", "pt_BR", "de", "de_AT", "fr_CA", "es_MX", "ja_JP"}) {
    speak(locale.c_str());
    const bool isEnglish = locale == "en_US_POSIX" || locale == "pt_BR";
    ASSERT_EQ(bundle_.open(bundleName), 0);
    for (const MessageSignature& signature : messageSignatures) {
      const std::string text = textOf(bundle_, signature.key);
      const std::string where = locale + " " + signature.key;
      EXPECT_EQ(argumentsTaken(text, signature.arguments()), signature.count) << where;
      EXPECT_TRUE(text.ends_with('\n')) << where;
      EXPECT_EQ(text == textOf(inEnglish, signature.key), isEnglish) << where;
    }
  }
}

TEST_F(Bundle, OnlyTextsThatFitTheirArgumentsArePrinted) {
  const auto printAll = [] {
    printMessage("IDS_HELLOFN_FIRST", "Feb 17 2016", "10:17:37");
    printMessage("IDS_PROCESSARGS_FIRST", std::string("100%s"));
    printMessage("IDS_PROCESSARGS_THIRD");
    printMessage("IDS_MAIN_SIXTH", -1);
    printMessage("IDS_MAIN_THIRD", "rorxdata");
    printMessage("IDS_MAIN_FIRST");
  };
  EXPECT_EQ(test::printed(printAll), "");
  const test::TempDir withBundle;
  const test::WorkingDirectory inBundle(withBundle.path());
  test::compileBundle(withBundle.path(), "root", R"(root {
    IDS_HELLOFN_FIRST { "date %s only\n" } IDS_PROCESSARGS_FIRST { "file %s\n" }
    IDS_PROCESSARGS_THIRD { "leak %s\n" } IDS_MAIN_SIXTH { "100%% of %d\n" }
    IDS_MAIN_THIRD { "%n" } })");
  EXPECT_EQ(test::printed(printAll), "date Feb 17 2016 only\nfile 100%s\n100% of -1\n");
}

TEST(MessageFormat, CountsTheArgumentsOrRefuses) {
  constexpr auto n = MessageArgument::number;
  constexpr auto t = MessageArgument::text;
  constexpr std::array numberThenText{n, t};
  const std::pair<const char*, std::size_t> accepted[] = {
      {"100%%", 0}, {"%d %s", 2}, {"%i%%%s", 2}, {"%c%s", 2},      {"%u", 1},  {"%x%-10.3s", 2},
      {"%#X", 1},   {"%+05d", 1}, {"%-3c", 1},   {"%999.999o", 1}, {"%.d", 1},
  };
  for (const auto& [format, taken] : accepted) {
    EXPECT_EQ(argumentsTaken(format, numberThenText), taken) << format;
  }
  const char* const refused[] = {
      "%s",   "%d%d", "%d%s%d", "%d%s%%%s", "%",       "x%d%",  "%5%", "%n", "%d%n", "%*d",  "%.*d",
      "%1$d", "%ld",  "%hhd",   "%1000d",   "%.1000d", "%f",    "%p",  "%m", "%C",   "%'d",  "%#d",
      "%05c", "%.1c", "%d%05s", "%d%#s",    "%d%ls",   "%.-1d", "% ",  "%0", "%.",   "%I64d"};
  for (const char* format : refused) {
    EXPECT_EQ(argumentsTaken(format, numberThenText), std::nullopt) << format;
  }
}

TEST(ErrorMsg, NamesCodeAndReason) {
  constexpr auto lowest = std::numeric_limits<std::int32_t>::min();
  const std::tuple<std::int32_t, std::int32_t, const char*> cases[] = {
      {0, 0, "%d, RC=0(Success), RSN=0(NoError)\n"},
      {11, 64, "%d, RC=11(Authority), RSN=64(User)\n"},
      {12, 65, "%d, RC=12(Unknown), RSN=65(Unknown)\n"},
      {-1, lowest, "%d, RC=-1(Unknown), RSN=-2147483648(Unknown)\n"},
  };
  for (const auto& [code, reason, line] : cases) {
    EXPECT_EQ(test::printed([c = code, r = reason] { ErrorMsg(c, r, "%d"); }), line);
  }
}

}  // namespace
}  // namespace orx
