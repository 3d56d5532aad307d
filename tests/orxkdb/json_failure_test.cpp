// What a script gets that asked for JSON, when a subcommand fails.
#include <gmock/gmock.h>

#include <nlohmann/json.hpp>

#include "orxkdb/exit_codes.h"
#include "tests/support/program_runs.h"
#include "tests/support/small_fleet.h"

namespace orx::orxkdb {
namespace {

using Json = nlohmann::ordered_json;

TEST(JsonFailure, IsOneDocumentWithCodeTextAndHint) {
  const test::TempDir scratch;
  test::makeDatabase(scratch.file("db"), test::smallFleet());
  test::writeFile(scratch / "notes", "no dump\n");
  std::filesystem::copy_file(scratch / "notes", scratch / "db.orx-previous");
  const struct {
    std::vector<std::string> words;
    ExitCode code;
  } cases[] = {
      {{"create", "db"}, exitNotOpened},
      {{"dump", "none", "file"}, exitNotOpened},
      {{"dump", "db", "-"}, exitUsage},
      {{"dump", "db", "db"}, exitNotAsExpected},
      {{"load", "new", "notes"}, exitNotAsExpected},
      {{"backup", "db", "-"}, exitUsage},
      {{"check", "none"}, exitNotOpened},
      {{"explain", "db", "5:5"}, exitNotAsExpected},
      {{"diff", "db"}, exitNotAsExpected},
      {{"plan", "db", "none"}, exitNotOpened},
      {{"load", "--replace", "db", "db.orx-previous"}, exitNotAsExpected},
      {{"messages", "none"}, exitNotOpened},
      {{"messages", ""}, exitNotOpened},
      {{"undo", "db"}, exitNotOpened},
      {{"report", "db", "--html", "-"}, exitUsage},
      {{"stat", "none"}, exitNotOpened},
      {{"sample"}, exitUsage},
      {{"nonsense"}, exitUsage},
  };
  for (const auto& row : cases) {
    std::vector<std::string> words = row.words;
    words.emplace_back("--json");
    SCOPED_TRACE(testing::PrintToString(words));
    const auto result = test::runIn(scratch, "orxkdb", words);
    const Json json = Json::parse(result.output, nullptr, false);
    ASSERT_TRUE(json.is_object()) << result.output;
    EXPECT_EQ(json["format"], "orxkdb-failure");
    EXPECT_EQ(json["code"], row.code);
    EXPECT_EQ(result.exitCode, row.code);
    const std::string hint = json["hint"];
    EXPECT_NE(hint, "");
    EXPECT_EQ(result.errors, "orxkdb: " + std::string(json["text"]) + ", " + hint + "\n");
  }
}

}  // namespace
}  // namespace orx::orxkdb
