#include "model/sym_parm.h"

#include <gtest/gtest.h>

#include <memory>
#include <sstream>
#include <string>

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
  const CMCollectable other;
  EXPECT_FALSE(cut.isEqual(&other));
  EXPECT_FALSE(cut.isEqual(nullptr));
  EXPECT_EQ(cut.isA(), 32766);
  const std::unique_ptr<CMCollectable> plain(cut.copy());
  EXPECT_EQ(plain->isA(), 0);
}

TEST(SymParm, ValuesTakeTheMemoryTheyNeed) {
  const auto before = CMMemoryManager::bytesInUse();
  {
    CMSymParm parameter = make("A", std::string(12, 'v'));
    const struct {
      const char* value;
      std::size_t size;
      std::uint32_t counted;
    } steps[] = {{"twelve chars", 13, 0},    {"thirteen char", 14, 14}, {"short", 14, 14},
                 {"fourteen chars", 15, 15}, {nullptr, 13, 0},          {"", 13, 0}};
    for (const auto& step : steps) {
      parameter.setValue(step.value);
      EXPECT_EQ(parameter.value(), step.value == nullptr ? "" : step.value);
      EXPECT_EQ(parameter.valueSize(), step.size) << parameter.value();
      EXPECT_EQ(CMMemoryManager::bytesInUse() - before, step.counted) << parameter.value();
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
  const CMSymParm other = make("NODE_FILTER", "", 3);
  EXPECT_EQ(other.kind(), 3u);
  EXPECT_FALSE(other.isProductOptionVarName());
  EXPECT_FALSE(make("node_filter", "").isProductOptionVarName());
  EXPECT_TRUE(make("ANY", "", 4).isProductOptionVarName());
}

TEST(SymParm, DescriptionsAreStandardOrFree) {
  const std::uint32_t resources[] = {0, 4331726, 4331727, 4331728, 4331729, 4331730, 0};
  for (std::uint32_t id = 0; id < 7; ++id) {
    EXPECT_EQ(CMSymParm("A", "", 2, id, nullptr).getDescriptionResid(), resources[id]) << id;
  }
  const CMSymParm copy(CMSymParm("A", "", 9, 5, "free text"));
  EXPECT_EQ(copy.description(), "free text");
  EXPECT_EQ(copy.kind(), 9u);
  EXPECT_EQ(copy.descriptionId(), 5u);
}

}  // namespace
}  // namespace orx
