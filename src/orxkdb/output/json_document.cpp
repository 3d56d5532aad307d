#include "orxkdb/output/json_document.h"

#include <nlohmann/json.hpp>

#include "orxkdb/output/output.h"
#include "terminal/file_words.h"

namespace orx::orxkdb {

namespace {

using Json = nlohmann::ordered_json;

constexpr int version = 1;
constexpr int indentation = 2;

std::string written(const Json& value, int indent) {
  return value.dump(indent, ' ', false, Json::error_handler_t::replace);
}

}  // namespace

Json jsonDocument(std::string_view name) {
  return {{"format", "orxkdb-" + std::string(name)}, {"version", version}};
}

Json jsonDocument(std::string_view name, const Json& more) {
  Json document = jsonDocument(name);
  document.update(more);
  return document;
}

std::string jsonText(const Json& document) {
  return written(document, indentation) + "\n";
}

std::string jsonLine(const Json& value) {
  return written(value, -1);
}

std::string failureJson(const Result& failure) {
  return jsonText(jsonDocument("failure", {{"code", static_cast<int>(failure.code)},
                                           {"text", failure.textWithoutHint()},
                                           {"hint", failure.hint}}));
}

Result tellOutcome(bool json, const Json& document, std::string_view words) {
  if (!json) {
    if (!words.empty()) say(onOneLine(std::string(words)) + "\n");
    return {};
  }
  Result result = writeStandardOutput(jsonText(document));
  if (!result.ok()) result.addHint("what was asked for is done");
  return result;
}

Result jsonNeedsFile(std::string_view command) {
  return fail(
      exitUsage, "--json tells of a file, and there is none to be written", "command line",
      "name a FILE, or leave --json out; see \"orxkdb " + std::string(command) + " --help\"");
}

}  // namespace orx::orxkdb
