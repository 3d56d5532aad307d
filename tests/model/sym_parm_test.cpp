#include "model/sym_parm_set.h"

#include <gmock/gmock.h>

#include "model/attribute_set.h"
#include "tests/support/attributes.h"

namespace orx {
namespace {

using testing::ElementsAre;
using Rows = std::vector<std::string>;

CMSymParm make(const std::string& name, const std::string& value, std::uint32_t kind = 2) {
  return {name.c_str(), value.c_str(), kind, 0, nullptr};
}

TEST(SymParm, NamesAreCutAndDecideEqualityAndKind) {
  const CMSymParm cut = make(std::string(60, 'n'), "1");
  EXPECT_EQ(cut.name(), std::string(48, 'n'));
  EXPECT_TRUE(cut == make(std::string(48, 'n'), "2", 7));
  EXPECT_FALSE(cut == make(std::string(47, 'n'), "1") || make("a", "") == make("A", ""));
  EXPECT_EQ(make("NODE_FILTER", "").kind(), 4u);
  EXPECT_FALSE(make("NODE_FILTER", "", 3).isProductOptionVarName());
  EXPECT_FALSE(make("node_filter", "").isProductOptionVarName());
  EXPECT_TRUE(make("ANY", "", 4).isProductOptionVarName());
}

TEST(SymParm, ValuesOfAnyLengthReplaceEachOther) {
  const auto before = CMMemoryManager::bytesInUse();
  {
    CMSymParm parameter = make("A", std::string(12, 'v'));
    for (const char* value :
         {"thirteen char", "short", "a value of some length", "", "fourteen chars"}) {
      parameter.setValue(value);
      EXPECT_EQ(parameter.value(), value);
    }
    parameter.setValue(parameter.value().data() + 2);
    EXPECT_EQ(parameter.value(), "urteen chars");
    parameter.setValue(nullptr);
    EXPECT_EQ(parameter.value(), "");
  }
  EXPECT_EQ(CMMemoryManager::bytesInUse(), before);
}

const auto setOf = test::parametersOf;

// NAME=VALUE|DESCRIPTION of each parameter.
Rows rowsOf(const CMSymParmSet& set) {
  Rows rows;
  for (std::size_t i = 0; i < set.entries(); ++i) {
    const CMSymParm& parameter = *set.at(i);
    rows.push_back(std::string(parameter.name()) + '=' + std::string(parameter.value()) + '|' +
                   parameter.description());
  }
  return rows;
}

TEST(SymParmSet, ReadsAndWritesItsText) {
  const std::tuple<const char*, Rows, const char*> cases[] = {
      {"A=1,B=2", {"A=1|", "B=2|"}, "A=1,B=2"},
      {"A= 1 =  note", {"A=1|note"}, "A=1= note"},
      {"A=p==q", {"A=p=q|"}, "A=p==q"},
      {"A=1,,,B=2", {"A=1,|", "B=2|"}, "A=1,,,B=2"},
      {",A=1", {}, ""},
      {"A=1,B=2,,", {"A=1|", "B=2,|"}, "A=1,B=2,,"},
      {"A", {"A=|"}, "A="},
      {"=1,B=2", {"B=2|"}, "B=2"},
      {"A=1,A=2", {"A=1|"}, "A=1"},
      {" A =1", {" A =1|"}, " A =1"},
      {"A=1=d=more", {"A=1|d"}, "A=1= d"},
      {"A=== b,,", {"A==b,|"}, "A===b,,"},
      {"A= ,B=x,,y= temp", {"A=|", "B=x,y|temp"}, "A= ,B=x,,y= temp"}};
  for (const auto& [text, parameters, written] : cases) {
    const CMSymParmSet set = setOf(text);
    EXPECT_EQ(rowsOf(set), parameters) << text;
    EXPECT_TRUE(set.ConstructFromSymParmSet() == test::makeAttribute(1, {written})) << text;
    EXPECT_EQ(rowsOf(setOf(written)), parameters) << text;
  }
}

TEST(SymParmSet, OnlyTheSystemParameterAttributeIsRead) {
  CMSymParmSet set = setOf("KEPT=1,NODE_FILTER=*");
  EXPECT_EQ(set.at(1)->kind(), 4u);
  set = CMAttribute("2;0;1;A=1;", 1);
  set = CMAttributeSet("<2;0;1;A=1;><4097;0;1;B=1;>", 1);
  EXPECT_THAT(rowsOf(set), ElementsAre("KEPT=1|", "NODE_FILTER=*|"));
  set = CMAttributeSet("<9;0;1;1;><1;0;2;A=1;B=2;>", 1);
  EXPECT_THAT(rowsOf(set), ElementsAre("A=1|"));
  set = CMAttribute("1;0;0;", 1);
  EXPECT_EQ(set.entries(), 0u);
}

TEST(SymParmSet, MergingKeepsWhatIsThere) {
  CMSymParmSet current = setOf("A=9,B=2");
  const CMSymParmSet other = setOf("A=1,C=3=note");
  current.merge(other);
  current.merge(current);
  EXPECT_THAT(rowsOf(current), ElementsAre("A=9|", "B=2|", "C=3|note"));
  current.AssignCMSymParmSet(other);
  EXPECT_EQ(rowsOf(CMSymParmSet(current)), rowsOf(other));
}

TEST(SymParmSet, FindsTakesOutAndRefuses) {
  CMSymParmSet set = setOf("A=1,B=2,C=3");
  EXPECT_EQ(set.findSymbolName1("B"), set.findSymbolName2("B"));
  EXPECT_EQ(set.findSymbolName1("b"), nullptr);
  auto taken = set.remove(*set.findSymbolName2("B"));
  EXPECT_EQ(set.findSymbolName2("B"), nullptr);
  EXPECT_EQ(set.remove(*taken), nullptr);
  EXPECT_EQ(set.insertUniqueParm(taken), 1);
  auto twin = std::make_unique<CMSymParm>("B", "other", 2, 0, nullptr);
  EXPECT_EQ(set.insertUniqueParm(twin), 0);
  EXPECT_TRUE(taken == nullptr && twin != nullptr);
  EXPECT_THAT(rowsOf(set), ElementsAre("A=1|", "C=3|", "B=2|"));
}

Rows resolved(const CMSymParmSet& set, const Rows& values, int key = 4100) {
  const CMAttribute attribute = test::makeAttribute(key, values);
  const auto result = set.resolveSymbols(&attribute);
  EXPECT_EQ(result->key().number(), key);
  return test::valuesOf(*result);
}

TEST(SymParmSet, ResolvesEachValueAgainstTheSetAsItIs) {
  CMSymParmSet set = setOf("A=1,B=&A.x,C=&B.&A");
  EXPECT_THAT(resolved(set, {"&C", "plain", "", "&B,&B", "&A<"}),
              ElementsAre("1x1", "plain", "", "1x,1x", "1<"));
  EXPECT_THAT(rowsOf(set), ElementsAre("A=1|", "B=&A.x|", "C=&B.&A|"));
  EXPECT_EQ(set.resolveSymbols(nullptr), nullptr);
  // Resolving "&A" leaves "12&A" in A; with that, "&B" would be "212&A" afterwards.
  set = test::makeAttribute(1, {"A=1&B,B=2&A"});
  EXPECT_THAT(resolved(set, {"x&A", {"x&B"}, "x&A"}), ElementsAre("x12&A", "x21&B", "x12&A"));
}

// In UTF-8 mode a value of more than 255 bytes is left out.
TEST(SymParmSet, DescriptionsAloneAreResolvedAsUtf8) {
  const std::string value(256, 'v');
  const CMSymParmSet set = setOf("L=" + value);
  for (const int key : {6, 8190, 1, 4100}) {
    const bool isDescription = key == 6 || key == 8190;
    EXPECT_THAT(resolved(set, {"x&L"}, key), ElementsAre(isDescription ? "x" : "x" + value)) << key;
  }
}

}  // namespace
}  // namespace orx
