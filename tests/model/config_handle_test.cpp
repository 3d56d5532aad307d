#include "model/config_handle.h"

#include <gmock/gmock.h>

#include "tests/support/trace_capture.h"

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

using testing::ElementsAre;

const CMConfigHandle system2(2, 0x30002);
const CMConfigHandle group70000(3, 70000);
const CMConfigHandle resource9(4, 9);
const CMConfigHandle nothing;

TEST(ConfigHandle, ConstructorsAndFactoriesBuildTheirLayout) {
  const std::pair<CMConfigHandle, const char*> cases[] = {
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
      {CMConfigHandle::createPrototypeInheritedGroupHandle(system2, group70000),
       "0000701102006300"},
      {CMConfigHandle::createPrototypeInheritedResourceHandle(system2, group70000, resource9),
       "090070110200A400"}};
  for (const auto& [handle, expected] : cases) EXPECT_EQ(hex(handle), expected);
  CMConfigHandle handle(5, 1);
  handle.set(group70000.getHandleBytes());
  EXPECT_EQ(hex(handle), "7011010000000301");
  handle.set(nullptr);
  EXPECT_TRUE(handle.isNull());
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
  const std::tuple<const char*, const char*, int, bool> cases[] = {
      {"0102030405060708", "0102030405060708", 0, true},
      {"0102030405060708", "0102030405060709", -1, false},
      {"FF00000000000501", "0100000000000501", 1, false},  // bytes are unsigned
      {"0100000000000501", "0100000000000601", 0, false},  // a shared zero byte ends it
  };
  for (const auto& [leftHex, rightHex, sign, equal] : cases) {
    const CMConfigHandle left = fromHex(leftHex), right = fromHex(rightHex);
    const int order = left.compareTo(&right);
    EXPECT_EQ((order > 0) - (order < 0), sign) << leftHex;
    EXPECT_EQ(left.isEqual(&right), equal) << leftHex;
    EXPECT_EQ(left == right.getHandleBytes(), equal) << leftHex;
    EXPECT_EQ(left != right.getHandleBytes(), !equal) << leftHex;
  }
  const CMCollectable other;
  EXPECT_EQ(resource9.compareTo(&other), 1);
  EXPECT_FALSE(resource9.isEqual(&other) || resource9.isEqual(nullptr));
  EXPECT_TRUE(nothing == static_cast<const std::uint8_t*>(nullptr));
  EXPECT_EQ(fromHex("0102030405060708").hash(), 0x04030201u ^ 0x08070605u);
}

TEST(ConfigHandle, DumpTellsWhatAHandleMeans) {
  EXPECT_THAT(captureTrace("none=0x40", [] { nothing.dump("label"); }), ElementsAre());
  EXPECT_THAT(captureTrace("none=0x40", [] { CMConfigHandle(5, 0xFFFFFFFF).dump(); }),
              ElementsAre("-----Dump of Handle=FFFFFFFF00000501------", "  Format  = New",
                          "  Id      = -1(0xffffffff)", "  Type    = 5(0x5)", "  Temp    = False",
                          "  ModelInh= False", "  MgSys   = 0000000000000000",
                          "  TypeModelInh= Not Model Inherited",
                          "-------------------------------------------"));
  EXPECT_THAT(captureTrace("none=0x40", [] { fromHex("090007000200A400").dump("parent"); }),
              ElementsAre("-----parent=090007000200A400------", "  Format  = Old",
                          "  Id      = 458761(0x70009)", "  Type    = 4(0x4)", "  Temp    = False",
                          "  ModelInh= True", "  MgSys   = 0200000000000201",
                          "  ResRefID= 0900000000000601",
                          "  TypeModelInh= Prototype inherited resource with PIRG as a parent",
                          "-------------------------------------------"));
  const std::pair<const char*, const char*> lines[] = {
      {"0700000000000511", "  Temp    = True"},
      {"0000070002006300", "  TypeModelInh= Prototype inherited resource group"},
      {"7011010009002400",
       "  TypeModelInh= Prototype inherited resource with normal resource group as a parent"}};
  for (const auto& [bytes, line] : lines) {
    EXPECT_THAT(captureTrace("none=1", [bytes = bytes] { fromHex(bytes).dump(); }),
                testing::Contains(line));
  }
}

TEST(ConfigHandle, ExportTellsTheTraceOfConvertedHandles) {
  const auto exportBoth = [] {
    (void)fromHex("0900000000002500").exportText();
    (void)fromHex("0900000000000500").exportText();
  };
  EXPECT_THAT(captureTrace("exportChr=0x10", exportBoth),
              ElementsAre("Found an invalid handle to export - converted to <1;1;37;0;0;0;9;>"));
  EXPECT_THAT(captureTrace("exportChr=0x01", exportBoth), ElementsAre());
}

}  // namespace
}  // namespace orx
