#include "model/sym_parm.h"

#include <gtest/gtest.h>

#include <sstream>

namespace orx {
namespace {

CMSymParm make(const std::string& name, const std::string& value, std::uint32_t kind = 2) {
  return {name.c_str(), value.c_str(), kind, 0, nullptr};
}

TEST(SymParm, NamesAreCutAndDecideEquality) {
  const CMSymParm cut = make(std::string(60, 'n'), "1");
  EXPECT_EQ(cut.name(), std::string(48, 'n'));
  EXPECT_EQ(make(std::string(48, 'n'), "2").name(), std::string(48, 'n'));
  EXPECT_TRUE(cut == make(std::string(48, 'n'), "2", 7));
  EXPECT_FALSE(cut == make(std::string(47, 'n'), "1"));
  EXPECT_FALSE(make("a", "") == make("A", ""));
  const CMSymParm twin(cut);
  EXPECT_TRUE(cut.isEqual(&twin));
  const CMCollectable other;
  EXPECT_FALSE(cut.isEqual(&other) || cut.isEqual(nullptr));
}

TEST(SymParm, ValuesTakeTheMemoryTheyNeed) {
  const auto before = CMMemoryManager::bytesInUse();
  {
    CMSymParm parameter = make("A", std::string(12, 'v'));
    const std::tuple<const char*, std::size_t, std::uint32_t> steps[] = {
        {"twelve chars", 13, 0},    {"thirteen char", 14, 14}, {"short", 14, 14},
        {"fourteen chars", 15, 15}, {nullptr, 13, 0},          {"", 13, 0}};
    for (const auto& [value, size, counted] : steps) {
      parameter.setValue(value);
      EXPECT_EQ(parameter.value(), value == nullptr ? "" : value);
      EXPECT_EQ(parameter.valueSize(), size) << parameter.value();
      EXPECT_EQ(CMMemoryManager::bytesInUse() - before, counted) << parameter.value();
    }
    parameter.setValue("a value of some length");
    parameter.setValue(parameter.value().data() + 2);
    EXPECT_EQ(parameter.value(), "value of some length");
    parameter.setValue("short");
    EXPECT_EQ(CMSymParm(parameter).valueSize(), 13u);
    EXPECT_EQ(parameter.valueSize(), 23u);
  }
  EXPECT_EQ(CMMemoryManager::bytesInUse(), before);
}

TEST(SymParm, ProductOptionsAreRecognisedInTextsAlone) {
  std::istringstream options(
      "UNIQSYS DISCLITE AutoDiscover ORX_AGENT_RETRY ORX_LONG_RUNNING LIMIT_RG_SIZE NODE_FILTER "
      "SEPARATE_RG_BY_PREFIX ORX_COPY_PROTO_SEMANTICS ORX_DROPDOWN_SOURCE ORX_RESOURCE_VALID "
      "QUEUE_MANAGER_FILTER LQDELPURGE");
  for (std::string option; options >> option;) EXPECT_EQ(make(option, "").kind(), 4u) << option;
  EXPECT_FALSE(make("NODE_FILTER", "", 3).isProductOptionVarName());
  EXPECT_FALSE(make("node_filter", "").isProductOptionVarName());
  EXPECT_TRUE(make("ANY", "", 4).isProductOptionVarName());
}

TEST(SymParm, DescriptionsAreStandardOrFree) {
  for (std::uint32_t id = 0; id < 7; ++id) {
    const std::uint32_t resource = id >= 1 && id <= 5 ? 4331725 + id : 0;
    EXPECT_EQ(CMSymParm("A", "", 2, id, nullptr).getDescriptionResid(), resource) << id;
  }
  const CMSymParm copy(CMSymParm("A", "", 9, 5, "free text"));
  EXPECT_EQ(copy.description(), "free text");
  EXPECT_EQ(copy.kind(), 9u);
  EXPECT_EQ(copy.descriptionId(), 5u);
}

}  // namespace
}  // namespace orx
