#include "orxkdb/diff/diff_summary.h"

#include <algorithm>
#include <nlohmann/json.hpp>
#include <vector>

#include "orxkdb/words/counted.h"
#include "terminal/file_words.h"

namespace orx::orxkdb {

namespace {

using Json = nlohmann::ordered_json;
using enum ObjectChange;

constexpr ObjectChange objectChanges[] = {added, removed, changed};

const char* formOf(const RecordSource& source) {
  return source.isDatabase() ? "database" : "backup";
}

std::string inputText(const ChainReader& input) {
  const SourceCounts& counts = input.source().counts();
  std::string text = "  " + onOneLine(input.source().name()) + ": " + formOf(input.source()) +
                     " of " + std::to_string(counts.records) + " records, " +
                     std::to_string(input.count()) + " objects\n";
  if (counts.repeated > 0) {
    text += "    " + std::to_string(counts.repeated) +
            " more ignored, whose key an earlier one has in a backup\n";
  }
  if (counts.reduced > 0) {
    text += "    " + std::to_string(counts.reduced) +
            " of them hold more than a backup carries, which was not compared\n";
  }
  return text;
}

std::string unreadableText(const ChainReader& input) {
  const SourceCounts& counts = input.source().counts();
  const std::uint64_t more = counts.unreadable - counts.unreadableShown.size();
  std::string text;
  for (const UnreadableLine& line : counts.unreadableShown) {
    text += "unreadable line: " + onOneLine(input.source().name()) + ":" +
            std::to_string(line.line) + ", " + line.text + "\n";
  }
  if (more > 0) {
    text += "and " + std::to_string(more) + " more, which \"--limit 0\" shows\n";
  }
  return text;
}

// A line for each kind that occurs.
struct KindCount {
  const char* name;  // in words
  const char* key;   // in JSON
  std::uint64_t count;
};

std::vector<KindCount> detailsOf(const DiffCounts& counts) {
  return {{"head fields", "headFields", counts.headFields},
          {"chain lengths", "chainLengths", counts.chainLengths},
          {"attributes added", "attributesAdded", counts.attributesAdded},
          {"attributes removed", "attributesRemoved", counts.attributesRemoved},
          {"attributes with other values", "attributesChanged", counts.attributesChanged},
          {"objects with a text that does not parse", "textsNotParsed", counts.textsNotParsed},
          {"objects that differ in their records alone", "onlyInRecords", counts.onlyInRecords}};
}

std::string objectCountText(ObjectChange change, const DiffCounts& counts, std::size_t limit) {
  const std::uint64_t count = counts.of(change);
  std::string text = "  " + std::string(nameOf(change)) + ": " + std::to_string(count);
  if (limit != 0 && count > limit) {
    text += ", the first " + std::to_string(limit) + " are shown; \"--limit 0\" shows all";
  }
  return text + "\n";
}

std::string kindsText(const DiffCounts& counts, std::size_t limit) {
  std::string text = "objects by kind\n";
  for (const ObjectChange change : objectChanges) text += objectCountText(change, counts, limit);
  for (const KindCount& kind : detailsOf(counts)) {
    if (kind.count > 0)
      text += std::string("    ") + kind.name + ": " + std::to_string(kind.count) + "\n";
  }
  text += "  unchanged: " + std::to_string(counts.unchanged) + "\n";
  if (counts.unreadableLines > 0) {
    text += "unreadable lines: " + std::to_string(counts.unreadableLines) + "\n";
  }
  return text;
}

Json inputJson(const ChainReader& input) {
  const SourceCounts& counts = input.source().counts();
  Json lines = Json::array();
  for (const UnreadableLine& line : counts.unreadableShown) {
    lines.push_back({{"line", line.line}, {"text", line.text}});
  }
  return {{"input", input.source().name()},
          {"form", formOf(input.source())},
          {"records", counts.records},
          {"objects", input.count()},
          {"ignoredRecords", counts.repeated},
          {"reducedRecords", counts.reduced},
          {"unreadableLines", counts.unreadable},
          {"unreadableShown", lines}};
}

}  // namespace

std::string countsInShort(const DiffCounts& counts) {
  std::string text;
  for (const ObjectChange change : objectChanges) {
    text += (text.empty() ? "" : ", ") + std::to_string(counts.of(change)) + " " + nameOf(change);
  }
  if (counts.unreadableLines == 0) return text;
  return text + ", " + counted(counts.unreadableLines, "unreadable line");
}

std::string summaryText(const ChainReader& before, const ChainReader& after,
                        const DiffCounts& counts, const DiffOptions& options) {
  const std::string inputs = "compared\n" + inputText(before) + inputText(after);
  if (counts.isSame()) return inputs + "same\n";
  return unreadableText(before) + unreadableText(after) + "\n" + inputs +
         kindsText(counts, options.limit);
}

Json summaryJson(const ChainReader& before, const ChainReader& after, const DiffCounts& counts) {
  Json summary = Json::object();
  for (const ObjectChange change : objectChanges) summary[nameOf(change)] = counts.of(change);
  summary["unchanged"] = counts.unchanged;
  for (const KindCount& kind : detailsOf(counts)) summary[kind.key] = kind.count;
  return {{"inputs", {inputJson(before), inputJson(after)}},
          {"same", counts.isSame()},
          {"summary", summary}};
}

}  // namespace orx::orxkdb
