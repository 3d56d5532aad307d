#include <gtest/gtest.h>

#include <random>

#include "model/config_handle.h"
#include "model/decimal.h"

namespace orx {
namespace {

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
    CMConfigHandle handle;
    handle.setFromExternChar(bytes);
    EXPECT_EQ(handle.exportText().view(), expected) << bytes;
    EXPECT_TRUE(CMConfigHandle::isExportedFormat(expected));
    EXPECT_FALSE(CMConfigHandle::isExportedFormat(bytes));
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
  handle.exportChr(nullptr, 48);
  EXPECT_EQ(handle.getExternChar(nullptr, 17), nullptr);
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
    EXPECT_EQ(handle.importHndl(text), 0) << text;
    EXPECT_TRUE(handle.isNull()) << text;
  }
  EXPECT_EQ(CMConfigHandle(9, 9).importHndl(static_cast<const char*>(nullptr)), 0);
}

TEST(HandleText, TakesSixteenDigits) {
  const std::pair<std::string_view, std::string_view> cases[] = {
      {"0a00000000000501", "0000000000000501"},
      {"FEDCBA9876543210FF", "FEDCBA9876543210"},
      {"ABC", "ABC0000000000000"},
      {std::string_view("12\0x34", 6), "1200000000000000"}};
  for (const auto& [text, expected] : cases) {
    CMConfigHandle handle(9, 0xFFFFFFFF);
    handle.setFromExternChar(text);
    EXPECT_EQ(handle.externText().view(), expected);
  }
}

// What a handle comes back as, said over its fields.
HandleBytes normalised(HandleBytes b) {
  const bool wasOld = (b[7] & 1) == 0;
  const int oldType = b[6] & 0x1F;
  if (wasOld && (b[6] & 0x20) != 0 && oldType != 3 && oldType != 4) b[7] |= 1;
  const bool isNew = (b[7] & 1) != 0;
  const int type = isNew ? b[6] : oldType;
  const int flags = isNew ? (b[7] >> 1) & 7 : b[6] >> 5;
  const bool inherited = (flags & 1) != 0;
  if (!inherited) b[4] = b[5] = 0;
  if (inherited && type == 3) b[0] = b[1] = 0;
  b[6] = static_cast<std::uint8_t>(type > 0 ? type : flags << 5);
  b[7] = static_cast<std::uint8_t>(type > 0 ? 1 | flags << 1 : 0);
  return b;
}

TEST(HandleText, RoundTripsUpToTheNormalisation) {
  std::mt19937 random(20160217);
  for (int i = 0; i < 200000; ++i) {
    HandleBytes bytes;
    for (auto& byte : bytes) byte = static_cast<std::uint8_t>(random());
    if (i % 4 == 0) bytes[6] = static_cast<std::uint8_t>((bytes[6] & 0xE0) | (3 + i / 4 % 2));
    if (i % 8 == 0) bytes[7] &= 0x0F;
    if (i % 3 == 0) bytes[4] = bytes[5] = 0;
    const CMConfigHandle handle(bytes);
    const HandleText text = handle.exportText();
    ASSERT_LE(text.view().size(), 34u);
    CMConfigHandle read;
    ASSERT_EQ(read.importHndl(text.view()), 1) << text.view();
    ASSERT_EQ(read.bytes(), normalised(bytes)) << handle.externText().view();
    read.setFromExternChar(handle.externText().view());
    ASSERT_EQ(read.bytes(), bytes);
  }
}

}  // namespace
}  // namespace orx
