#include "orxkdb/cmd_report.h"

#include <ctime>
#include <memory>
#include <nlohmann/json.hpp>

#include "orxkdb/output/json_document.h"
#include "orxkdb/output/output.h"
#include "orxkdb/report/html_text.h"
#include "orxkdb/report/page.h"
#include "orxkdb/report/report_data.h"
#include "platform/run_progress.h"

namespace orx::orxkdb {

namespace {

nlohmann::ordered_json planJson(const ReportData& data) {
  if (!data.plan) return nullptr;
  return {{"backup", *data.backup},
          {"succeeds", data.plan->succeeds()},
          {"objects", data.plan->totals().objects},
          {"records", data.plan->totals().records}};
}

nlohmann::ordered_json summaryJson(const ReportOptions& options, const ReportData& data,
                                   const Page& page) {
  return jsonDocument("report", {{"database", options.database},
                                 {"file", options.page},
                                 {"bytes", page.html.size()},
                                 {"records", data.statistics.records},
                                 {"objects", data.statistics.objects},
                                 {"objectsListed", page.objectsListed},
                                 {"models", data.counts.models},
                                 {"references", data.counts.references},
                                 {"findings", data.findings.total()},
                                 {"plan", planJson(data)}});
}

std::string summaryText(const ReportOptions& options, const ReportData& data) {
  return options.page + ": report of " + options.database + ", " +
         groupedCount(data.statistics.objects, "object") + ", " +
         groupedCount(data.findings.total(), "finding");
}

Result writePage(const Page& page, Output& output) {
  if (Result result = output.write(page.html); !result.ok()) return result;
  return output.publish();
}

}  // namespace

Result report(const ReportOptions& options) {
  if (options.json && options.page == standardStream) {
    return jsonNeedsFile("report");
  }
  Output output;
  if (Result result = output.open(options.page, options.database, options.backup.value_or(""));
      !result.ok()) {
    return result;
  }
  ReportData data(options.database, options.backup, options.limit);
  if (Result result = gather(data); !result.ok()) return result;
  runProgress().enter("writing");
  const Page page = pageOf(data, std::time(nullptr));
  if (Result result = writePage(page, output); !result.ok()) return result;
  if (output.isStandard()) return {};
  return tellOutcome(options.json, summaryJson(options, data, page), summaryText(options, data));
}

void addReport(CommandLine& line) {
  auto options = std::make_shared<ReportOptions>();
  Command command(line, "report", "Write a page about a database, to look at in a browser",
                  [options] { return report(*options); });
  command.argument("DB", options->database, "Database to read; it is not changed");
  command.requiredOption("--html", options->page, "FILE",
                         "Page to write, whole or not at all; \"-\" is standard output");
  command.option("--plan", options->backup, "FILE",
                 "Show what a merge of this backup would do as well");
  command.limit(options->limit, "Findings of each kind, and entries of a plan; 0 shows all");
  command.json(options->json);
  command.footer(
      "The page shows counts by type, findings (those of \"orxkdb check\"), which objects refer "
      "to\n"
      "which models, chain lengths and text sizes, the plan of a merge when there is one, and a\n"
      "list of objects to search in. It is one file that loads nothing and needs no script; it "
      "can\n"
      "be mailed, read in the dark and printed. It stays below 5 MB at any size of database, "
      "unless\n"
      "\"--limit 0\" asks for every finding: of more than 10,000 objects it lists a part.\n\n"
      "Findings do not change the exit code; it tells whether the page is there.\n\n"
      "Examples:\n"
      "  orxkdb report rorxdata --html report.html\n"
      "  orxkdb report rorxdata --plan other.txt --html merge.html");
}

}  // namespace orx::orxkdb
