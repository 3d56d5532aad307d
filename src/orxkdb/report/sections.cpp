#include "orxkdb/report/sections.h"

#include <algorithm>

#include "orxkdb/report/html_table.h"
#include "orxkdb/report/html_text.h"
#include "orxkdb/report/model_picture.h"
#include "terminal/file_words.h"

namespace orx::orxkdb {

namespace {

using enum HtmlTable::Align;

constexpr std::size_t mostTypes = 40;
constexpr std::size_t mostUsed = 20;
constexpr std::size_t mostTableBytes = 3'500'000;

std::uint64_t countOf(const std::map<std::int32_t, std::uint64_t>& counts, std::int32_t type) {
  const auto found = counts.find(type);
  return found == counts.end() ? 0 : found->second;
}

// The first mostTypes of them; a sound database has about twelve.
std::string typeBars(const std::map<std::int32_t, std::uint64_t>& records) {
  std::vector<Bar> bars;
  for (const auto& [type, count] : records) {
    if (bars.size() == mostTypes) break;
    bars.push_back({typeName(type), count});
  }
  return barChart("Records by record type", bars);
}

std::string typeTable(const ReportData& data) {
  const auto& records = data.statistics.recordsOfType;
  if (records.empty()) return paragraph("The database is empty.");
  HtmlTable table("Objects and records by record type; an object has the type of its first record",
                  {{"record type"}, {"objects", number}, {"records", number}});
  std::size_t shown = 0;
  std::uint64_t otherObjects = data.census.objects();
  std::uint64_t otherRecords = data.statistics.records;
  for (const auto& [type, count] : records) {
    if (shown++ == mostTypes) break;
    const std::uint64_t objects = countOf(data.census.objectsOfType(), type);
    table.row({typeName(type), grouped(objects), grouped(count)});
    otherObjects -= objects;
    otherRecords -= count;
  }
  if (records.size() > mostTypes) {
    table.row({groupedCount(records.size() - mostTypes, "more type"), grouped(otherObjects),
               grouped(otherRecords)});
  }
  return table.take();
}

std::string fact(std::string_view name, const std::string& value) {
  return "<li>" + escaped(name) + " <b>" + escaped(value) + "</b></li>\n";
}

std::string facts(const ReportData& data) {
  const DatabaseStatistics& statistics = data.statistics;
  return "<ul class=\"facts\">\n" + fact("records", grouped(statistics.records)) +
         fact("objects", grouped(statistics.objects)) +
         fact("models", grouped(data.counts.models)) +
         fact("references, in attributes too", grouped(data.counts.references)) +
         fact("chains of 2 or more records", grouped(statistics.chains)) +
         fact("records of the longest chain", grouped(statistics.longestChain)) +
         fact("bytes of attribute text", grouped(statistics.textBytes)) +
         fact("bytes of the file", grouped(statistics.fileBytes)) +
         fact("findings", grouped(data.findings.total())) + "</ul>\n";
}

std::string mostUsedBars(const std::vector<UsedModel>& models) {
  if (models.size() <= mostNamedModels) return "";
  std::vector<Bar> bars;
  for (const UsedModel& model : models) {
    if (bars.size() == mostUsed || !model.isThere || model.uses == 0) break;
    bars.push_back({modelName(model), model.uses});
  }
  return barChart("The most used models, with their uses", bars);
}

std::string useClasses(const std::vector<UsedModel>& models) {
  SizeClasses classes;
  for (const UsedModel& model : models) {
    if (model.isThere) classes.add(model.uses);
  }
  return barChart("How many models have how many uses", classes.bars());
}

std::string modelWords(const std::vector<UsedModel>& models, std::uint64_t references) {
  std::uint64_t there = 0;
  std::uint64_t unused = 0;
  std::uint64_t astray = 0;
  for (const UsedModel& model : models) {
    if (model.isThere) ++there;
    if (model.isThere && model.uses == 0) ++unused;
    if (!model.isThere) astray += model.uses;
  }
  std::string text = groupedCount(there, "model") + ", " + grouped(unused) + " of them unused. " +
                     groupedCount(references, "reference") +
                     " of objects through their model handle";
  if (astray > 0) text += ", " + grouped(astray) + " of them to handles that no model has";
  return paragraph(text + ". References are counted as a use-count rebuild counts them.");
}

}  // namespace

std::string section(std::string_view id, std::string_view heading, std::string_view content) {
  std::string html = "<section id=\"" + std::string(id) + "\">\n<h2>" + escaped(heading);
  return html.append("</h2>\n").append(content).append("</section>\n");
}

std::string paragraph(std::string_view text) {
  return "<p>" + escaped(text) + "</p>\n";
}

std::string countSection(const ReportData& data) {
  return section("counts", "Counts",
                 facts(data) + typeBars(data.statistics.recordsOfType) + typeTable(data));
}

std::string modelSection(const ModelUses& uses) {
  const std::vector<UsedModel> models = uses.ranked();
  return section("models", "Models and what refers to them",
                 modelWords(models, uses.references()) + modelPicture(uses, models) +
                     mostUsedBars(models) + rankStrip(models) + useClasses(models));
}

std::string sizeSection(const Census& census) {
  if (census.objects() == 0) return section("sizes", "Sizes", paragraph("There are no objects."));
  return section("sizes", "Sizes",
                 barChart("Chain lengths: how many objects have how many records",
                          census.chainLengths().bars()) +
                     barChart("Text sizes: how many objects have how many bytes of attribute text",
                              census.textSizes().bars()));
}

ObjectSection objectSection(const std::vector<ListedObject>& objects, std::uint64_t all,
                            const std::string& database) {
  HtmlTable table("Handles are TYPE:ID; the first value is that of the first attribute",
                  {{"object"},
                   {"parent"},
                   {"record type", number},
                   {"first value"},
                   {"model"},
                   {"records", number},
                   {"bytes of text", number}},
                  "rows");
  std::size_t shown = 0;
  for (const ListedObject& object : objects) {
    if (table.size() > mostTableBytes) break;
    ++shown;
    table.row({shortName(object.object), shortName(object.parent), std::to_string(object.recType),
               object.label, shortName(object.model), grouped(object.records),
               grouped(object.textBytes)});
  }
  std::string html;
  if (shown < all) {
    html += paragraph("The list holds " + grouped(shown) + " of " + grouped(all) +
                      " objects: models first, then those that come first in the database. "
                      "\"orxkdb explain " +
                      shellWord(database) + " TYPE:ID\" shows any other.");
  }
  html +=
      "<div id=\"search\" hidden><label>Search in this list: <input type=\"search\" "
      "placeholder=\"words, or a handle\"></label> <output>all are shown</output></div>\n"
      "<p class=\"soft paper\">On paper the list ends after 200 rows.</p>\n";
  return {section("objects", "Objects", html + table.take()), shown};
}

}  // namespace orx::orxkdb
