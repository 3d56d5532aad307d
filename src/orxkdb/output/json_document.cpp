#include "orxkdb/output/json_document.h"

#include <nlohmann/json.hpp>

#include "orxkdb/output/output.h"
#include "platform/control_character.h"
#include "terminal/file_words.h"

namespace orx::orxkdb {

namespace {

using Json = nlohmann::ordered_json;

constexpr int version = 1;
constexpr int indentation = 2;

// The format itself escapes the control characters of ASCII alone, and a document may be looked at
// on a terminal. 0xC2 begins a character of two bytes, which is in a string.
std::string written(const Json& value, int indent) {
  constexpr char digits[] = "0123456789abcdef";
  const std::string text = value.dump(indent, ' ', false, Json::error_handler_t::replace);
  std::string escaped;
  std::size_t copied = 0;
  for (auto at = text.find('\xC2'); at != std::string::npos; at = text.find('\xC2', at + 1)) {
    if (!isControlAt(text, at)) continue;
    const auto byte = static_cast<unsigned char>(text[at + 1]);
    escaped.append(text, copied, at - copied).append("\\u00");
    escaped.append({digits[byte >> 4], digits[byte & 0xF]});
    copied = at + 2;
  }
  return copied == 0 ? text : escaped.append(text, copied);
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
