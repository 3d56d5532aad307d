// docs/json.md lists the kinds of findings, whose names scripts look for.
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

}  // namespace
}  // namespace orx
