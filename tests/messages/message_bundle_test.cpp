#include "messages/message_bundle.h"

#include <gtest/gtest.h>
#include <unicode/locid.h>

#include "messages/bundle_files.h"
#include "messages/message_print.h"
#include "tests/support/temp_dir.h"
#include "tests/support/test_bundle.h"

namespace orx {
namespace {

class DefaultLocale {
 public:
  explicit DefaultLocale(const char* name) { set(icu::Locale(name)); }
  DefaultLocale(const DefaultLocale&) = delete;
  DefaultLocale& operator=(const DefaultLocale&) = delete;
  ~DefaultLocale() { set(before_); }

 private:
  static void set(const icu::Locale& locale) {
    UErrorCode status = U_ZERO_ERROR;
    icu::Locale::setDefault(locale, status);
  }
  icu::Locale before_ = icu::Locale::getDefault();
};

class Bundle : public testing::Test {
 protected:
  test::TempDir directory_;
  test::WorkingDirectory inDirectory_{directory_.path()};
  DefaultLocale english_{"en_US"};
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

  const test::TempDir other;
  std::filesystem::create_directory(other / "gone");
  const test::WorkingDirectory inGone(other / "gone");
  std::filesystem::remove(other / "gone");
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

// Wherever a byte is wrong, ICU is not led out of the file. Three forms of the root table, texts
// with and without lengths, and items that are no texts.
TEST_F(Bundle, AFlippedByteEndsNoProcess) {
  std::string numbers;
  for (int i = 0; i < 40; ++i) numbers += " KEY" + std::to_string(i) + ":int { 3 }";
  const std::string sources[] = {
      R"(root { SHORT { "a" } EMPTY { "" } OTHER { "\uDC00b" } })",
      R"(root { LIST { "a", "b" } LONG { ")" + std::string(1200, 'l') + "\" }" + numbers + "}",
      "root { SHORT { \"wide\" } K" + std::string(70000, 'k') + ":int { 3 }" + numbers + "}"};
  std::size_t accepted = 0;
  for (const std::string& source : sources) {
    test::compileBundle(directory_.path(), "root", source);
    const std::string whole = test::readFile(directory_ / "PRESTORE_restore/root.res");
    for (std::size_t at = 0; at<whole.size(); at += at> 4000 && at < 70000 ? 997 : 1) {
      for (const int flip : {0x01, 0x80}) {
        const test::TempDir place;  // ICU keeps the files that it has mapped
        const test::WorkingDirectory inPlace(place.path());
        std::string bytes = whole;
        bytes[at] = static_cast<char>(bytes[at] ^ flip);
        std::filesystem::create_directory(place / bundleName);
        test::writeFile(place / bundleName / "root.res", bytes);
        if (bundle_.open(bundleName) != 0) continue;
        ++accepted;
        for (const char* key : {"SHORT", "EMPTY", "OTHER", "LONG", "LIST", "KEY7", "ABSENT"}) {
          (void)bundle_.getMessage(key);
        }
      }
    }
  }
  EXPECT_GT(accepted, 100u);
}

TEST_F(Bundle, SpeaksTheLanguageOfTheLocaleOrElseEnglish) {
  test::writeShippedBundle(directory_.path());
  const std::pair<const char*, std::string> firstWords[] = {
      {"en_US", "Restore"},           {"en_GB", "Restore"},           {"pt_BR", "Restore"},
      {"de_DE", "Wiederherstellung"}, {"de_AT", "Wiederherstellung"}, {"de", "Wiederherstellung"},
      {"fr_CA", "Restauration"},      {"es_MX", "Restauración"},      {"en_US_POSIX", "Restore"},
  };
  for (const auto& [locale, word] : firstWords) {
    const DefaultLocale speaker(locale);
    ASSERT_EQ(bundle_.open(bundleName), 0) << locale;
    EXPECT_TRUE(textOf(bundle_, "IDS_MAIN_EIGHTH").starts_with(word + " ")) << locale;
  }
}

// A key that a language lacks would come from root, so it would read as in English.
TEST_F(Bundle, EveryLanguageHasEveryTextWithExactlyItsArguments) {
  test::writeShippedBundle(directory_.path());
  ASSERT_EQ(bundleFiles().size(), 5u);
  for (const char* locale : {"en_US", "de_DE", "fr_FR", "es_ES", "ja_JP"}) {
    const DefaultLocale speaker(locale);
    MessageBundle inEnglish;
    {
      const DefaultLocale english("en_US");
      ASSERT_EQ(inEnglish.open(bundleName), 0);
    }
    ASSERT_EQ(bundle_.open(bundleName), 0);
    for (const MessageSignature& signature : messageSignatures) {
      const std::string text = textOf(bundle_, signature.key);
      const std::string where = std::string(locale) + " " + signature.key;
      EXPECT_EQ(argumentsTaken(text, signature.arguments()), signature.count) << where;
      EXPECT_TRUE(text.ends_with('\n')) << where;
      EXPECT_EQ(text == textOf(inEnglish, signature.key), locale == std::string("en_US")) << where;
    }
  }
}

TEST_F(Bundle, OnlyTextsThatFitTheirArgumentsArePrinted) {
  const auto printAll = [] {
    testing::internal::CaptureStdout();
    printMessage("IDS_HELLOFN_FIRST", "Feb 17 2016", "10:17:37");
    printMessage("IDS_PROCESSARGS_FIRST", std::string("100%s"));
    printMessage("IDS_PROCESSARGS_THIRD");
    printMessage("IDS_MAIN_SIXTH", -1);
    printMessage("IDS_MAIN_THIRD", "rorxdata");
    printMessage("IDS_MAIN_FIRST");
    return testing::internal::GetCapturedStdout();
  };
  EXPECT_EQ(printAll(), "");
  const test::TempDir withBundle;
  const test::WorkingDirectory inBundle(withBundle.path());
  test::compileBundle(withBundle.path(), "root", R"(root {
    IDS_HELLOFN_FIRST { "date %s only\n" } IDS_PROCESSARGS_FIRST { "file %s\n" }
    IDS_PROCESSARGS_THIRD { "leak %s\n" } IDS_MAIN_SIXTH { "100%% of %d\n" }
    IDS_MAIN_THIRD { "%n" } })");
  EXPECT_EQ(printAll(), "date Feb 17 2016 only\nfile 100%s\n100% of -1\n");
}

TEST(MessageFormat, CountsTheArgumentsOrRefuses) {
  constexpr auto n = MessageArgument::number;
  constexpr auto t = MessageArgument::text;
  constexpr std::array numberThenText{n, t};
  const std::pair<const char*, int> cases[] = {
      // -1: refused
      {"", 0},        {"100%%", 0},     {"%d", 1},        {"%d %s", 2},    {"%i%%%s", 2},
      {"%c%s", 2},    {"%u", 1},        {"%x%-10.3s", 2}, {"%#X", 1},      {"%+05d", 1},
      {"%-3c", 1},    {"%999.999o", 1}, {"%.d", 1},       {"%s", -1},      {"%d%d", -1},
      {"%d%s%d", -1}, {"%d%s%%%s", -1}, {"%", -1},        {"x%d%", -1},    {"%5%", -1},
      {"%n", -1},     {"%d%n", -1},     {"%*d", -1},      {"%.*d", -1},    {"%1$d", -1},
      {"%ld", -1},    {"%hhd", -1},     {"%1000d", -1},   {"%.1000d", -1}, {"%f", -1},
      {"%p", -1},     {"%m", -1},       {"%C", -1},       {"%'d", -1},     {"%#d", -1},
      {"%05c", -1},   {"%.1c", -1},     {"%d%05s", -1},   {"%d%#s", -1},   {"%d%ls", -1},
      {"%.-1d", -1},  {"% ", -1},       {"%0", -1},       {"%.", -1},      {"%I64d", -1},
  };
  for (const auto& [format, taken] : cases) {
    EXPECT_EQ(argumentsTaken(format, numberThenText),
              taken < 0 ? std::nullopt : std::optional(static_cast<std::size_t>(taken)))
        << format;
  }
}

}  // namespace
}  // namespace orx
