#include "model/symbol_resolution.h"

#include <gmock/gmock.h>

#include <cstdio>
#include <cstdlib>

#include "encoding/code_pages.h"
#include "tests/support/attributes.h"
#include "tests/support/run_program.h"
#include "tests/support/temp_dir.h"

namespace orx {
namespace {

using Rows = std::vector<std::string>;  // "TEXT -> RESULT"
// Against the parameters of a text, "NAME=VALUE,NAME=VALUE".
std::string resolve(const std::string& parameters, const std::string& text, int utf8Mode = 0) {
  CMSymParmSet set = test::parametersOf(parameters);
  return ResolveSymbolsInString(text.c_str(), &set, utf8Mode);
}

TEST(SymbolResolution, ReplacesReferencesAndLeavesTheRest) {
  const Rows names = {"&A -> xyz",      "&A.b -> xyzb", "&A..b -> xyz.b", "&A,b -> xyz,b",
                      "&A&A -> xyzxyz", "a&&b -> a&b",  "&&A -> &A",      "&&&A -> &xyz",
                      "abc& -> abc&",   "& A -> & A",   "&. -> &.",       "&B -> &B",
                      "x,&E,y -> x,y",  "&E.y -> y",    "&E z ->  z"};
  const Rows ranges = {"&E<2>,y -> y",       "&F<3> -> abc",       "&F<3>.x -> abcx",
                       "&F<3><2> -> abc<2>", "&F<2:3> -> bcd",     "&F<4:> -> def",
                       "&F<> -> abcdef",     "&F<:2> -> abcdef",   "&F<0:2> -> abcdef",
                       "&F<7:1> -> ",        "&F<x> -> abcdef<x>", "&F<3 -> abcdef<3",
                       "&F<< -> abcdef<",    "&F< -> abcdef<"};
  const Rows longRanges = {"&F<9999999999:1> -> ", "&F<2:9999999999> -> bcdef",
                           "&F<3:x> -> cdef<3:x>", "&F<1:2:3> -> abcdef<1:2:3>",
                           "&F<<3> -> abcdef<3>"};
  for (const Rows& rows : {names, ranges, longRanges}) {
    for (const std::string& row : rows) {
      const std::size_t arrow = row.find(" -> ");
      EXPECT_EQ(resolve("A=xyz,E= ,F=abcdef", row.substr(0, arrow)), row.substr(arrow + 4)) << row;
    }
  }
  EXPECT_EQ(ResolveSymbolsInString("&A<1>.", nullptr, 0), "&A<1>.");
}

TEST(SymbolResolution, ARangeOfOneHundredBytesIsTooLong) {
  const std::string zeros(95, '0');
  EXPECT_EQ(resolve("F=abcdef", "&F<" + zeros + "2:02>"), "bc");
  EXPECT_EQ(resolve("F=abcdef", "&F<" + zeros + "02:02>"), "abcdef<" + zeros + "02:02>");
  SubstrRange range;
  EXPECT_EQ(getSubstrRange("2:3\0x", 5, range, 0), 1);
  EXPECT_EQ(range.length, 3);
  EXPECT_EQ(getSubstrRange("1", -1, range, 0), 0);
}

TEST(SymbolResolution, ValuesOfValuesAreResolvedAndKeptAndNoneRefersToItself) {
  CMSymParmSet set = test::parametersOf("B=&A.x,A=1,C=c,P=&Q.-tail,Q=x&P");
  std::vector<CMSymParm*> changed;
  EXPECT_EQ(ResolveSymbolsInString("&B<2:1>&C", &set, 0, &changed), "xc");
  EXPECT_EQ(set.findSymbolName2("B")->value(), "1x");
  EXPECT_THAT(changed, testing::ElementsAre(set.findSymbolName2("B")));
  // The text may be a value of the set, which becomes another meanwhile.
  EXPECT_EQ(ResolveSymbolsInString(set.findSymbolName2("P")->value().data(), &set, 0),
            "x&Q.-tail-tail");
  EXPECT_EQ(resolve("A=<&A>", "x&A&A"), "x<&A><&A>");
  EXPECT_EQ(resolve("A=1&B,B=2&A", "&A"), "12&A");
}

TEST(SymbolResolution, ReferencesAreFollowedSixtyFourLevelsDeep) {
  for (const int depth : {63, 64, 65, 200}) {
    std::string parameters;
    for (int i = 1; i < depth; ++i) {
      parameters += "P" + std::to_string(i) + "=&P" + std::to_string(i + 1) + ".-,";
    }
    parameters += "P" + std::to_string(depth) + "=end";
    // The value of P64 stands on level 64 and may be plain; that of P65 is one too deep.
    const std::string core = depth <= 65 ? "end" : "&P65.";
    const int dashes = depth <= 65 ? depth - 1 : 64;
    EXPECT_EQ(resolve(parameters, "&P1"), core + std::string(static_cast<std::size_t>(dashes), '-'))
        << depth;
  }
}

TEST(SymbolResolution, ResultsStayBelowTheirLimit) {
  const std::string half(symbol_limits::resultBytes / 2, 'h');
  EXPECT_EQ(resolve("H=" + half, "&H&H"), half + half);
  EXPECT_EQ(resolve("H=" + half, "-&H&H<1>.&H."), "-" + half + "h&H.");
  // Doubling sixty times would fill any memory.
  std::string doubling = "P0=0123456789";
  for (int i = 1; i <= 60; ++i) {
    const std::string below = "&P" + std::to_string(i - 1);
    doubling.append(",P").append(std::to_string(i)).append("=").append(below).append(below);
  }
  const std::string result = resolve(doubling, "&P60");
  EXPECT_GT(result.size(), symbol_limits::resultBytes / 2);
  EXPECT_LT(result.size(), symbol_limits::resultBytes + 100);
}

// A value with an unknown reference is never settled, so every reference to it reads it again.
TEST(SymbolResolution, LongValuesAreNotReadOverAndOverWithoutEnd) {
  const std::string reference = "&Q<1>";
  std::string text;
  for (int i = 0; i < 100000; ++i) text += reference;
  const std::string unsettled = std::string(symbol_limits::resultBytes - 10, 'q') + "&U";
  const std::string result = resolve("Q=" + unsettled, text);
  const std::size_t replaced = result.find('&');
  EXPECT_GE(replaced, 60u);
  EXPECT_LE(replaced, 64u);
  EXPECT_EQ(result.substr(replaced), text.substr(replaced * reference.size()));
}

// Makes ISO 8859-1, which no system has of its own accord, the local code page of a process that
// has not asked for it yet. The C library's compiler gets along with an empty locale.
bool useLatin1Locale() {
  const test::TempDir directory;
  std::string charmap = "<code_set_name> ISO-8859-1\n<escape_char> /\nCHARMAP\n";
  for (int code = 0; code < 256; ++code) {
    char line[32];
    (void)std::snprintf(line, sizeof line, "<U%04X> /x%02x C\n", code, code);
    charmap += line;
  }
  test::writeFile(directory / "charmap", charmap + "END CHARMAP\n");
  test::writeFile(directory / "source", "LC_CTYPE\nEND LC_CTYPE\n");
  (void)test::runProgram({.file = "/usr/bin/localedef",
                          .arguments = {"--force", "-i", "./source", "-f", "./charmap", "./latin1"},
                          .directory = directory.path()});  // its result tells of warnings
  (void)setenv("LOCPATH", directory.path().c_str(), 1);
  (void)setenv("LC_ALL", "latin1", 1);
  return UTF8GetLocaleDefaultCodePageID() == 819;
}

TEST(SymbolResolutionDeathTest, InUtf8ModeTextAndValuesMeetInTheLocalCodePageAtEveryLevel) {
  // In a process of its own, where the local code page can still be another.
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  EXPECT_EXIT(
      {
        SubstrRange range;
        (void)setenv("LC_ALL", "xx_XX.NOSUCH", 1);  // nothing can be converted
        if (getSubstrRange("", 0, range, 1) != 1 || getSubstrRange("1", 1, range, 1) != 0) {
          std::_Exit(2);
        }
        // The C library never frees its copy of LOCPATH: this ends without a look at leaks.
        if (!useLatin1Locale()) std::_Exit(3);
        std::_Exit(resolve("\xC9=\xE4,N=[&\xC9.]", "ö&É.&N", 1) == "öä[ä]" ? 0 : 1);
      },
      testing::ExitedWithCode(0), "");
  const std::string longest(255, 's');
  const std::string parameters = "É=ä,N=&A,A=é1,L=" + longest + "l,S=" + longest;
  EXPECT_EQ(resolve(parameters, "ö&É<1:2>.&N&S.-&L.-", 1), "öäé1" + longest + "--");
}

}  // namespace
}  // namespace orx
