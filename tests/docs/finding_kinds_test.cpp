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

TEST(JsonDocument, ListsEveryKindOfFinding) {
  std::istringstream document(test::readFile(test::sourceDirectory() / "docs/json.md"));
  std::string listed;
  for (std::string line; std::getline(document, line);) {
    if (line.starts_with("| `")) listed += line + "\n";
  }
  std::string rows;
  for (const orxkdb::FindingKindText& kind : orxkdb::findingKinds) {
    rows += "| `" + std::string(kind.name) + "` | " + kind.meaning() + " |\n";
  }
  EXPECT_EQ(listed, rows);
}

TEST(Operations, SayWhatToDoAboutEveryKindOfFinding) {
  const std::string document = test::readFile(test::sourceDirectory() / "docs/operations.md");
  const std::size_t table = document.find("| kind | what to do |");
  ASSERT_NE(table, std::string::npos);
  const std::string rows = document.substr(table, document.find("\n\n", table) - table);
  for (const orxkdb::FindingKindText& kind : orxkdb::findingKinds) {
    EXPECT_NE(rows.find("`" + std::string(kind.name) + "`"), std::string::npos) << kind.name;
  }
}

}  // namespace
}  // namespace orx
