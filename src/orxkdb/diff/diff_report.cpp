#include "orxkdb/diff/diff_report.h"

#include <unistd.h>

#include <nlohmann/json.hpp>

#include "orxkdb/diff/diff_summary.h"
#include "orxkdb/output/json_document.h"
#include "terminal/color.h"

namespace orx::orxkdb {

namespace {

// "NAME": VALUE for each member, a line each but for the last line end.
std::string memberLines(const nlohmann::ordered_json& members) {
  std::string lines;
  for (const auto& [name, value] : members.items()) {
    lines.append(lines.empty() ? "" : ",\n");
    lines.append("\"").append(name).append("\": ").append(jsonLine(value));
  }
  return lines;
}

// What A alone has is red, what B alone has green.
std::string inColor(std::string text) {
  text = withPaintedLines(std::move(text), "- ", Paint::red, STDOUT_FILENO);
  return withPaintedLines(std::move(text), "+ ", Paint::green, STDOUT_FILENO);
}

}  // namespace

bool DiffReport::count(ObjectChange change) {
  const std::uint64_t number = ++counts_.objects[static_cast<std::size_t>(change)];
  return options_.limit == 0 || number <= options_.limit;
}

Result DiffReport::addOneSided(ObjectChange change, const Chain& chain) {
  if (!count(change)) return {};
  if (options_.json) return writeObjectJson(oneSidedJson(change, chain));
  return output_.write(inColor(oneSidedText(change, chain)));
}

Result DiffReport::addChanged(const Chain& before, const Chain& after) {
  const ObjectChanges changes(before, after);
  counts_.add(changes);
  if (!count(ObjectChange::changed)) return {};
  if (options_.json) return writeObjectJson(changedJson(changes, options_.records));
  return output_.write(inColor(changedText(changes, options_.records)));
}

// {"format": ..., "version": 1, "objects": [ one object a line ], and behind them the members of
// the summary.
Result DiffReport::writeJsonStart() {
  if (hasJsonStart_) return {};
  hasJsonStart_ = true;
  return output_.write("{\n" + memberLines(jsonDocument("diff")) + ",\n\"objects\": [");
}

Result DiffReport::writeObjectJson(const nlohmann::ordered_json& object) {
  if (Result result = writeJsonStart(); !result.ok()) return result;
  if (Result result = output_.write(separator_); !result.ok()) return result;
  separator_ = ",\n";
  return output_.write(jsonLine(object));
}

Result DiffReport::finish(const ChainReader& before, const ChainReader& after) {
  counts_.unreadableLines =
      before.source().counts().unreadable + after.source().counts().unreadable;
  Result result = options_.json ? writeJsonEnd(summaryJson(before, after, counts_))
                                : output_.write(summaryText(before, after, counts_, options_));
  return result.ok() ? output_.publish() : result;
}

Result DiffReport::writeJsonEnd(const nlohmann::ordered_json& members) {
  Result result = writeJsonStart();
  return result.ok() ? output_.write("\n],\n" + memberLines(members) + "\n}\n") : result;
}

}  // namespace orx::orxkdb
