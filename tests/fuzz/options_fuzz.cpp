// A command line of orxrestore: words, each ended by a line feed.
#include <algorithm>
#include <string>
#include <vector>

#include "driver/option_scanner.h"
#include "driver/process_args.h"
#include "restore/restore_settings.h"
#include "tests/fuzz/fuzz_target.h"

namespace orx::fuzz {
namespace {

void startOver() {
  options::optind = 1;
  options::optopt = 0;
  options::optarg = options::scanPosition = nullptr;
}

void scan(const std::vector<std::string>& words, char* const* line, const char* optionString) {
  const auto owns = [&](const char* text) {
    return std::ranges::any_of(words, [&](const std::string& word) {
      return text >= word.data() && text <= word.data() + word.size();
    });
  };
  std::size_t mostSteps = 0;
  for (const std::string& word : words) mostSteps += word.size() + 1;
  const int count = static_cast<int>(words.size());
  startOver();
  std::size_t steps = 0;
  for (int option = 0; option != -1; ++steps) {
    const int before = options::optind;
    option = options::getopt(count, line, optionString);
    require(steps <= mostSteps, "a scan ends");
    require(options::optind >= before && options::optind <= count,
            "a scan goes forward and stays within the command line");
    require(options::optarg == nullptr || owns(options::optarg),
            "an argument is a part of the command line");
  }
}

const Registration target("options", [](Input& input) {
  const bool isVerbose = input.byte() % 2 == 1;
  std::vector<std::string> words{"orxrestore"};
  while (!input.isEmpty() && words.size() < 64) words.emplace_back(input.upTo('\n'));
  std::vector<char*> line(words.size() + 1);
  std::ranges::transform(words, line.begin(), [](std::string& word) { return word.data(); });
  const CapturedOutput output;
  scan(words, line.data(), isVerbose ? "i:o:vp" : "?I:i:O:o:M:m:U:u:VvPp");
  startOver();
  restoreSettings() = {};
  const int usable = processArgs(static_cast<int>(words.size()), line.data());
  const RestoreSettings& settings = restoreSettings();
  require(usable == 0 || !settings.databaseName.empty(), "a run has a database");
  require(usable == 0 || settings.mode == modeUseCount || !settings.backupFileName.empty(),
          "a run that needs a backup has one");
  restoreSettings() = {};
});

}  // namespace
}  // namespace orx::fuzz
