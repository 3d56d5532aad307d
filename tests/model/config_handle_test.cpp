#include "model/config_handle.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <fstream>
#include <memory>
#include <string>

#include "platform/trace.h"

namespace orx {
namespace {

CMConfigHandle fromHex(const char* digits) {
  CMConfigHandle handle;
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
  const struct {
    CMConfigHandle handle;
    const char* expected;
  } cases[] = {
      {CMConfigHandle(static_cast<const std::uint8_t*>(nullptr)), ""},
      {CMConfigHandle(5, 1), "0100000000000501"},
      {CMConfigHandle(0, 1), "0100000000000000"},
      {CMConfigHandle(300, 0x12345678), "7856341200002C01"},
      {CMConfigHandle(-1, 1), "0100000000001F00"},
      {CMConfigHandle::createTemporaryHandle(5, 7), "0700000000000511"},
      {CMConfigHandle::createTemporaryHandle(-1, 7), "070000000000FF11"},
      {CMConfigHandle(system2, group70000), "0000701102006300"},
      {CMConfigHandle(system2, group70000, resource9), "090070110200A400"},
      {CMConfigHandle(nothing, group70000, resource9), "7011010009002400"},
  };
  for (const auto& row : cases) EXPECT_EQ(hex(row.handle), row.expected);
}

TEST(ConfigHandle, QueriesReadBothLayouts) {
  using enum ModelInheritedKind;
  constexpr const char* system = "0200000000000201";
  constexpr const char* group = "0700000000000501";
  constexpr const char* bigGroup = "7011010000000301";
  constexpr const char* resource = "0900000000000601";
  const struct {
    const char* bytes;
    bool isNew, inherited, temporary;
    int type;
    ModelInheritedKind kind;
    const char *system, *group, *resource;
  } cases[] = {
      {"0000000000000000", false, false, false, 0, none, "", "", ""},
      {"0100000000000511", true, false, true, 5, none, "", "", ""},
      {"0100000000000510", false, false, false, 5, none, "", "", ""},
      {"010000000000FF01", true, false, false, 255, none, "", "", ""},
      {"010000000000DF00", false, false, false, 31, none, "", "", ""},
      {"0100000000002500", false, true, false, 5, none, "", "", ""},
      {"0000070002006300", false, true, false, 3, inheritedGroup, system, group, ""},
      {"090007000200A400", false, true, false, 4, resourceInInherited, system, group, resource},
      {"7011010009002400", false, true, false, 4, resourceInGroup, "", bigGroup, resource},
      {"0000070002000307", true, true, false, 3, inheritedGroup, system, group, ""},
      {"090007000200040B", true, true, false, 4, resourceInInherited, system, group, resource},
      {"7011010009000403", true, true, false, 4, resourceInGroup, "", bigGroup, resource},
      {"0100000000008403", true, true, false, 132, none, "", "", ""},
  };
  for (const auto& row : cases) {
    SCOPED_TRACE(row.bytes);
    const CMConfigHandle handle = fromHex(row.bytes);
    EXPECT_EQ(handle.isNewFormat(), row.isNew);
    EXPECT_EQ(handle.isModelInherited(), row.inherited);
    EXPECT_EQ(handle.isTemporary(), row.temporary);
    EXPECT_EQ(handle.getType(), row.type);
    EXPECT_EQ(handle.getModelInheritedKind(), row.kind);
    EXPECT_EQ(hex(handle.getManagedSystemHandle()), row.system);
    EXPECT_EQ(hex(handle.getGroupRefId()), row.group);
    EXPECT_EQ(hex(handle.getResourceRefId()), row.resource);
  }
}

TEST(ConfigHandle, ComparisonsLookAtTheBytes) {
  const struct {
    const char *left, *right;
    int sign;
    bool equal;
  } cases[] = {
      {"0102030405060708", "0102030405060708", 0, true},
      {"0102030405060708", "0102030405060709", -1, false},
      {"FF00000000000501", "0100000000000501", 1, false},  // bytes are unsigned
      {"0100000000000501", "0100000000000601", 0, false},  // a shared zero byte ends it
  };
  for (const auto& row : cases) {
    const CMConfigHandle left = fromHex(row.left);
    const CMConfigHandle right = fromHex(row.right);
    const int order = left.compareTo(&right);
    EXPECT_EQ((order > 0) - (order < 0), row.sign) << row.left;
    EXPECT_EQ(left.isEqual(&right), row.equal) << row.left;
    EXPECT_EQ(left == right.getHandleBytes(), row.equal) << row.left;
    EXPECT_EQ(left != right.getHandleBytes(), !row.equal) << row.left;
  }
  const CMCollectable other;
  EXPECT_EQ(resource9.compareTo(&other), 1);
  EXPECT_FALSE(resource9.isEqual(&other));
  EXPECT_FALSE(resource9.isEqual(nullptr));
  EXPECT_TRUE(nothing == static_cast<const std::uint8_t*>(nullptr));
  EXPECT_EQ(std::unique_ptr<RWCollectable>(resource9.copy())->isA(), 0);
  EXPECT_EQ(fromHex("0102030405060708").hash(), 0x04030201u ^ 0x08070605u);
}

// The trace lines that `action` sends, without their heads ("TIME UNIT FUNCTION:LINE ").
template <typename Action>
std::string traced(const char* patterns, Action action) {
  const std::string file = testing::TempDir() + "orx_handle_trace.txt";
  (void)std::remove(file.c_str());
  trace_setting::configure(patterns, file);
  action();
  trace_setting::configure("", "");
  std::ifstream in(file);
  std::string text, time, unit, function, line;
  while (in >> time >> unit >> function && std::getline(in.ignore(), line)) text += line + '\n';
  return text;
}

TEST(ConfigHandle, DumpTellsWhatAHandleMeans) {
  const char* const open = "nobody=0x40";
  EXPECT_EQ(traced(open, [] { nothing.dump("label"); }), "");
  const std::string plain = traced(open, [] { CMConfigHandle(5, 0xFFFFFFFF).dump(); });
  EXPECT_TRUE(
      plain.starts_with("-----Dump of Handle=FFFFFFFF00000501------\n"
                        "  Format  = New\n"
                        "  Id      = -1(0xffffffff)\n"));
  EXPECT_EQ(plain.find("ResRefID"), std::string::npos);
  EXPECT_EQ(traced(open, [] { fromHex("090007000200A400").dump("parent"); }),
            "-----parent=090007000200A400------\n"
            "  Format  = Old\n"
            "  Id      = 458761(0x70009)\n"
            "  Type    = 4(0x4)\n"
            "  Temp    = False\n"
            "  ModelInh= True\n"
            "  MgSys   = 0200000000000201\n"
            "  ResRefID= 0900000000000601\n"
            "  TypeModelInh= Prototype inherited resource with PIRG as a parent\n"
            "-------------------------------------------\n");
}

TEST(ConfigHandle, ExportTellsTheTraceOfConvertedHandles) {
  const auto exportBoth = [] {
    (void)fromHex("0900000000002500").exportText();
    (void)fromHex("0900000000000500").exportText();
  };
  EXPECT_EQ(traced("exportChr=0x10", exportBoth),
            "Found an invalid handle to export - converted to <1;1;37;0;0;0;9;>\n");
  EXPECT_EQ(traced("exportChr=0x01", exportBoth), "");
}

}  // namespace
}  // namespace orx
