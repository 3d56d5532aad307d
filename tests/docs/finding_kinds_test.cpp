// The kinds of findings in docs/json.md, whose names scripts look for, and in docs/operations.md,
// which says what to do about each.
#include <gtest/gtest.h>

#include <sstream>
#include <string>

#include "orxkdb/check/findings.h"
#include "tests/support/places.h"
#include "tests/support/temp_dir.h"

namespace orx {
namespace {

TEST(FindingKinds, AreListedWithTheirMeaningsAndWhatToDo) {
  const auto document = [](const char* name) {
    return test::readFile(test::sourceDirectory() / "docs" / name);
  };
  std::istringstream lines(document("json.md"));
  std::string listed, rows;
  for (std::string line; std::getline(lines, line);) {
    if (line.starts_with("| `")) listed += line + "\n";
  }
  const std::string operations = document("operations.md");
  const std::size_t table = operations.find("| kind | what to do |");
  ASSERT_NE(table, std::string::npos);
  const std::string cures = operations.substr(table, operations.find("\n\n", table) - table);
  for (const orxkdb::FindingKindText& kind : orxkdb::findingKinds) {
    rows += "| `" + std::string(kind.name) + "` | " + kind.meaning() + " |\n";
    EXPECT_NE(cures.find("`" + std::string(kind.name) + "`"), std::string::npos) << kind.name;
  }
  EXPECT_EQ(listed, rows);
}

}  // namespace
}  // namespace orx
