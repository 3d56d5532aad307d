#include "model/attribute.h"

#include <gmock/gmock.h>

#include "model/attribute_iterator.h"
#include "tests/support/attributes.h"
#include "tests/support/trace_capture.h"

namespace orx {
namespace {

using test::Values, test::valuesOf, testing::ElementsAre;

const auto make = test::makeAttribute;

std::vector<std::string> printed(const CMAttribute& attribute) {
  auto lines = captureTrace("none=0x40", [&] { attribute.print(); });
  lines.erase(lines.begin());  // the address
  return lines;
}

TEST(AttributeKey, SplitsAndJoinsItsNumber) {
  const std::tuple<short, short, int, int, int> rows[] = {{4, 1, 4100, 4, 1},
                                                          {0, 1, 4096, 0, 1},
                                                          {5, -1, -4091, -4091, 0},
                                                          {-1, -1, -4097, -1, -1},
                                                          {32767, 32767, 134246399, 4095, 32774}};
  for (const auto& [attrId, attrGroup, number, idBack, groupBack] : rows) {
    const CMAttributeKey key(attrId, attrGroup);
    EXPECT_EQ(key, CMAttributeKey(number));
    EXPECT_EQ(key.attrId(), idBack) << number;
    EXPECT_EQ(key.attrGroup(), groupBack) << number;
  }
}

TEST(Attribute, StoresValuesAndGrowsByItsRule) {
  const std::tuple<Values, std::string, int, int> rows[] = {
      {{}, "", 0, 10},
      {{"abcdefgh"}, "abcdefgh\t", 0, 1},
      {{"abcdefghi"}, "abcdefghi\t", 20, 10},
      {{"123456789012345"}, "123456789012345\t", 30, 14},
      {{"abcdefgh", ""}, "abcdefgh\t\t", 20, 10},
      {{"abcdefgh", "123456789012"}, "abcdefgh\t123456789012\t", 33, 11},
      {{"", "", "", "", "", "", "", "", "", ""}, std::string(10, '\t'), 20, 10},
      {{"x  "}, "x\t", 0, 8},
      {{"a\tb"}, "a b\t", 0, 6},
      {{"a \t  ", "   "}, "a  \t\t", 0, 5},
      {{std::string("a\0b", 3)}, "a\t", 0, 8}};
  for (const auto& [added, stored, allocated, free] : rows) {
    EXPECT_THAT(printed(make(17, added)),
                ElementsAre("Key           = 17", "Value         ='" + stored + "'",
                            "Allocated     = " + std::to_string(allocated),
                            "AttrCount     = " + std::to_string(added.size()),
                            "StorageFree   = " + std::to_string(free),
                            "NextAvail     = " + std::to_string(stored.size()),
                            "SizeOfCharAttr= -1", "SymbolicRefs  = No"));
  }
}

TEST(Attribute, PrintsKeysCachedSizeAndSymbolicReferences) {
  CMAttribute attribute = make(4100, {"&X", "a"});
  EXPECT_EQ(attribute.getCharAttributeSize(), 5 + 2 + 14);
  EXPECT_EQ(printed(attribute)[0], "Key           = 4100 (4 + 4096)");
  EXPECT_EQ(printed(attribute)[6], "SizeOfCharAttr= 21");
  EXPECT_EQ(printed(attribute)[7], "SymbolicRefs  = Yes");
  attribute.removeValue(0);
  EXPECT_EQ(printed(attribute)[1], "Value         ='a\t'");
  EXPECT_TRUE(attribute.symbolicRefs());
  attribute.clearValues();
  EXPECT_FALSE(attribute.symbolicRefs());
  attribute.setKey(CMAttributeKey(4096));
  EXPECT_EQ(printed(attribute)[0], "Key           = 4096");
  attribute.setValue(static_cast<const char*>(nullptr));
  EXPECT_EQ(printed(attribute)[1], "Value         ='\t'");
  const auto detail = captureTrace("setValue=1", [&] { attribute.setValue("v"); });
  EXPECT_EQ(detail.size(), 9u);
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
      const CMAttribute attribute(std::string_view(row).substr(0, arrow), 1);
      EXPECT_EQ(described(attribute), row.substr(arrow + 4)) << row;
      EXPECT_EQ(attribute.attrCount(), static_cast<int>(valuesOf(attribute).size())) << row;
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
  for (const std::string part : {"x;", "x", ";", ">", ">>;;", "<1;0;"}) {
    std::string text = "1;0;2147483648;";
    while (text.size() < 2'000'000) text += part;
    const CMAttribute attribute(text, 1);
    EXPECT_TRUE(part != "x;" || attribute.attrCount() == static_cast<int>((text.size() - 15) / 2));
    EXPECT_TRUE(CMAttribute(attribute.text(), 1).key() == attribute.key()) << part;
  }
}

TEST(Attribute, ReadsValuesAsNumbers) {
  const Values numeric = {"-12 -> -12",       " -> 0",
                          "1-2 -> 1",         "--5 -> 0",
                          "4294967291 -> -5", "0000000000000000012abc -> 12"};
  const Values others = {"12a -> 0", " 7 -> 0", "+7 -> 0"};
  int isNumeric = -1;
  for (const Values& rows : {numeric, others}) {
    for (const std::string& row : rows) {
      const std::size_t arrow = row.find(" -> ");
      const CMAttribute attribute = make(1, {row.substr(0, arrow)});
      EXPECT_EQ(attribute.getValue(&isNumeric, 0), std::stoi(row.substr(arrow + 4))) << row;
      EXPECT_EQ(isNumeric, rows == numeric ? 1 : 0) << row;
      EXPECT_EQ(attribute.doesValueExist(attribute.getValue(nullptr, 0)), rows == numeric) << row;
    }
  }
  EXPECT_EQ(CMAttribute().getValue(&isNumeric, 0), 0);
  EXPECT_EQ(isNumeric, 0);
  EXPECT_FALSE(CMAttribute().doesValueExist(0));
}

TEST(Attribute, ReadsValuesByIndexAndFindsThem) {
  const std::string longValue(150, 'v');
  const CMAttribute attribute = make(1, {"abc", "", longValue});
  const std::pair<int, std::string> rows[] = {{0, "abc"}, {1, ""},  {2, longValue},
                                              {3, ""},    {-1, ""}, {-2147483647 - 1, ""}};
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
  EXPECT_FALSE(attribute.doesValueExist2("ab") || attribute.doesValueExist2(nullptr));
  EXPECT_FALSE(attribute.isNull());
  EXPECT_TRUE(make(1, {"", " "}).isNull() && CMAttribute().isNull());
}

TEST(Attribute, KeepsHandlesInEitherForm) {
  const CMConfigHandle handle(5, 1);
  CMAttribute attribute(84, 0);
  attribute.setValue3(handle);
  attribute.setValue("<1;1;5;0;0;0;12;>");
  EXPECT_EQ(valuesOf(attribute)[0], "0100000000000501");
  CMConfigHandle out(9, 9);
  EXPECT_EQ(&attribute.getValue3(out, 0), &out);
  EXPECT_TRUE(out == handle);
  EXPECT_TRUE(attribute.getValue3(out, 1) == CMConfigHandle(5, 12));
  EXPECT_TRUE(attribute.getValue3(out, 2).isNull());
  EXPECT_TRUE(attribute.doesHandleExist(CMConfigHandle(5, 12)));
  EXPECT_FALSE(attribute.doesHandleExist(CMConfigHandle(5, 2)));
  for (const std::size_t length : {47u, 48u}) {  // of which 47 characters are read
    const std::string padded = "<1;1;5;0;0;0;" + std::string(length - 17, '0') + "12;>";
    EXPECT_EQ(make(84, {padded}).getValue3(out, 0),
              CMConfigHandle(length == 47 ? 5 : 0, length == 47 ? 12 : 0));
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
  CMAttribute attribute = make(1, {"a"});
  CMAttributeIterator value(attribute);
  CMAttributeIterator(std::as_const(attribute)).remove();
  EXPECT_EQ(attribute.attrCount(), 1);
  attribute.clearValues();
  EXPECT_TRUE(value.done() && !value.next());
}

TEST(AttributeIterator, Steps) {
  const CMAttribute attribute = make(1, {"a", "b", "c", "d"});
  CMAttributeIterator value(attribute);
  EXPECT_EQ((value++).value(), "b");
  EXPECT_EQ((value + 2).value(), "d");
  EXPECT_EQ((value + -1).value(), "a");
  EXPECT_TRUE((value + -2).done() && (value + 2147483647).done());
  EXPECT_TRUE(value == CMAttributeIterator(attribute) + 1);
  EXPECT_FALSE(value == CMAttributeIterator(make(1, {"a", "b"})) + 1);
  EXPECT_TRUE(value.set(1) && value.set(0) && value.set(4) && value.done());
  EXPECT_FALSE(value.next() || value.set(5) || value.set(-1));
}

TEST(Attribute, TracesWhatIsRead) {
  const CMAttribute attribute = make(1, {"a;b"});
  const CMAttributeIterator value(attribute);
  char buffer[20];
  std::string text;
  CMConfigHandle handle;
  const std::string symbols = "SymbolicRefs  = No";  // the last line of nine
  const std::tuple<const char*, std::function<void()>, std::size_t, std::string> rows[] = {
      {"getValue2", [&] { attribute.getValue2(buffer, 20, 0); }, 9, symbols},
      {"getValue3", [&] { attribute.getValue3(handle, 0); }, 9, symbols},
      {"getValue3", [&] { attribute.getValue3(text, 0); }, 1, "Value='a;b'"},
      {"getValue", [&] { attribute.getValue(nullptr, 0); }, 10, "Value='a;b'"},
      {"getValue", [&] { value.getValue(buffer, 20); }, 1, "Value='a;b'"},
      {"getCharValue", [&] { value.getCharValue(buffer, 20); }, 1, "Value='a;;b'"}};
  for (const auto& [function, action, count, last] : rows) {
    const auto lines = captureTrace(std::string(function) + "=1", action);
    ASSERT_EQ(lines.size(), count) << function << last;
    EXPECT_EQ(lines.back(), last) << function;
    EXPECT_THAT(captureTrace("*=0xBE", action), ElementsAre()) << function;
  }
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
    EXPECT_EQ(CMMemoryManager::bytesInUse(), before + 20);
    CMAttribute copy(source);
    EXPECT_TRUE(copy == source && copy.storageFree() == source.storageFree() &&
                copy.symbolicRefs());
    EXPECT_EQ(CMMemoryManager::bytesInUse(), before + 40);
    copy.setValue(copy.values().begin().operator*().data());  // own storage, up to its NUL
    EXPECT_EQ(valuesOf(copy)[2], "0123456789 & ");
    const CMAttribute& self = copy;
    copy = self;
    EXPECT_EQ(copy.attrCount(), 3);
    EXPECT_FALSE(copy == source);
    copy = make(2, {"x"});
    EXPECT_EQ(valuesOf(copy), Values{"x"});
    EXPECT_EQ(printed(copy)[2], "Allocated     = 10");
    EXPECT_EQ(printed(copy)[6], "SizeOfCharAttr= -1");
    EXPECT_EQ(source.getCharAttributeSize(), 29);
    EXPECT_EQ(printed(CMAttribute(source))[2], "Allocated     = 20");
    EXPECT_EQ(printed(CMAttribute(source))[6], "SizeOfCharAttr= 29");
    EXPECT_EQ(CMMemoryManager::bytesInUse(), before + 20);
    source.clearValues();
    EXPECT_EQ(source.storageFree(), 20);
    source.reset();
    EXPECT_EQ(source.storageFree(), 10);
    EXPECT_EQ(CMMemoryManager::bytesInUse(), before);
    source.setValue("0123456789");
  }
  EXPECT_EQ(CMMemoryManager::bytesInUse(), before);
  EXPECT_TRUE(make(1, {"", ""}) == make(1, {" ", "  "}));
  EXPECT_FALSE(make(1, {"a", "b"}) == make(1, {"b", "a"}));
  EXPECT_FALSE(make(1, {}) == make(2, {}));
  EXPECT_FALSE(make(1, {""}) == make(1, {}));
}

TEST(Attribute, KnowsTheDescriptionAttributes) {
  int count = 0;
  const int* keys = CMAttribute::getUTF8DescAttrID(&count);
  EXPECT_EQ(std::vector<int>(keys, keys + count),
            (std::vector<int>{6,    7,    13,   46,   96,   103,  6105, 6107, 6109, 6110, 6138,
                              6142, 6148, 6174, 7230, 7373, 7391, 7598, 7651, 8174, 8190}));
  int known = 0;
  for (int key = -9000; key < 9000; ++key) known += CMAttribute::isUTF8DescAttr(key) ? 1 : 0;
  EXPECT_EQ(known, count);
}

}  // namespace
}  // namespace orx
