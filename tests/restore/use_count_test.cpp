// The use-count rebuild on small databases, through the keyed database alone.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/resource.h>

#include <string>
#include <vector>

#include "model/attribute_set.h"
#include "records/data_buffer.h"
#include "restore/exit_codes.h"
#include "restore/operations.h"
#include "restore/restore_settings.h"
#include "restore/use_count_types.h"
#include "tests/support/kdb_records.h"
#include "tests/support/temp_dir.h"
#include "tests/support/trace_capture.h"

namespace orx {
namespace {

using test::Opened;
using testing::ElementsAre;
using testing::internal::CaptureStdout;
using testing::internal::GetCapturedStdout;

constexpr std::int32_t resource = 4;        // a record type that can refer to a model
constexpr std::int32_t resourceModel = 12;  // and one of models

CMConfigHandle handle(std::int32_t type, std::uint32_t id) {
  return CMConfigHandle(static_cast<CMHandleType>(type), id);
}

CMConfigHandle model(std::uint32_t id) {
  return handle(resourceModel, id);
}

DataBuffer recordOf(std::int32_t recType, const CMConfigHandle& object, std::string_view text = "",
                    std::uint32_t recn = 0) {
  DataBuffer record;
  record.setRecType(recType);
  record.setObjectHandle(object);
  record.setRecn(recn);
  record.setAttrText(text);
  return record;
}

DataBuffer modelRecord(std::uint32_t id, std::string_view text = "<17;0;1;9;>") {
  return recordOf(resourceModel, model(id), text);
}

DataBuffer reference(std::uint32_t id, const CMConfigHandle& to, std::int32_t recType = resource,
                     std::uint32_t recn = 0) {
  DataBuffer record = recordOf(recType, handle(4, id), "", recn);
  record.setModelHandle(to);
  return record;
}

DataBuffer below(const CMConfigHandle& parent, DataBuffer record) {
  record.setParentHandle(parent);
  return record;
}

class UseCountTest : public testing::Test {
 protected:
  void SetUp() override { restoreSettings().databaseName = "db"; }
  void TearDown() override { restoreSettings() = RestoreSettings(); }

  static void create(const std::vector<DataBuffer>& records) {
    const Opened database("db", kdb::openAsNew);
    for (const DataBuffer& record : records) {
      ASSERT_EQ(kdb::AddRecord(database.handle, record.data(), 20, record.data(), 296), 0);
    }
    ASSERT_EQ(database.close(), "0/0");
  }

  std::string run(int expected = exitSuccess) {
    CaptureStdout();
    const int result = useCount();
    std::string output = GetCapturedStdout();
    EXPECT_EQ(result, expected) << output;
    return output;
  }

  static std::vector<DataBuffer> records() {
    std::vector<DataBuffer> found;
    const Opened database("db", kdb::openForReading);
    const kdb::kdbHandle cursor = database.cursor();
    DataBuffer record;
    std::int32_t length = 0;
    while (kdb::ReadNextFromCursor(cursor, 0, record.data(), 296, length) == 0) {
      found.push_back(record);
    }
    return found;
  }

  // The text of every model that has one, in key order.
  static std::vector<std::string> modelTexts() {
    std::vector<std::string> texts;
    for (const DataBuffer& record : records()) {
      if (!isModel(record.recType())) continue;
      if (record.recn() == 0) texts.emplace_back();
      texts.back() += record.text();
    }
    std::erase(texts, "");
    return texts;
  }

  test::TempDir directory_;
  test::WorkingDirectory inDirectory_{directory_.path()};
};

TEST_F(UseCountTest, RebuildsCountAndSignatures) {
  const std::string old = "<3;0;1;a;;b;><17;0;2;9;8;><84;0;1;<1;;1;;4;;0;;0;;0;;99;;>>;>";
  const struct {
    const char* what;
    std::vector<DataBuffer> records;
    std::vector<std::string> texts;
  } cases[] = {
      {"in key order, which is that of the handles' bytes",
       {modelRecord(7, old), reference(3, model(7)), reference(256, model(7)),
        reference(2, model(7), 64)},
       {"<3;0;1;a;;b;><17;0;1;3;><84;0;3;<1;;1;;4;;0;;0;;0;;256;;>>;<1;;1;;4;;0;;0;;0;;2;;>>;"
        "<1;;1;;4;;0;;0;;0;;3;;>>;>"}},
      {"nothing refers to it", {modelRecord(7, old)}, {"<3;0;1;a;;b;><17;0;1;0;>"}},
      {"one list number, and one identifier of two types",
       {modelRecord(7), modelRecord(39), recordOf(11, handle(11, 7), "<17;0;0;>"),
        reference(1, model(39)), reference(2, handle(11, 7))},
       {"<17;0;1;1;><84;0;1;<1;;1;;4;;0;;0;;0;;2;;>>;>", "<17;0;1;0;>",
        "<17;0;1;1;><84;0;1;<1;;1;;4;;0;;0;;0;;1;;>>;>"}},
      {"an identifier beyond 2^31",
       {modelRecord(0xFFFFFFFF), reference(1, model(0xFFFFFFFF))},
       {"<17;0;1;1;><84;0;1;<1;;1;;4;;0;;0;;0;;1;;>>;>"}},
      {"an identifier of 0 refers to nothing",
       {modelRecord(0), reference(1, model(0))},
       {"<17;0;1;0;>"}},
      {"types that take no part",
       {recordOf(8, handle(8, 7), old), recordOf(-1, handle(9, 7), old), modelRecord(7),
        reference(1, model(7), 0), reference(2, model(7), 26), reference(3, model(7), 255),
        reference(4, model(7), -1)},
       {old, old, "<17;0;1;0;>"}},
      {"only head records refer",
       {modelRecord(7), recordOf(resource, handle(4, 1)), reference(1, model(7), resource, 1)},
       {"<17;0;1;0;>"}},
      {"the first of two models with one handle takes the references",
       {modelRecord(7, "<3;0;1;no count;>"), below(model(1), modelRecord(7)),
        reference(1, model(7))},
       {"<3;0;1;no count;>", "<17;0;1;0;>"}},
      {"a model that refers to a model",
       {modelRecord(7), reference(5, model(7), 10)},
       {"<17;0;1;1;><84;0;1;<1;;1;;4;;0;;0;;0;;5;;>>;>"}},
      {"without a use count the signatures stay",
       {modelRecord(7, "<84;0;1;x;>"), reference(1, model(7))},
       {"<84;0;1;x;>"}},
      {"of two attributes of one key the first stays",
       {modelRecord(7, "<17;0;1;4;><17;0;1;5;><84;0;1;x;><84;0;1;y;>")},
       {"<17;0;1;0;>"}},
  };
  for (const auto& expected : cases) {
    SCOPED_TRACE(expected.what);
    create(expected.records);
    (void)run();
    EXPECT_EQ(modelTexts(), expected.texts);
    std::filesystem::remove("db");
  }
}

TEST_F(UseCountTest, KeepsAllOtherFieldsAndRecords) {
  DataBuffer head = below(handle(2, 1), modelRecord(7));
  head.setModelHandle(model(5));
  head.setAuxValue1(-3);
  head.setAuxValue2(4);
  const DataBuffer system = recordOf(0, CMConfigHandle(), "<9;0;1;5;>");
  const DataBuffer other = reference(1, model(7));
  create({head, system, other});
  (void)run();
  head.setAttrText("<17;0;1;1;><84;0;1;<1;;1;;4;;0;;0;;0;;1;;>>;>");
  EXPECT_THAT(records(), ElementsAre(system, other, head));
  EXPECT_THAT(directory_.names(), ElementsAre("db", "db.orx-previous"));
}

TEST_F(UseCountTest, ChainsOfMoreThan256RecordsGrowAndShrink) {
  constexpr std::uint32_t references = 3000;
  std::vector<DataBuffer> all{modelRecord(6), modelRecord(7), modelRecord(8)};
  for (std::uint32_t id = 1; id <= references; ++id) all.push_back(reference(id, model(7)));
  create(all);
  (void)run();
  const std::vector<std::string> grown = modelTexts();
  ASSERT_EQ(grown.size(), 3U);
  CMAttributeSet attributes(grown[1].c_str(), 1);
  EXPECT_EQ(attributes.findAttrKey(84, 0)->attrCount(), static_cast<int>(references));
  EXPECT_EQ(attributes.getNumericAttributeValue(CMAttributeKey(17)), static_cast<int>(references));
  EXPECT_GT(records().size(), all.size() + 300);

  (void)run();
  EXPECT_EQ(modelTexts(), grown) << "a second run";

  {
    const Opened database("db");
    for (std::size_t i = 3; i < all.size(); ++i) {
      ASSERT_EQ(kdb::DeleteByKey(database.handle, all[i].data(), 20), 0);
    }
    ASSERT_EQ(database.close(), "0/0");
  }
  (void)run();
  EXPECT_THAT(modelTexts(), ElementsAre("<17;0;1;0;>", "<17;0;1;0;>", "<17;0;1;0;>"));
  EXPECT_EQ(records().size(), 3U);
}

// Walking the references of the list for each of its models would take a billion steps.
TEST_F(UseCountTest, OneModelsReferencesCostTheOthersNothing) {
  constexpr std::uint32_t references = 100000;
  constexpr std::uint32_t models = 10000;
  {
    const Opened database("db", kdb::openAsNew);
    const auto add = [&](const DataBuffer& record) {
      ASSERT_EQ(kdb::AddRecord(database.handle, record.data(), 20, record.data(), 296), 0);
    };
    for (std::uint32_t i = 1; i <= references; ++i) add(reference(i, model(32 * models)));
    for (std::uint32_t i = 1; i <= models; ++i) add(modelRecord(32 * i));
    ASSERT_EQ(database.close(), "0/0");
  }
  (void)run();
  int counted = 0;
  for (const std::string& text : modelTexts()) {
    counted += CMAttributeSet(text.c_str(), 1).getNumericAttributeValue(CMAttributeKey(17));
  }
  EXPECT_EQ(counted, static_cast<int>(references));
}

TEST_F(UseCountTest, VerboseTellsOfEveryModel) {
  restoreSettings().verbose = 1;
  DataBuffer head = modelRecord(2, "<17;0;1;9;>");
  head.setAuxValue1(-3);
  head.setAuxValue2(4);
  create({head, modelRecord(3, "<84;0;1;x;>"), reference(1, model(2)), reference(5, model(3))});
  const std::string output = run();

  std::string expected = "start to rebuild the use count for DB db\n";
  for (int lists = 0; lists < 2; ++lists) {
    for (int i = 0; i < 32; ++i) {
      const std::string number = (i < 10 ? "0" : "") + std::to_string(i);
      expected += "list No." + number + " has " + (i == 2 || i == 3 ? "1" : "0") + " entries.\n";
      expected += "finish sorting for list No." + number + "\n";
    }
  }
  const std::string rule(71, '+');
  expected += "model handler: 0\nmodel handler: 0\n";
  expected +=
      "next in list: data.recn=0, attribute: '<17;0;1;9;>'\n"
      "model handler: 2\n"
      "found one: <1;1;4;0;0;0;1;>\n"
      "old UseCount=9, new UseCount=1, Signatures: '84;0;1;<1;;1;;4;;0;;0;;0;;1;;>>;'\n" +
      rule +
      "\n<1;1;0;0;0;0;0;>\n<1;1;12;0;0;0;2;>\n12\n<1;1;0;0;0;0;0;>\n-3\n"
      "<17;0;1;1;><84;0;1;<1;;1;;4;;0;;0;;0;;1;;>>;>\n4\n" +
      rule + "\nmodel handler: 2\n";
  expected +=
      "next in list: data.recn=0, attribute: '<84;0;1;x;>'\n"
      "model handler: 3\n"
      "found one: <1;1;4;0;0;0;5;>\n" +
      rule + "\n<1;1;0;0;0;0;0;>\n<1;1;12;0;0;0;3;>\n12\n<1;1;0;0;0;0;0;>\n0\n<84;0;1;x;>\n0\n" +
      rule + "\n";
  for (int i = 3; i < 32; ++i) expected += "model handler: 3\n";
  EXPECT_EQ(output, expected);
}

TEST_F(UseCountTest, TheTraceNamesLookUpsAndTexts) {
  create({modelRecord(2, "<17;0;1;9;><84;0;1;x;>")});
  const struct {
    const char* patterns;
    std::size_t lines;
  } cases[] = {{"findAttrKey4=0x40", 2 * 2},
               {"getCharAttribute=0x40", 2 * 2},  // of the set and of its one attribute
               {"getCharAttribute=0x01", 9}};     // that attribute, printed
  for (const auto& expected : cases) {
    EXPECT_EQ(captureTrace(expected.patterns, [this] { (void)run(); }).size(), expected.lines)
        << expected.patterns;
  }
}

TEST_F(UseCountTest, NothingIsWrittenWithoutAModel) {
  for (const auto& records : {std::vector<DataBuffer>(), {reference(1, model(7))}}) {
    create(records);
    EXPECT_EQ(run(), "start to rebuild the use count for DB db\n");
    EXPECT_THAT(directory_.names(), ElementsAre("db"));
    std::filesystem::remove("db");
  }
}

TEST_F(UseCountTest, AMissingDatabaseEndsWith5) {
  EXPECT_EQ(run(exitDatabaseNotOpened),
            "start to rebuild the use count for DB db\n"
            "*Error: Unable to open key1 database db, RC=5(NotThere), RSN=28(NotFound)\n");
}

class UseCountFailureTest : public UseCountTest {
 protected:
  // More than the database writes at a time.
  static constexpr std::uint32_t models = 1500;

  void SetUp() override {
    UseCountTest::SetUp();
    std::vector<DataBuffer> all;
    for (std::uint32_t id = 1; id <= models; ++id) all.push_back(modelRecord(id));
    create(all);
  }

  // Runs and expects a failure whose output has `line` and which leaves the file as it was.
  void expectFailure(const char* line) {
    const std::string before = test::readFile("db");
    EXPECT_THAT(run(exitFailed), testing::HasSubstr(line));
    EXPECT_TRUE(test::readFile("db") == before);
    EXPECT_THAT(directory_.names(), ElementsAre("db"));
  }
};

TEST_F(UseCountFailureTest, DamageEndsTheReading) {
  std::string bytes = test::readFile("db");
  for (std::size_t page = 2 * 4096; page < bytes.size(); page += 4096) {
    if (bytes[page + 10] == 2) bytes[page + 10] = 0;  // the page is no leaf any more
  }
  test::writeFile("db", bytes);
  expectFailure("*Error: in read records error, RC=8(SystemError), RSN=17(Format)\n");
}

TEST_F(UseCountFailureTest, WithoutSpaceNothingIsPublished) {
  struct rlimit before {};
  ASSERT_EQ(::getrlimit(RLIMIT_FSIZE, &before), 0);
  struct rlimit small = before;
  small.rlim_cur = 8192;
  ASSERT_EQ(::setrlimit(RLIMIT_FSIZE, &small), 0);
  expectFailure("*Error: in CloseDatabase, RC=7(Shortage), RSN=40(Space)\n");
  ASSERT_EQ(::setrlimit(RLIMIT_FSIZE, &before), 0);
}

}  // namespace
}  // namespace orx
