#include "orxkdb/cmd_sample.h"

#include <algorithm>
#include <memory>
#include <nlohmann/json.hpp>

#include "orxkdb/output/json_document.h"
#include "orxkdb/output/output.h"
#include "orxkdb/sample/sample_writer.h"

namespace orx::orxkdb {

namespace {
constexpr std::uint32_t fewestObjects = 20;
constexpr std::uint32_t mostObjects = 50'000'000;

nlohmann::ordered_json jsonOf(const SampleOptions& options, std::uint64_t records) {
  return jsonDocument("sample", {{"file", options.file},
                                 {"objects", options.objects},
                                 {"records", records},
                                 {"seed", options.seed},
                                 {"order", options.order}});
}

}  // namespace

Result sample(const SampleOptions& options) {
  if (options.json && options.file == standardStream) return jsonNeedsFile("sample");
  Output output;
  if (Result result = output.open(options.file, ""); !result.ok()) return result;
  const SampleOrder order = options.order == "random" ? SampleOrder::random : SampleOrder::key;
  Result written;
  std::uint64_t records = 0;
  const bool complete =
      writeSample({options.objects, options.seed}, order, [&](std::string_view lines) {
        records += static_cast<std::uint64_t>(std::ranges::count(lines, '\n'));
        written = output.write(lines);
        return written.ok();
      });
  if (complete) written = output.publish();
  if (!written.ok()) return written;
  return tellOutcome(options.json, jsonOf(options, records), "");
}

void addSample(CommandLine& line) {
  auto options = std::make_shared<SampleOptions>();
  Command command(line, "sample", "Write a backup of a made-up fleet, to try things with",
                  [options] { return sample(*options); });
  command.optionalArgument(
      "FILE", options->file,
      "File to write, whole or not at all; \"-\" or nothing is standard output");
  command.number("--objects", options->objects, "How many objects", fewestObjects, mostObjects);
  command.number("--seed", options->seed, "Another number gives another fleet");
  command.choice("--order", options->order, {"key", "random"},
                 "Order of the lines: key (as a database) or random");
  command.json(options->json);
  command.footer(
      "The same options give the same text everywhere: systems, groups, resources, models with\n"
      "their use counts, references, parameters and a system record with counters.\n\n"
      "Examples:\n"
      "  orxkdb sample fleet.txt\n"
      "  orxkdb sample --objects 100000 --seed 7 --order random fleet.txt\n"
      "  orxkdb sample --json --objects 1000 fleet.txt");
}

}  // namespace orx::orxkdb
