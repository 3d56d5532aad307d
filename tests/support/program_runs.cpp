#include "tests/support/program_runs.h"

#include <nlohmann/json.hpp>

namespace orx::test {

namespace {

nlohmann::json memberAt(const nlohmann::json& json, std::string path) {
  const bool isCount = path.ends_with('#');
  if (isCount) path.pop_back();
  const nlohmann::json::json_pointer pointer(path);
  if (!json.contains(pointer)) return {};
  return isCount ? nlohmann::json(json[pointer].size()) : json[pointer];
}

}  // namespace

void expectJson(const std::string& text, const char* expected) {
  const auto json = nlohmann::json::parse(text);
  const auto members = nlohmann::json::parse(expected);
  for (const auto& [path, value] : members.items()) EXPECT_EQ(memberAt(json, path), value) << path;
}

}  // namespace orx::test
