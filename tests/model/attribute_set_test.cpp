#include "model/attribute_set.h"

#include <gtest/gtest.h>

#include <memory>
#include <optional>

#include "model/attribute_set_iterator.h"
#include "model/written_text.h"

namespace orx {
namespace {

TEST(AttributeSet, ReadsItsTextUpToTheFirstFault) {
  const std::pair<const char*, std::string> rows[] = {
      {"<1;0;1;A=1;><84;0;1;3;>", "<1;0;1;A=1;><84;0;1;3;>"},
      {"<84;0;1;3;><4;1;0;><-3;0;0;><1;0;1;A;>", "<-3;0;0;><1;0;1;A;><84;0;1;3;><4;1;0;>"},
      {"<9;0;1;b;><1;0;0;><9;0;1;a;>", "<1;0;0;><9;0;1;b;><9;0;1;a;>"},
      {"<6;0;1;a>>b;>", "<6;0;1;a>>b;>"},
      {"<6;0;1;a>>>;>", "<6;0;0;>"},
      {"<6;0;1;a;>>;>", "<6;0;1;a;>"},
      {"<1;0;1;x;", ""},
      {"<1;0;1;x;>><2;0;0;>", "<1;0;1;x;>"},
      {"<><<1;0;0;><3", "<0;0;0;><0;0;0;>"},
      {" <1;0;1;x;>", ""},
      {"", ""},
      {nullptr, ""}};
  for (const auto& [text, kept] : rows) EXPECT_EQ(CMAttributeSet(text, 1).text(), kept);
  const CMAttributeSet literal("<6;0;1;a>>b;;;>", 0);
  EXPECT_EQ(literal.getFirst()->text(), "6;0;1;a>>>>b;;;;;");
  CMAttributeSet copy(literal);  // unescapes whatever its source does
  copy = "<6;0;1;a>>b;>";
  EXPECT_EQ(copy.text(), "<6;0;1;a>>b;>");
}

TEST(AttributeSet, LooksUpByKey) {
  CMAttributeSet set("<1;0;1;A=1;><84;0;1;3;><4;1;1;x;><84;0;1;4;>", 1);
  CMAttribute* counter = set.findAttrKey(CMAttributeKey(84));
  ASSERT_NE(counter, nullptr);
  EXPECT_EQ(counter, set.findAttrKey(65536 + 84, -65536));
  EXPECT_EQ(counter, std::as_const(set).findAttrKey(CMAttributeKey(84)));
  EXPECT_EQ(set.findAttrKey(short{4}, short{1})->text(), "4;1;1;x;");
  EXPECT_EQ(set.findAttrKey(85, 0), nullptr);
  EXPECT_EQ(set.getAttributeValue(CMAttributeKey(84)), "3");
  EXPECT_EQ(set.getAttributeValue(CMAttributeKey(85)), "");
  EXPECT_EQ(set.getNumericAttributeValue(CMAttributeKey(84)), 3);
  EXPECT_EQ(set.getNumericAttributeValue(CMAttributeKey(1)), 0);
  counter->clearValues();
  counter->setValue(5);
  EXPECT_EQ(set.text(), "<1;0;1;A=1;><84;0;1;5;><84;0;1;4;><4;1;1;x;>");
}

TEST(AttributeSet, OwnsWhatItTakesAndNothingElse) {
  const auto before = CMMemoryManager::bytesInUse();
  {
    CMAttributeSet set("<2;0;1;this value is long;>", 1);
    auto refused = std::make_unique<CMAttribute>(short{2}, short{0});
    EXPECT_FALSE(set.insertIfUnique(refused.get()) || set.insertIfUnique(nullptr));
    EXPECT_TRUE(set.insertIfUnique(new CMAttribute("1;0;1;another long value;", 1)));
    CMAttributeSet other("<1;0;1;1;><2;0;1;2;><2;0;1;3;><3;0;0;>", 1);
    set.copyInto(other);
    EXPECT_EQ(set.text(), "<1;0;1;another long value;><2;0;1;this value is long;><3;0;0;>");
    set.copyInto(set);
    set = std::as_const(set);
    EXPECT_EQ(set.entries(), 3u);
    const CMAttribute probe(2, 0);
    const std::unique_ptr<RWCollectable> detached(set.remove(&probe));
    set.removeAndDestroy(set.findAttrKey(1, 0));
    EXPECT_EQ(set.text(), "<3;0;0;>");
    set = other;
    EXPECT_EQ(set.text(), "<1;0;1;1;><2;0;1;2;><3;0;0;>");
    EXPECT_EQ(CMAttributeSet(other).text(), set.text());
    set.insert(new CMConfigHandle(5, 1));  // no attribute: neither met nor written, but destroyed
    EXPECT_EQ(CMAttributeSet(set).entries(), 3u);
    set = "<1;0;1;<9;;0;;2;;x;;y;;>>;>";
    set = set.findAttrKey(1, 0)->values().begin().operator*().data();
    EXPECT_EQ(set.text(), "<9;0;2;x;y;>");
    set = static_cast<const char*>(nullptr);
    EXPECT_TRUE(set.isEmpty() && !other.isEmpty());
  }
  EXPECT_EQ(CMMemoryManager::bytesInUse(), before);
}

TEST(AttributeSet, ComparesByKeyAndValues) {
  const std::tuple<const char*, const char*, bool> rows[] = {
      {"<1;0;1;a;><2;0;0;>", "<2;0;0;><1;0;1;a;>", true},
      {"<1;0;1;a;>", "<1;0;1;a;><2;0;0;>", false},
      {"<1;0;1;a;><2;0;0;>", "<1;0;1;a;><3;0;0;>", false},
      {"<1;0;1;a;>", "<1;0;1;b;>", false}};
  for (const auto& [left, right, equal] : rows) {
    EXPECT_EQ(CMAttributeSet(left, 1) == CMAttributeSet(right, 1), equal) << left;
  }
}

TEST(AttributeSet, IsCutToTheBuffer) {
  const std::string text = "<1;0;2;a>>;;b; ;><4095;0;1;&x;><84;1;0;>";
  const CMAttributeSet set(text.c_str(), 1);
  EXPECT_GT(set.getCharAttributeSize(), static_cast<int>(text.size()));
  for (std::size_t cut = 0; cut <= text.size(); ++cut) {
    std::string buffer(cut + 2, 'X');
    set.getCharAttribute(buffer.data(), static_cast<int>(cut) + 1);
    EXPECT_EQ(buffer, text.substr(0, cut) + '\0' + 'X');
  }
}

TEST(AttributeSet, HoldsManyAttributesOfAnyKeys) {
  std::string same, ascending;
  for (int i = 0; i < 60'000; ++i) {
    same += "<1;0;1;" + std::to_string(i) + ";>";
    ascending += "<" + std::to_string(i % 4096) + ";" + std::to_string(i / 4096) + ";1;v;>";
  }
  EXPECT_TRUE(CMAttributeSet(same.c_str(), 1).text() == same);
  EXPECT_TRUE(CMAttributeSet(ascending.c_str(), 1).text() == ascending);
}

struct HookCounter : CMAttributeSet {
  using CMAttributeSet::operator=;
  int beginIteration(int mode, int) const override { return begun += mode + 1; }
  void endIteration(int mode) const override { ended += mode + 1; }
  mutable int begun = 0, ended = 0;
};

TEST(AttributeSetIterator, WalksInKeyOrderBetweenTheHooks) {
  HookCounter set;
  set = "<3;0;0;><1;0;0;><2;0;0;>";
  std::string keys;
  {
    CMAttributeSetIterator next(set, 4);
    while (CMAttribute* attribute = next()) {
      keys += std::to_string(attribute->key().number());
      if (attribute->key().number() == 2) set.removeAndDestroy(attribute);
    }
    EXPECT_TRUE(set.begun == 5 && set.ended == 0);
  }
  EXPECT_EQ(keys, "123");
  EXPECT_EQ(set.ended, 5);
}

std::optional<std::size_t> sizeOf(const std::string& text) {
  return sizeOfWrittenText(text, [](int) { return true; });
}

// What is said of a text must be what reading and writing it gives.
void expectTrue(const std::string& text) {
  const auto size = sizeOf(text);
  if (!size) return;
  const CMAttributeSet set(text.c_str(), 1);
  EXPECT_EQ(set.text(), text);
  EXPECT_EQ(static_cast<std::size_t>(set.getCharAttributeSize()), *size) << text;
}

TEST(WrittenText, KnowsTheFormThatASetWrites) {
  for (const char* text : {"", "<1;0;1;a;>", "<0;1;2; a;b c;><4095;7;1;x;>", "<84;0;3;<1;2&;3;>",
                           "<9;0;12;1;2;3;4;5;6;7;8;9;10;11;12;>"}) {
    EXPECT_TRUE(sizeOf(text)) << text;
    expectTrue(text);
  }
  EXPECT_FALSE(sizeOf("<1;0;1;a;><1;0;1;b;>"));
  const char* const text = "<84;0;1;a;><2801;1;1;b;>";
  EXPECT_TRUE(sizeOfWrittenText(text, [](int key) { return key == 84 || key == 6897; }));
  EXPECT_FALSE(sizeOfWrittenText(text, [](int key) { return key != 6897; }));
}

// Each byte of a text becomes another, is lost or doubled: numbers out of form, counts that do not
// fit, keys out of order or twice, empty values, blanks, marks.
TEST(WrittenText, IsNeverWrongAboutATextThatASetWouldChange) {
  const std::string text = "<2;0;2;ab;c d;><1801;1;1; e;><4000;7;10;0;1;2;3;4;5;6;7;8;9;>";
  ASSERT_TRUE(sizeOf(text));
  for (std::size_t at = 0; at < text.size(); ++at) {
    for (const char c : std::string(" ;<>\t-+0189a\0", 13)) {
      std::string changed = text;
      changed[at] = c;
      expectTrue(changed);
      expectTrue(std::string(text).insert(at, 1, c));
    }
    expectTrue(std::string(text).erase(at, 1));
    expectTrue(text.substr(0, at));
  }
}

}  // namespace
}  // namespace orx
