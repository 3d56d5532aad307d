#include "orxkdb/diff/diff_report.h"

#include <unistd.h>

#include <nlohmann/json.hpp>

#include "orxkdb/diff/diff_summary.h"
#include "terminal/color.h"

namespace orx::orxkdb {

namespace {

// Names and texts need not be UTF-8.
std::string oneLine(const nlohmann::ordered_json& json) {
  return json.dump(-1, ' ', false, nlohmann::ordered_json::error_handler_t::replace);
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

// {"version": 1, "objects": [ one object a line ], and behind them the members of the summary.
Result DiffReport::writeJsonStart() {
  if (hasJsonStart_) return {};
  hasJsonStart_ = true;
  return output_.write("{\n\"version\": 1,\n\"objects\": [");
}

Result DiffReport::writeObjectJson(const nlohmann::ordered_json& object) {
  if (Result result = writeJsonStart(); !result.ok()) return result;
  if (Result result = output_.write(separator_); !result.ok()) return result;
  separator_ = ",\n";
  return output_.write(oneLine(object));
}

Result DiffReport::finish(const ChainReader& before, const ChainReader& after) {
  counts_.unreadableLines =
      before.source().counts().unreadable + after.source().counts().unreadable;
  Result result = options_.json ? writeJsonEnd(summaryJson(before, after, counts_))
                                : output_.write(summaryText(before, after, counts_, options_));
  return result.ok() ? output_.publish() : result;
}

Result DiffReport::writeJsonEnd(const nlohmann::ordered_json& members) {
  std::string end = "\n]";
  for (const auto& [name, value] : members.items()) {
    end += ",\n\"" + name + "\": " + oneLine(value);
  }
  Result result = writeJsonStart();
  return result.ok() ? output_.write(end + "\n}\n") : result;
}

}  // namespace orx::orxkdb
