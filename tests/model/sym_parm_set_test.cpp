#include "model/sym_parm_set.h"

#include <gmock/gmock.h>

#include "model/attribute_set.h"
#include "tests/support/trace_capture.h"

namespace orx {
namespace {

using testing::ElementsAre;
using Rows = std::vector<std::string>;

CMAttribute make(int key, const std::string& value) {
  CMAttribute attribute{CMAttributeKey(key)};
  attribute.setValue(value);
  return attribute;
}

void read(CMSymParmSet& set, const std::string& text) {
  set = make(1, text);
}

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
    CMSymParmSet set, again;
    read(set, text);
    again = set.ConstructFromSymParmSet();
    EXPECT_EQ(rowsOf(set), parameters) << text;
    EXPECT_EQ(set.ConstructFromSymParmSet().text(), make(1, written).text()) << text;
    EXPECT_EQ(rowsOf(again), parameters) << text;
  }
}

TEST(SymParmSet, OnlyTheSystemParameterAttributeIsRead) {
  CMSymParmSet set;
  read(set, "KEPT=1,NODE_FILTER=*");
  EXPECT_EQ(set.at(1)->kind(), 4u);
  EXPECT_EQ(set.at(0)->kind(), 2u);
  EXPECT_EQ(set.at(0)->descriptionId(), 0u);
  EXPECT_EQ(set.at(2), nullptr);
  set = CMAttribute("2;0;1;A=1;", 1);
  set = CMAttributeSet("<2;0;1;A=1;><4097;0;1;B=1;>", 1);
  EXPECT_THAT(rowsOf(set), ElementsAre("KEPT=1|", "NODE_FILTER=*|"));
  set = CMAttributeSet("<9;0;1;1;><1;0;2;A=1;B=2;>", 1);
  EXPECT_THAT(rowsOf(set), ElementsAre("A=1|"));
  set = CMAttribute("1;0;0;", 1);
  EXPECT_EQ(set.entries(), 0u);
}

// Tells in which order a set is used.
struct LoggedSet : CMAttributeSet {
  using CMAttributeSet::CMAttributeSet;
  int beginAccess(int first, int second) const override {
    log += "begin" + std::to_string(first) + std::to_string(second);
    return 0;
  }
  void endAccess(int mode) const override { log += " end" + std::to_string(mode); }
  const CMAttribute* findAttrKey(const CMAttributeKey& key) const override {
    log += " find" + std::to_string(key.number());
    return CMAttributeSet::findAttrKey(key);
  }
  mutable std::string log;
};

TEST(SymParmSet, AnAttributeSetIsReadBetweenItsAccessHooks) {
  for (const char* text : {"<1;0;1;A=1;>", ""}) {
    const LoggedSet attributes(text, 1);
    CMSymParmSet set;
    set = attributes;
    EXPECT_EQ(attributes.log, "begin00 find1 end0") << text;
  }
}

TEST(SymParmSet, MergingKeepsWhatIsThere) {
  CMSymParmSet current, other;
  read(current, "A=9,B=2");
  read(other, "A=1,C=3=note");
  current.merge(other);
  EXPECT_THAT(rowsOf(current), ElementsAre("A=9|", "B=2|", "C=3|note"));
  EXPECT_THAT(rowsOf(other), ElementsAre("A=1|", "C=3|note"));
  current.merge(current);
  current.AssignCMSymParmSet(current);
  EXPECT_EQ(current.entries(), 3u);
  current.AssignCMSymParmSet(other);
  EXPECT_EQ(rowsOf(CMSymParmSet(current)), rowsOf(other));
}

TEST(SymParmSet, FindsTakesOutAndRefuses) {
  CMSymParmSet set;
  read(set, "A=1,B=2,C=3");
  EXPECT_EQ(set.findSymbolName1("B"), set.findSymbolName2("B"));
  EXPECT_EQ(set.findSymbolName1("b"), nullptr);
  auto taken = set.remove(*set.findSymbolName2("B"));
  EXPECT_EQ(set.findSymbolName2("B"), nullptr);
  EXPECT_EQ(set.remove(*taken), nullptr);
  EXPECT_EQ(set.insertUniqueParm(taken), 1);
  EXPECT_EQ(taken, nullptr);
  auto twin = std::make_unique<CMSymParm>("B", "other", 2, 0, nullptr);
  EXPECT_EQ(set.insertUniqueParm(twin), 0);
  EXPECT_NE(twin, nullptr);
  EXPECT_THAT(rowsOf(set), ElementsAre("A=1|", "C=3|", "B=2|"));
  EXPECT_THAT(captureTrace("none=1", [&set] { set.dump(); }),
              ElementsAre("SymParm Name is [A], value is [1]", "SymParm Name is [C], value is [3]",
                          "SymParm Name is [B], value is [2]"));
}

Rows resolved(const CMSymParmSet& set, const Rows& values, int key = 4100) {
  CMAttribute attribute{CMAttributeKey(key)};
  for (const std::string& value : values) attribute.setValue(value);
  const auto result = set.resolveSymbols(&attribute);
  EXPECT_EQ(result->key().number(), key);
  const auto range = result->values();
  return {range.begin(), range.end()};
}

TEST(SymParmSet, ResolvesEachValueAgainstTheSetAsItIs) {
  CMSymParmSet set;
  read(set, "A=1,B=&A.x,C=&B.&A");
  EXPECT_THAT(resolved(set, {"&C", "plain", "", "&B,&B", "&A<"}),
              ElementsAre("1x1", "plain", "", "1x,1x", "1<"));
  EXPECT_THAT(rowsOf(set), ElementsAre("A=1|", "B=&A.x|", "C=&B.&A|"));
  EXPECT_EQ(set.resolveSymbols(nullptr), nullptr);
  // Resolving "&A" leaves "12&A" in A; with that, "&B" would be "212&A" afterwards.
  read(set, "A=1&B,B=2&A");
  EXPECT_THAT(resolved(set, {"x&A", {"x&B"}, "x&A"}), ElementsAre("x12&A", "x21&B", "x12&A"));
}

// In UTF-8 mode a value of more than 255 bytes is left out.
TEST(SymParmSet, DescriptionsAloneAreResolvedAsUtf8) {
  const std::string value(256, 'v');
  CMSymParmSet set;
  read(set, "L=" + value);
  for (const int key : {6, 8190}) EXPECT_THAT(resolved(set, {"x&L"}, key), ElementsAre("x")) << key;
  for (const int key : {1, 4100})
    EXPECT_THAT(resolved(set, {"x&L"}, key), ElementsAre("x" + value)) << key;
}

}  // namespace
}  // namespace orx
