#include <gmock/gmock.h>

#include <nlohmann/json.hpp>
#include <regex>

#include "orxkdb/cmd_report.h"
#include "orxkdb/report/html_text.h"
#include "orxkdb/report/model_picture.h"
#include "orxkdb/report/page.h"
#include "orxkdb/report/sections.h"
#include "orxkdb/sample/fleet.h"
#include "tests/support/program_runs.h"
#include "tests/support/small_fleet.h"

namespace orx::orxkdb {
namespace {

using test::handleText, test::Line;
using testing::HasSubstr, testing::Not;

TEST(Report, TextsAreShownAsText) {
  const std::pair<std::string_view, std::string_view> cases[] = {
      {"<script>\"a\" & 'b'", "&lt;script&gt;&quot;a&quot; &amp; &#39;b&#39;"},
      {std::string_view("a\0b\x1B\x7F\n", 6), "a\\x00b\\x1B\\x7F\\x0A"},
      {"\xC3\xA4\xE2\x82\xAC", "\xC3\xA4\xE2\x82\xAC"},
      {"\xC0\xBC\xED\xA0\x80", "\\xC0\\xBC\\xED\\xA0\\x80"},  // overlong "<", a surrogate
      {"\xC2\x85\xEF\xBF\xBF", "\\xC2\\x85\\xEF\\xBF\\xBF"},  // control, noncharacter
      {"\xE2\x80\xAE", "\\xE2\\x80\\xAE"},                    // turns the direction
      {"\xE2\x82<", "\\xE2\\x82&lt;"},
  };
  for (const auto& [text, shown] : cases) EXPECT_EQ(escaped(text), shown);
  EXPECT_EQ(shortened("ab\xE2\x82\xAC", 5), "ab\xE2\x82\xAC");
  EXPECT_EQ(shortened("ab\xE2\x82\xAC-", 4), "ab...");
}

// Every element is closed in order; the texts of a page hold no bare "<".
bool isBalanced(const std::string& html) {
  static const std::regex tag("<(/?)([a-z0-9]+)((?:[^>\"]|\"[^\"]*\")*)>");
  std::string page = html.substr(html.find("<html"));
  for (const std::string raw : {"style", "script"}) {
    const std::size_t start = page.find('>', page.find("<" + raw)) + 1;
    page.erase(start, page.find("</" + raw) - start);
  }
  std::vector<std::string> open;
  std::ptrdiff_t tags = 0;
  for (std::sregex_iterator at(page.begin(), page.end(), tag), end; at != end; ++at, ++tags) {
    const std::string name = (*at)[2];
    if ((*at)[1].length() == 0) {
      if (name != "meta" && name != "input") open.push_back(name);
    } else if (open.empty() || open.back() != name) {
      return false;
    } else {
      open.pop_back();
    }
  }
  return open.empty() && std::ranges::count(page, '<') == tags;
}

std::string pageAbout(const std::string& database) {
  ReportData data(database, {}, 20);
  EXPECT_EQ(gather(data).text, "");
  const std::string html = pageOf(data, 0).html;
  EXPECT_TRUE(isBalanced(html));
  EXPECT_THAT(html, Not(testing::ContainsRegex("(src|href)=\"[^#]")));
  return html;
}

std::vector<Line> modelsWithReferrers(std::uint32_t models, std::uint32_t referrers) {
  std::vector<Line> lines = {test::systemLine()};
  for (std::uint32_t id = 1; id <= models; ++id) {
    lines.push_back({.object = handleText(12, id), .recType = 12, .data = "<2;0;1;model;>"});
  }
  for (std::uint32_t id = 1; id <= referrers; ++id) {
    lines.push_back(test::plainLine(id));
    lines.back().model = handleText(12, 1 + id * id % models);
  }
  return lines;
}

TEST(Report, ShowsWhatIsThere) {
  std::vector<Line> astray = test::smallFleet(), hostile = astray;
  astray.push_back(test::plainLine(8));
  astray.back().model = handleText(12, 99);
  hostile.push_back(test::plainLine(7, "<2;0;1;<b onload=\"x\" '\x01\xFF;>"));
  using Texts = std::vector<const char*>;
  const struct {
    const char* name;
    std::vector<Line> lines;
    Texts shown, notShown = {};
  } cases[] = {
      {"empty", {}, {"The database is empty.", "There are no objects.", "no-system-record"}},
      {"few",
       test::smallFleet(),
       {"No findings.", "2:5 system to 12:1 model", "1 model, 0 of them unused", ">system record<"},
       {"The most used models", "class=\"ribbon"}},
      {"hostile", hostile, {"&lt;b onload=&quot;x&quot; &#39;\\x01\\xFF"}, {"<b onload", "\xFF"}},
      {"astray",
       astray,
       {"missing-object", "1 of them to handles that no model has", "12:99 (no model)"}},
      {"named bands",
       modelsWithReferrers(5, 100),
       {"objects of type 2 to 12:1 model: 20", "class=\"ribbon"},
       {"class=\"line"}},
      {"many",
       modelsWithReferrers(300, 100),
       {"objects of type 2 to 300 models of type 12: 100", "The most used models",
        "rank 3:", "a bar is the most used of 2 models", "more, which \"--limit 0\" shows</li>"}},
  };
  const test::TempDir scratch;
  for (const auto& page : cases) {
    SCOPED_TRACE(page.name);
    test::makeDatabase(scratch.file(page.name), page.lines);
    const std::string html = pageAbout(scratch.file(page.name));
    for (const char* text : page.shown) EXPECT_THAT(html, HasSubstr(text));
    for (const char* text : page.notShown) EXPECT_THAT(html, Not(HasSubstr(text)));
  }
}

TEST(Report, ListsAPartOfManyObjectsModelsFirst) {
  ObjectList list;
  for (std::uint64_t object = 1; object <= 30'000; ++object) {
    list.add({.parent = 1, .object = object, .label = std::string(48, '"')}, object % 3 == 0);
  }
  const std::vector<ListedObject> objects = list.take();
  EXPECT_EQ(objects.size(), ObjectList::most);
  EXPECT_TRUE(std::ranges::is_sorted(objects, {}, &ListedObject::object));
  EXPECT_EQ(std::ranges::count_if(objects, [](auto& o) { return o.object % 3 == 0; }), 5000);
  const ObjectSection section = objectSection(objects, 30'000, "db");
  EXPECT_LT(section.html.size(), 4'000'000U);
  EXPECT_THAT(section.html, HasSubstr("The list holds " + grouped(section.shown) + " of 30,000"));
}

TEST(Report, AgreesWithTheOtherCommands) {
  const test::TempDir scratch;
  const auto made = test::runProgram(test::shellScript(scratch, R"(set -e; orxkdb create db
orxkdb sample --objects 2000 fleet.txt; orxkdb sample --objects 90 other.txt
orxrestore -i fleet.txt -o db > log
orxkdb report db --plan other.txt --html page.html --json > report.json
orxkdb stat --json db > stat.json; orxkdb plan --json --limit 0 db other.txt > plan.json)"));
  ASSERT_EQ(made.exitCode, 0) << made.errors;
  const auto parsed = [&](const char* name) {
    return nlohmann::json::parse(test::readFile(scratch / name));
  };
  const auto json = parsed("report.json"), stat = parsed("stat.json"), plan = parsed("plan.json");
  const std::string html = test::readFile(scratch.file("page.html"));
  EXPECT_TRUE(isBalanced(html));
  EXPECT_EQ(json["bytes"], html.size());
  EXPECT_EQ(json["objectsListed"], stat["objects"]);
  EXPECT_EQ(json["findings"], 0);  // so the use counts of all models are right
  EXPECT_EQ(json["plan"]["records"], plan["records"]);
  for (const char* name : {"records", "objects", "textBytes", "longestChain"}) {
    EXPECT_THAT(html, HasSubstr(" <b>" + grouped(stat[name]) + "</b>"));
  }
  const auto& type = stat["recordTypes"].back();
  EXPECT_THAT(html, testing::ContainsRegex("<tr><td>type " + to_string(type["recType"]) +
                                           "</td><td class=\"n\">[0-9,]+</td><td class=\"n\">" +
                                           grouped(type["records"]) + "</td>"));
  const auto& range = plan["identifiers"][0]["ranges"]["shown"][0];
  EXPECT_THAT(html, HasSubstr("<td class=\"n\">" + to_string(range["newFirst"])));
  EXPECT_THAT(html, HasSubstr("would <span class=\"good\">succeed</span>"));
}

}  // namespace
}  // namespace orx::orxkdb
