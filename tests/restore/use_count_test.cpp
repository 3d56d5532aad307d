// The use-count rebuild on small databases, through the keyed database alone.
#include <gmock/gmock.h>

#include "model/attribute_set.h"
#include "restore/exit_codes.h"
#include "restore/operations.h"
#include "restore/restore_settings.h"
#include "restore/use_count_types.h"
#include "tests/restore/merge_records.h"
#include "tests/support/program_runs.h"

namespace orx {
namespace {

using test::build, test::databaseRecords, test::handle, test::Opened, testing::ElementsAre;
using Records = std::vector<DataBuffer>;

constexpr std::int32_t resource = 4;        // a record type that can refer to a model
constexpr std::int32_t resourceModel = 12;  // and one of models

CMConfigHandle model(std::uint32_t id) {
  return CMConfigHandle(resourceModel, id);
}

DataBuffer modelRecord(std::uint32_t id, const std::string& text = "<17;0;1;9;>",
                       int type = resourceModel) {
  return build({.object = handle(type, id), .recType = type, .text = text});
}

DataBuffer reference(std::uint32_t id, const CMConfigHandle& to, std::int32_t recType = resource,
                     std::uint32_t recn = 0) {
  return build({.object = handle(4, id), .recn = recn, .recType = recType, .model = to});
}

// The attributes of a model that the resources with these identifiers refer to.
std::string usedBy(const std::vector<std::uint32_t>& ids) {
  std::vector<std::string> signatures;
  for (const std::uint32_t id : ids) signatures.push_back(test::handleValue(4, id));
  return test::attribute(17, {std::to_string(ids.size())}) + test::attribute(84, signatures);
}

class UseCountTest : public testing::Test {
 protected:
  UseCountTest() { restoreSettings().databaseName = "db"; }
  ~UseCountTest() override { restoreSettings() = {}; }

  static std::string run(int expected = exitSuccess) {
    return test::printed([expected] { EXPECT_EQ(useCount(), expected); });
  }

  // Rebuilds; the text of every model that has one, in key order.
  static std::vector<std::string> rebuiltTexts() {
    (void)run();
    std::vector<std::string> texts;
    for (const DataBuffer& record : databaseRecords()) {
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
  const std::string unused = "<17;0;1;0;>";
  DataBuffer withoutType = modelRecord(7, old, 9);
  withoutType.setRecType(-1);
  const std::tuple<const char*, Records, std::vector<std::string>> cases[] = {
      {"in key order, which is that of the handles' bytes",
       {modelRecord(7, old), reference(3, model(7)), reference(256, model(7)),
        reference(2, model(7), 64)},
       {"<3;0;1;a;;b;>" + usedBy({256, 2, 3})}},
      {"of every type that takes part",
       {modelRecord(7), reference(1, model(7), 1), reference(2, model(7), 2),
        reference(3, model(7), 3), reference(4, model(7), 4), reference(5, model(7), 5),
        reference(6, model(7), 6), reference(7, model(7), 7), reference(8, model(7), 64)},
       {usedBy({1, 2, 3, 4, 5, 6, 7, 8})}},
      {"one list number, and one identifier of models of every type",
       {modelRecord(7, old), modelRecord(39), modelRecord(7, "<17;0;0;>", 10),
        modelRecord(7, "<17;0;0;>", 11), modelRecord(7, "<17;0;0;>", 15), reference(1, model(39)),
        reference(2, handle(10, 7)), reference(3, handle(11, 7)), reference(4, handle(15, 7))},
       {usedBy({2}), usedBy({3}), "<3;0;1;a;;b;>" + unused, usedBy({4}), usedBy({1})}},
      {"an identifier beyond 2^31",
       {modelRecord(0xFFFFFFFF), reference(1, model(0xFFFFFFFF))},
       {usedBy({1})}},
      {"an identifier of 0 refers to nothing", {modelRecord(0), reference(1, model(0))}, {unused}},
      {"types that take no part",
       {modelRecord(7, old, 8), withoutType, modelRecord(7), reference(1, model(7), 0),
        reference(2, model(7), 26), reference(3, model(7), 255), reference(4, model(7), -1)},
       {old, old, unused}},
      {"only head records refer",
       {modelRecord(7), build({.object = handle(4, 1), .recType = resource}),
        reference(1, model(7), resource, 1)},
       {unused}},
      {"the first of two models with one handle takes the references",
       {modelRecord(7, "<3;0;1;no count;>"),
        build({model(1), model(7), 0, resourceModel, {}, 0, "<17;0;1;9;>"}),
        reference(1, model(7))},
       {"<3;0;1;no count;>", unused}},
      {"a model that refers to a model",
       {modelRecord(7), reference(5, model(7), 10)},
       {usedBy({5})}},
      {"without a use count the signatures stay",
       {modelRecord(7, "<84;0;1;x;>"), reference(1, model(7))},
       {"<84;0;1;x;>"}},
      {"of two attributes of one key the first stays",
       {modelRecord(7, "<17;0;1;4;><17;0;1;5;><84;0;1;x;><84;0;1;y;>")},
       {unused}}};
  for (const auto& [what, records, texts] : cases) {
    SCOPED_TRACE(what);
    test::createDatabase(records);
    EXPECT_EQ(rebuiltTexts(), texts);
    std::filesystem::remove("db");
  }
}

TEST_F(UseCountTest, KeepsAllOtherFieldsAndRecords) {
  DataBuffer head = build({handle(2, 1), model(7), 0, 12, model(5), -3, "<17;0;1;9;>", 4});
  const DataBuffer system = build({.text = "<9;0;1;5;>"});
  const DataBuffer other = reference(1, model(7));
  test::createDatabase({head, system, other});
  (void)run();
  head.setAttrText(usedBy({1}));
  EXPECT_THAT(databaseRecords(), ElementsAre(system, other, head));
  EXPECT_THAT(directory_.names(), ElementsAre("db", "db.orx-previous"));
}

TEST_F(UseCountTest, ChainsOfMoreThan256RecordsGrowAndShrink) {
  constexpr std::uint32_t references = 3000;
  Records all{modelRecord(6), modelRecord(7), modelRecord(8)};
  for (std::uint32_t id = 1; id <= references; ++id) all.push_back(reference(id, model(7)));
  test::createDatabase(all);
  const std::vector<std::string> grown = rebuiltTexts();
  ASSERT_EQ(grown.size(), 3U);
  CMAttributeSet attributes(grown[1].c_str(), 1);
  EXPECT_EQ(attributes.findAttrKey(84, 0)->attrCount(), static_cast<int>(references));
  EXPECT_EQ(rebuiltTexts(), grown) << "a second run";
  {
    const Opened database("db");
    for (std::size_t i = 3; i < all.size(); ++i) {
      ASSERT_EQ(kdb::DeleteByKey(database.handle, all[i].data(), 20), 0);
    }
    ASSERT_EQ(database.close(), "0/0");
  }
  EXPECT_THAT(rebuiltTexts(), ElementsAre("<17;0;1;0;>", "<17;0;1;0;>", "<17;0;1;0;>"));
  EXPECT_EQ(databaseRecords().size(), 3U);
}

TEST_F(UseCountTest, VerboseTellsOfEveryModel) {
  restoreSettings().verbose = 1;
  const DataBuffer head =
      build({{}, handle(resourceModel, 2), 0, resourceModel, {}, -3, "<17;0;1;9;>", 4});
  test::createDatabase(
      {head, modelRecord(3, "<84;0;1;x;>"), reference(1, model(2)), reference(5, model(3))});
  EXPECT_EQ(run(), test::verboseLines("verbose_use_count.txt"));
}

TEST_F(UseCountTest, NothingIsWrittenWithoutAModel) {
  const std::string start = "start to rebuild the use count for DB db\n";
  EXPECT_EQ(run(exitDatabaseNotOpened),
            start + "*Error: Unable to open key1 database db, RC=5(NotThere), RSN=28(NotFound)\n");
  for (const auto& records : {Records(), {reference(1, model(7))}}) {
    test::createDatabase(records);
    EXPECT_EQ(run(), start);
    EXPECT_THAT(directory_.names(), ElementsAre("db"));
    std::filesystem::remove("db");
  }
}

TEST_F(UseCountTest, DamagePublishesNothing) {
  const std::string damaged = test::writeDamagedDatabase("db");
  EXPECT_THAT(run(exitFailed),
              testing::HasSubstr("*Error: in read records error, RC=8(SystemError), RSN=17(Form"));
  EXPECT_TRUE(test::readFile("db") == damaged);
  EXPECT_THAT(directory_.names(), ElementsAre("db"));
}

}  // namespace
}  // namespace orx
