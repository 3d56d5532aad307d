#include "model/config_handle.h"

#include <gtest/gtest.h>

#include "model/decimal.h"

namespace orx {
namespace {

CMConfigHandle fromHex(std::string_view digits) {
  CMConfigHandle handle(9, 0xFFFFFFFF);
  handle.setFromExternChar(digits);
  return handle;
}

// The 16 digits, or nothing for the null handle.
std::string hex(const CMConfigHandle& handle) {
  return handle.isNull() ? "" : handle.externText().c_str();
}

const CMConfigHandle system2(2, 0x30002);
const CMConfigHandle group70000(3, 70000);
const CMConfigHandle resource9(4, 9);
const CMConfigHandle nothing;

TEST(ConfigHandle, ConstructorsAndFactoriesBuildTheirLayout) {
  const std::pair<CMConfigHandle, const char*> cases[] = {
      {CMConfigHandle(5, 1), "0100000000000501"},
      {CMConfigHandle(0, 1), "0100000000000000"},
      {CMConfigHandle(300, 0x12345678), "7856341200002C01"},
      {CMConfigHandle(-1, 1), "0100000000001F00"},
      {CMConfigHandle::createTemporaryHandle(5, 7), "0700000000000511"},
      {CMConfigHandle::createTemporaryHandle(-1, 7), "070000000000FF11"},
      {CMConfigHandle(system2, group70000), "0000701102006300"},
      {CMConfigHandle(system2, group70000, resource9), "090070110200A400"},
      {CMConfigHandle(nothing, group70000, resource9), "7011010009002400"},
      {CMConfigHandle::createPrototypeInheritedGroupHandle(system2, resource9), "0000090002006300"},
      {CMConfigHandle::createPrototypeInheritedResourceHandle(system2, resource9, resource9),
       "090009000200A400"}};
  for (const auto& [handle, expected] : cases) EXPECT_EQ(hex(handle), expected);
}

// "TYPE" with what holds of "new", "inherited" and "temporary"; the kind of an inherited handle and
// what it refers to.
std::string described(const CMConfigHandle& handle) {
  constexpr const char* kinds[] = {"", " group", " resource in inherited", " resource in group"};
  std::string text = std::to_string(std::int32_t{handle.getType()});
  if (handle.isNewFormat()) text += " new";
  if (handle.isModelInherited()) text += " inherited";
  if (handle.isTemporary()) text += " temporary";
  text += kinds[static_cast<int>(handle.getModelInheritedKind())];
  for (const CMConfigHandle& other :
       {handle.getManagedSystemHandle(), handle.getGroupRefId(), handle.getResourceRefId()}) {
    if (!other.isNull()) text += " " + hex(other);
  }
  return text;
}

TEST(ConfigHandle, QueriesReadBothLayouts) {
  const std::string system = " 0200000000000201", group = " 0700000000000501";
  const std::string bigGroup = " 7011010000000301", resource = " 0900000000000601";
  const std::pair<const char*, std::string> cases[] = {
      {"0000000000000000", "0"},
      {"0100000000000511", "5 new temporary"},
      {"0100000000000510", "5"},
      {"010000000000FF01", "255 new"},
      {"010000000000DF00", "31"},
      {"0100000000002500", "5 inherited"},
      {"0000070002006300", "3 inherited group" + system + group},
      {"090007000200A400", "4 inherited resource in inherited" + system + group + resource},
      {"7011010009002400", "4 inherited resource in group" + bigGroup + resource},
      {"0000070002000307", "3 new inherited group" + system + group},
      {"090007000200040B", "4 new inherited resource in inherited" + system + group + resource},
      {"7011010009000403", "4 new inherited resource in group" + bigGroup + resource},
      {"0100000000008403", "132 new inherited"}};
  for (const auto& [bytes, expected] : cases) {
    EXPECT_EQ(described(fromHex(bytes)), expected) << bytes;
  }
}

TEST(ConfigHandle, ComparisonsLookAtTheBytes) {
  const std::tuple<const char*, const char*, int, bool> cases[] = {
      {"0102030405060708", "0102030405060708", 0, true},
      {"0102030405060708", "0102030405060709", -1, false},
      {"FF00000000000501", "0100000000000501", 1, false},   // bytes are unsigned
      {"0100000000000501", "0100000000000601", 0, false}};  // a shared zero byte ends it
  for (const auto& [leftHex, rightHex, sign, equal] : cases) {
    const CMConfigHandle left = fromHex(leftHex), right = fromHex(rightHex);
    const int order = left.compareTo(&right);
    EXPECT_EQ((order > 0) - (order < 0), sign) << leftHex;
    EXPECT_TRUE(left.isEqual(&right) == equal && (left == right) == equal) << leftHex;
  }
}

TEST(Decimal, ReadsDigitsModulo32Bits) {
  const std::pair<std::string_view, std::int32_t> cases[] = {
      {"", 0},    {"-7x", -7},        {"+7", 7},
      {"- 7", 0}, {"4294967295", -1}, {"2147483648", -2147483647 - 1},
      {"\t7", 0}, {"4294967297", 1}};
  for (const auto& [text, expected] : cases) EXPECT_EQ(parseDecimal(text), expected) << text;
}

TEST(HandleText, Exports) {
  const std::pair<std::string_view, std::string_view> cases[] = {
      {"0000000000000000", "<1;1;0;0;0;0;0;>"},
      {"D204000000000511", "<1;1;5;0;0;0;1234;>"},  // the temporary flag is not carried
      {"FFFFFFFF00000500", "<1;1;5;0;0;0;4294967295;>"},
      {"0000070002006300", "<1;2;3;1;1;0;2;7;>"},
      {"090007000200A400", "<1;4;4;1;0;1;2;7;9;>"},
      {"7011010009002400", "<1;3;4;1;0;0;70000;9;>"},
      {"0900070002000407", "<1;3;4;1;1;0;458761;2;>"},
      {"090000000000050F", "<1;1;5;1;1;1;9;>"},  // inherited, of a type that has no kind
      {"FFFFFFFFFFFFFF0F", "<1;3;255;1;1;1;4294967295;65535;>"},
      {"0900000000002500", "<1;1;37;0;0;0;9;>"},  // converted to the new format
      {"0900000001002502", "<1;3;37;1;0;0;9;1;>"}};
  for (const auto& [bytes, expected] : cases) {
    EXPECT_EQ(fromHex(bytes).exportText().view(), expected) << bytes;
  }
}

TEST(HandleText, WritersKeepWithinTheirBuffer) {
  const CMConfigHandle handle(5, 1234);
  const std::string whole(handle.exportText().view());
  for (std::size_t size = 1; size <= 24; ++size) {
    std::string buffer(32, '#');
    handle.exportChr(buffer.data(), size);
    EXPECT_STREQ(buffer.c_str(), whole.substr(0, size - 1).c_str());
    EXPECT_EQ(buffer.find_last_not_of('#') + 1, std::min(size, whole.size() + 1));
    buffer.assign(32, '#');
    EXPECT_STREQ(handle.getExternChar(buffer.data(), size), size < 17 ? "" : "D204000000000501");
    EXPECT_EQ(buffer.find_last_not_of('#') + 1, size < 17 ? 1u : 17u);
  }
}

TEST(HandleText, Imports) {
  using namespace std::string_view_literals;
  // "TEXT DIGITS"; the fields of an accepted text may be empty or lack the last ";".
  const std::vector<std::string_view> accepted = {
      "<1;1;5;0;0;0;1234;> D204000000000501",    "<1;1;5;0;0;0;12;>trailing 0C00000000000501",
      "<1;1;0;0;0;0;0;> 0000000000000000",       "<1;1;5;0;0;0;4294967295;> FFFFFFFF00000501",
      "<1;1;300;7;6;5;1;> 0100000000002C0B",     "<1;1;-1;1;0;1;1;> 010000000000BF00",
      "<1;2;3;1;1;0;65538;7;> 0000070002000307", "<1;3;4;1;0;0;70000;9;> 7011010009000403",
      "<1;4;4;1;0;1;2;7;9;> 090007000200040B",   "<;;1;;1; 5x;+0;0;0;12> 0C00000000000501",
      "<0;1;5;0;0;0;12;> 0C00000000000501"};
  const std::vector<std::string_view> refused = {
      "<1; ;5;0;0;0;12;> 0000000000000501", "<-1;1;5;0;0;0;12;> 0000000000000000",
      "<1;1;5;0;0;0;> 0000000000000000",    "<1;4;5;0;0;0;1;2;3;4;> 0000000000000000",
      "<1;2;5;0;0;0;12;> 0000000000000501", "<1;4;-1;1;1;1;12;13;> 000000000000FF00",
      "1;1;5;0;0;0;12;> 0000000000000000",  " <1;1;5;0;0;0;12;> 0000000000000000",
      "<1;1;5;0;0;0;12; 0000000000000000",  "<2;1;5;0;0;0;12;> 0000000000000000",
  };
  for (const int result : {1, 0}) {
    for (const std::string_view row : result == 1 ? accepted : refused) {
      const std::size_t blank = row.rfind(' ');
      CMConfigHandle handle(9, 0xFFFFFFFF);
      EXPECT_EQ(handle.importHndl(row.substr(0, blank)), result) << row;
      EXPECT_EQ(handle.externText().view(), row.substr(blank + 1)) << row;
    }
  }
  for (const std::string_view text : {"<1;1;5;0;0;0;12\0;>"sv, "<"sv, ""sv}) {
    CMConfigHandle handle(9, 9);
    EXPECT_TRUE(handle.importHndl(text) == 0 && handle.isNull()) << text;
  }
}

}  // namespace
}  // namespace orx
