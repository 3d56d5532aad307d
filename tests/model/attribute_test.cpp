#include "model/attribute.h"

#include <gmock/gmock.h>

#include "model/attribute_iterator.h"
#include "tests/support/attributes.h"

namespace orx {
namespace {

using test::Values, test::valuesOf;

const auto make = test::makeAttribute;

TEST(Attribute, StoresValuesAndGrowsByItsRule) {
  const std::tuple<Values, Values, int> rows[] = {
      {{}, {}, 10},
      {{"abcdefgh"}, {"abcdefgh"}, 1},
      {{"abcdefghi"}, {"abcdefghi"}, 10},
      {{"123456789012345"}, {"123456789012345"}, 14},
      {{"abcdefgh", "123456789012"}, {"abcdefgh", "123456789012"}, 11},
      {Values(10), Values(10), 10},
      {{"a\tb", "x  ", "   ", std::string("a\0b", 3)}, {"a b", "x", "", "a"}, 1}};
  for (const auto& [added, stored, free] : rows) {
    const CMAttribute attribute = make(17, added);
    EXPECT_EQ(valuesOf(attribute), stored);
    EXPECT_EQ(attribute.storageFree(), free) << attribute.text();
  }
}

// "KEY[VALUE][VALUE]"
std::string described(const CMAttribute& attribute) {
  std::string text = std::to_string(attribute.key().number());
  for (const std::string& value : valuesOf(attribute)) text += "[" + value + "]";
  return text;
}

TEST(Attribute, ReadsItsTextForm) {
  const std::string longField(255, '0');
  const Values heads = {"12;0;0; -> 12", "12;0;2 -> 12", "12; -> 0", "12;5 -> 0", " -> 0"};
  const Values rows = {"6;0;1;a>b>>c; -> 6[a>b>c]",   "12;0;3;a;b -> 12[a]",
                       "7;0;2;;x; -> 7[][x]",         "7;0;1;;;x; -> 7[;x]",
                       "7;0;9;a;b;c; -> 7[a][b][c]",  "7;0;1;a;b;c; -> 7[a]",
                       "7;0;-1;a;b;c; -> 7[a][b][c]", " \t7;+0;1x;a ; -> 7[a]",
                       "65543;65536;1;a; -> 7[a]",    "-7;-1;1;a\tb; -> -4103[a b]"};
  const Values longRows = {"6;1;2;x;;y;z; -> 4102[x;y][z]", "4;1;3;a;;b; ;c>>; -> 4100[a;b][][c>]",
                           "7;0;2147483648;a;b;c -> 7[a][b]",
                           "7;0;99999999999999999999;a; -> 7[a]"};
  const Values longFields = {longField + ";0;1;a; -> 0[a]", longField + "0;0;1;a; -> 0",
                             "7;0;" + longField + "1;a; -> 7"};
  for (const Values& group : {heads, rows, longRows, longFields}) {
    for (const std::string& row : group) {
      const std::size_t arrow = row.find(" -> ");
      EXPECT_EQ(described(CMAttribute(row.substr(0, arrow), 1)), row.substr(arrow + 4)) << row;
    }
  }
  EXPECT_EQ(described(CMAttribute("6;1;2;x;;y;z;", 0)), "4102[x;;y][z]") << "nothing unescaped";
  EXPECT_EQ(described(CMAttribute("6;0;1;a>b>>c;", 0)), "6[a>b>>c]");
  EXPECT_EQ(described(CMAttribute(std::string_view("7;0;2;a;b\0c;", 12), 1)), "7[a]");
  EXPECT_EQ(CMAttribute(static_cast<const char*>(nullptr), 1).attrCount(), 0);
}

TEST(Attribute, WritesItsTextFormAndCutsItToTheBuffer) {
  const std::tuple<int, Values, std::string> rows[] = {
      {4100, {"a;b", "", "c>"}, "4;1;3;a;;b; ;c>>;"},
      {7, {"", "x"}, "7;0;2;;x;"},
      {7, {"a", "", "", "b"}, "7;0;4;a; ; ;b;"},
      {4096, {}, "0;1;0;"},
      {-134250496, {}, "0;32760;0;"},
      {134217729, {}, "1;-32768;0;"}};
  for (const auto& [key, values, text] : rows) {
    const CMAttribute attribute = make(key, values);
    EXPECT_EQ(attribute.text(), text);
    for (int size = 0; size < attribute.getCharAttributeSize() + 3; ++size) {
      std::string buffer(static_cast<std::size_t>(size) + 1, 'X');
      attribute.getCharAttribute(buffer.data(), size);
      const auto shown = size == 0 ? 0 : std::min(text.size(), buffer.size() - 2);
      EXPECT_EQ(buffer, text.substr(0, shown) + std::string(buffer.size() - 1 - shown, '\0') + 'X');
    }
  }
}

TEST(Attribute, SizeCountsTheMarksAndTheWidestHeader) {
  CMAttribute attribute = make(1, Values(12000));
  EXPECT_EQ(attribute.getCharAttributeSize(), 12000 + 12000 + 14);
  attribute.setKey(CMAttributeKey(-4095, -32767));
  EXPECT_EQ(attribute.getCharAttributeSize(), 19 + 12000 + 11999 + 1);
  EXPECT_GT(attribute.getCharAttributeSize(), static_cast<int>(attribute.text().size()));
}

TEST(Attribute, LongTextsOfAnyKindReadInOneWalk) {
  for (const std::string part : {"x;", "x", ">>;;"}) {
    std::string text = "1;0;2147483648;";
    while (text.size() < 2'000'000) text += part;
    const CMAttribute attribute(text, 1);
    EXPECT_TRUE(part != "x;" || attribute.attrCount() == static_cast<int>((text.size() - 15) / 2));
  }
}

TEST(Attribute, ReadsValuesAsNumbers) {
  const std::tuple<const char*, int, int> rows[] = {
      {"-12", -12, 1},       {"", 0, 1},    {"1-2", 1, 1}, {"--5", 0, 1},
      {"4294967291", -5, 1}, {"12a", 0, 0}, {" 7", 0, 0},  {"+7", 0, 0}};
  for (const auto& [value, number, numeric] : rows) {
    const CMAttribute attribute = make(1, {value});
    int isNumeric = -1;
    EXPECT_EQ(attribute.getValue(&isNumeric, 0), number) << value;
    EXPECT_EQ(isNumeric, numeric) << value;
    EXPECT_EQ(attribute.doesValueExist(number), numeric == 1) << value;
  }
  EXPECT_EQ(CMAttribute().getValue(nullptr, 0), 0);
  EXPECT_FALSE(CMAttribute().doesValueExist(0));
}

TEST(Attribute, ReadsValuesByIndexAndFindsThem) {
  const std::string longValue(150, 'v');
  const CMAttribute attribute = make(1, {"abc", "", longValue});
  const std::pair<int, std::string> rows[] = {
      {0, "abc"}, {1, ""}, {2, longValue}, {3, ""}, {-1, ""}};
  for (const auto& [index, value] : rows) {
    std::string read = "before";
    attribute.getValue3(read, index);
    EXPECT_EQ(read, value);
    EXPECT_EQ(attribute.getValueLength(index), static_cast<int>(value.size()) + 1);
    char buffer[3] = "XX";
    attribute.getValue2(buffer, 3, index);
    EXPECT_EQ(buffer, value.substr(0, 2));
  }
  EXPECT_TRUE(attribute.doesValueExist2("abc") && attribute.doesValueExist2(""));
  EXPECT_FALSE(attribute.doesValueExist2("ab") || attribute.isNull());
  EXPECT_TRUE(make(1, {"", " "}).isNull() && CMAttribute().isNull());
}

TEST(Attribute, KeepsHandlesInEitherForm) {
  CMAttribute attribute = make(84, {"<1;1;5;0;0;0;12;>"});
  attribute.setValue3(CMConfigHandle(5, 1));
  EXPECT_EQ(valuesOf(attribute)[1], "0100000000000501");
  CMConfigHandle out(9, 9);
  EXPECT_EQ(&attribute.getValue3(out, 0), &out);
  EXPECT_TRUE(out == CMConfigHandle(5, 12));
  EXPECT_TRUE(attribute.getValue3(out, 1) == CMConfigHandle(5, 1));
  EXPECT_TRUE(attribute.getValue3(out, 2).isNull());
  EXPECT_TRUE(attribute.doesHandleExist(CMConfigHandle(5, 12)));
  EXPECT_FALSE(attribute.doesHandleExist(CMConfigHandle(5, 2)));
  for (const std::size_t length : {47u, 48u}) {  // of which 47 characters are read
    const std::string padded = "<1;1;5;0;0;0;" + std::string(length - 17, '0') + "12;>";
    EXPECT_EQ(make(84, {padded}).getValue3(out, 0).isNull(), length == 48);
  }
}

TEST(Attribute, RemovesValuesByIndexAndIterator) {
  const std::pair<int, Values> rows[] = {
      {0, {"b", "c"}}, {1, {"a", "c"}}, {3, {"a", "b", "c"}}, {-1, {"a", "b", "c"}}};
  for (const auto& [index, left] : rows) {
    CMAttribute attribute = make(1, {"a", "b", "c"}), other = attribute;
    attribute.removeValue(index);
    EXPECT_EQ(attribute.storageFree(), 10 - 2 * static_cast<int>(left.size()));
    EXPECT_EQ(valuesOf(attribute), left);
    CMAttributeIterator value(other);
    EXPECT_EQ(value.set(index), index >= 0) << index;
    value.remove();
    EXPECT_TRUE(other == attribute) << index;
  }
}

TEST(AttributeIterator, Steps) {
  const CMAttribute attribute = make(1, {"a", "b", "c", "d"});
  CMAttributeIterator value(attribute);
  EXPECT_EQ((value++).value(), "b");
  EXPECT_EQ((value + 2).value(), "d");
  EXPECT_EQ((value + -1).value(), "a");
  EXPECT_TRUE((value + -2).done() && (value + 2147483647).done());
  EXPECT_TRUE(value == CMAttributeIterator(attribute) + 1);
  EXPECT_TRUE(value.set(1) && value.set(0) && value.set(4) && value.done());
  EXPECT_FALSE(value.next() || value.set(5) || value.set(-1));
}

TEST(AttributeIterator, EscapesWithinTheBuffer) {
  const CMAttribute attribute = make(1, {"a;>b"});
  const char* cuts[] = {"XXXXXXXXX", "", "a", "a", "a;;", "a;;", "a;;>>", "a;;>>b", "a;;>>b"};
  for (std::size_t size = 0; size < 9; ++size) {
    std::string buffer(9, 'X');
    CMAttributeIterator(attribute).getCharValue(buffer.data(), static_cast<int>(size));
    EXPECT_STREQ(buffer.c_str(), cuts[size]);
    EXPECT_EQ(buffer.substr(size), std::string(9 - size, 'X'));
  }
}

TEST(Attribute, CopiesCompareAndGiveTheirMemoryBack) {
  const auto before = CMMemoryManager::bytesInUse();
  {
    CMAttribute source = make(1, {"0123456789", "&"});
    CMAttribute copy(source);
    EXPECT_TRUE(copy == source && copy.storageFree() == source.storageFree() &&
                copy.symbolicRefs());
    EXPECT_EQ(CMMemoryManager::bytesInUse(), before + 40);
    copy.setValue(copy.values().begin().operator*().data());  // own storage, up to its NUL
    EXPECT_EQ(valuesOf(copy)[2], "0123456789 & ");
    copy = std::as_const(copy);
    EXPECT_EQ(copy.attrCount(), 3);
    copy = make(2, {"x"});
    EXPECT_EQ(valuesOf(copy), Values{"x"});
    EXPECT_EQ(CMMemoryManager::bytesInUse(), before + 20);
    source.clearValues();
    EXPECT_TRUE(source.storageFree() == 20 && !source.symbolicRefs());
    source.reset();
    EXPECT_EQ(CMMemoryManager::bytesInUse(), before);
    source.setValue("0123456789");
  }
  EXPECT_EQ(CMMemoryManager::bytesInUse(), before);
  EXPECT_TRUE(make(1, {"", ""}) == make(1, {" ", "  "}));
  EXPECT_FALSE(make(1, {"a", "b"}) == make(1, {"b", "a"}));
  EXPECT_FALSE(make(1, {}) == make(2, {}) || make(1, {""}) == make(1, {}));
}

}  // namespace
}  // namespace orx
