#include "tests/faults/operation.h"

#include <algorithm>
#include <array>
#include <stdexcept>

#include "tests/support/kdb_records.h"
#include "tests/support/program_runs.h"

namespace orx::faults {

namespace {

namespace fs = std::filesystem;

constexpr const char* absent = "absent";
constexpr const char* bundle = "PRESTORE_restore";
constexpr const char* successorSuffix = ".orx-new";
constexpr const char* replacedSuffix = ".orx-old";
constexpr const char* previousSuffix = ".orx-previous";
constexpr std::array inputs{"backup.txt", "shuffled.txt", "input.dump"};

// A leak is not looked for here: the tool that does cannot work beside another tracer.
const std::vector<std::string> environment{"LC_ALL=C", "ASAN_OPTIONS=detect_leaks=0",
                                           "TMPDIR=/tmp"};

void mustRun(const fs::path& directory, const std::string& command) {
  const auto result = test::runProgram(programIn(directory, command));
  if (result.exitCode != 0) throw std::runtime_error(command + ": " + result.errors);
}

// The use counts of a sample, made wrong.
std::string withWrongCounts(std::string text) {
  constexpr std::string_view head = "<17;0;1;";
  for (std::size_t at = text.find(head); at != std::string::npos; at = text.find(head, at + 1)) {
    text[at + head.size()] = '7';
  }
  return text;
}

// A database with wrong use counts and an older generation behind it, and the inputs of every
// operation.
void makeStart(const fs::path& directory) {
  mustRun(directory, "orxkdb create db");
  mustRun(directory, "orxkdb sample --objects 20 --seed 5 older.txt");
  mustRun(directory, "orxkdb sample --objects 40 --seed 3 base.txt");
  mustRun(directory, "orxkdb sample --objects 30 backup.txt");
  // More records than stay in memory while they are out of order.
  mustRun(directory, "orxkdb sample --objects 17700 --seed 9 --order random shuffled.txt");
  test::writeFile(directory / "base.txt", withWrongCounts(test::readFile(directory / "base.txt")));
  mustRun(directory, "orxrestore -i backup.txt -o db");
  mustRun(directory, "orxkdb dump db input.dump");
  mustRun(directory, "orxrestore -i older.txt -o db");
  mustRun(directory, "orxrestore -i base.txt -o db");
  test::writeFile(directory / "out.txt", "what was written before\n");
  for (const char* const name : {"older.txt", "base.txt"}) fs::remove(directory / name);
}

// Nobody changes it: every run gets a copy.
const test::TempDir& sharedStart() {
  static const test::TempDir directory;
  [[maybe_unused]] static const bool made = (makeStart(directory.path()), true);
  return directory;
}

// Every record of a database, in order, or every byte of a text.
std::string contentOf(const fs::path& file, bool isDatabase) {
  if (!fs::exists(fs::symlink_status(file))) return absent;
  return isDatabase ? test::recordBytes(file) : test::readFile(file);
}

bool hasAny(const std::string& text, const std::vector<const char*>& words) {
  return std::ranges::any_of(
      words, [&text](const char* word) { return text.find(word) != std::string::npos; });
}

}  // namespace

const std::vector<Operation>& operations() {
  constexpr const char* restore = "orxrestore -i backup.txt -o db";
  static const std::vector<Operation> all{
      {.name = "restore", .command = restore},
      {.name = "restore-shuffled", .command = "orxrestore -i shuffled.txt -o db"},
      {.name = "restore-linking", .command = restore, .exchangeFails = true},
      {.name = "restore-behind-kill", .command = restore, .behindKill = true},
      {.name = "merge", .command = "orxrestore -i backup.txt -m db", .mayRewrite = true},
      {.name = "use-count", .command = "orxrestore -u db"},
      {.name = "load",
       .command = "orxkdb load made input.dump",
       .target = "made",
       .again = "orxkdb load --replace made input.dump"},
      {.name = "load-replace", .command = "orxkdb load --replace db input.dump"},
      {.name = "undo", .command = "orxkdb undo db"},
      {.name = "undo-linking", .command = "orxkdb undo db", .exchangeFails = true},
      {.name = "backup",
       .command = "orxkdb backup db out.txt",
       .target = "out.txt",
       .isDatabase = false},
      {.name = "create",
       .command = "orxkdb create made",
       .target = "made",
       .survivesPowerLoss = false,
       .again = "orxrestore -i backup.txt -o made"},
  };
  return all;
}

test::Program programIn(const fs::path& directory, const std::string& command) {
  std::vector<std::string> words = test::wordsOf(command);
  const auto file = test::builtProgram(words.front().c_str());
  words.erase(words.begin());
  return {.file = file, .arguments = words, .directory = directory, .environment = environment};
}

Scene::Scene(const Operation& operation) : operation_(operation), start_(sharedStart()) {
  for (const std::string name : inputs) {
    if (operation_.reads(name)) inputs_[name] = test::readFile(start() / name);
  }
  before_ = content(start());
  previous_ = contentOf(start() / (operation_.target + previousSuffix), true);
  const test::TempDir directory;
  copyTo(directory.path());
  const TracedResult first = runTraced(program(directory.path()));
  calls_ = first.calls;
  after_ = content(directory.path());
  permissions_ = permissions(directory.path());
  const auto second = test::runProgram(programIn(directory.path(), operation_.again));
  afterAgain_ = content(directory.path());
  if (first.exitCode != 0 || second.exitCode != 0 || before_ == after_) {
    throw std::runtime_error(operation_.name + (" does not work: " + first.errors) + second.errors);
  }
}

void Scene::copyTo(const fs::path& directory) const {
  const bool isMade = std::string_view(operation_.name) == "create";
  for (const auto& entry : fs::directory_iterator(start())) {
    const std::string name = entry.path().filename();
    if (std::ranges::find(inputs, name) != inputs.end() && !operation_.reads(name)) continue;
    const fs::path copy = directory / name;
    if (entry.is_regular_file()) fs::copy_file(entry.path(), copy);
    if (entry.is_directory() && !isMade) fs::create_directory_symlink(entry.path(), copy);
  }
  if (!operation_.behindKill) return;
  const fs::path database = directory / operation_.target;
  fs::rename(database.string() + previousSuffix, database.string() + successorSuffix);
  fs::permissions(database, fs::perms::sticky_bit, fs::perm_options::add);
}

TracedProgram Scene::program(const fs::path& directory) const {
  return {.program = programIn(directory, operation_.command),
          .exchangeFails = operation_.exchangeFails};
}

std::string Scene::content(const fs::path& directory) const {
  return contentOf(directory / operation_.target, operation_.isDatabase);
}

unsigned Scene::permissions(const fs::path& directory) const {
  const fs::path target = directory / operation_.target;
  return static_cast<unsigned>(fs::status(target).permissions() & fs::perms::all);
}

CaseOutcome Scene::look(const fs::path& directory, const test::ProgramResult* result,
                        bool mayLeaveSuccessor) const {
  const std::string found = content(directory);
  const bool isNew = found == after_;
  if (!isNew && found != before_) return {.faults = "neither old nor new; "};
  std::string faults = faultInFiles(directory, isNew, mayLeaveSuccessor);
  if (result != nullptr) faults += faultInWords(*result, isNew);
  return {.isNew = isNew, .faults = std::move(faults)};
}

// With the new database, the old one is the previous generation or, until the next run, still has
// the successor's name or, where names cannot be exchanged, one of its own. With the old one, the
// generation before it is as it was.
std::string Scene::faultInGenerations(const fs::path& directory, bool isNew) const {
  const auto generation = [&](const char* suffix) {
    return contentOf(directory / (operation_.target + suffix), true);
  };
  const std::string previous = generation(previousSuffix), successor = generation(successorSuffix);
  if (isNew) {
    const bool waits =
        successor == before_ || (operation_.exchangeFails && generation(replacedSuffix) == before_);
    const bool isUndone = previous == absent && after_ == previous_;  // it is the database now
    const bool kept = previous == before_ || (waits && (previous == previous_ || isUndone));
    return kept ? "" : "the database is new and the old one is not kept; ";
  }
  const bool again = operation_.mayRewrite && previous == before_;
  const bool waits = operation_.behindKill && previous == absent && successor == previous_;
  return previous == previous_ || again || waits
             ? ""
             : "the database is old and its previous generation changed; ";
}

std::string Scene::faultInFiles(const fs::path& directory, bool isNew,
                                bool mayLeaveSuccessor) const {
  std::string faults;
  const fs::path target = directory / operation_.target;
  if (operation_.isDatabase) faults += faultInGenerations(directory, isNew);
  if (fs::exists(target) && permissions(directory) != permissions_) {
    faults += "the permissions changed; ";
  }
  if (!isNew && !operation_.mayRewrite &&
      test::readFile(target) != test::readFile(start() / operation_.target)) {
    faults += "the old file was written to; ";
  }
  for (const auto& [name, content] : inputs_) {
    if (test::readFile(directory / name) != content) faults += name + " changed; ";
  }
  for (const auto& entry : fs::directory_iterator(directory)) {
    const std::string name = entry.path().filename();
    const bool isKnown = fs::exists(start() / name) || name == operation_.target ||
                         name == bundle || name == operation_.target + previousSuffix;
    const bool isSuccessor =
        name == operation_.target + successorSuffix || name == operation_.target + replacedSuffix;
    const bool waits = operation_.behindKill && contentOf(entry.path(), true) == previous_;
    const bool mayStay = isSuccessor && (isNew || mayLeaveSuccessor || waits);
    if (!isKnown && !mayStay) faults += name + " is left behind; ";
  }
  return faults;
}

std::string Scene::faultInWords(const test::ProgramResult& result, bool isNew) const {
  // How the programs say that the change is made although the run failed, and that it is not.
  static const std::vector<const char*> told{"has what the run did", "the database is made",
                                             "has its new contents", "has its name"};
  static const std::vector<const char*> denied{
      "is unchanged", "is as it was", "no file was changed", "no database was made or changed"};
  static const std::vector<const char*> deniedNew{"no database was made", "no file was changed"};
  if (result.signal != 0) return "ended by signal " + std::to_string(result.signal) + "; ";
  if (result.exitCode == 0) return isNew ? "" : "exit code 0 and nothing is changed; ";
  if (result.exitCode != 5 && result.exitCode != 6 &&
      result.exitCode != (operation_.isRestore() ? 4 : 2)) {
    return "an exit code that means something else; ";
  }
  const bool isSaid = isNew || result.exitCode != 6 ||
                      hasAny(result.errors, before_ == absent ? deniedNew : denied);
  return isSaid && isNew == hasAny(result.errors, told)
             ? ""
             : std::string(isNew ? "new" : "old") + ", and standard error does not say so; ";
}

std::string Scene::faultInNextRun(const fs::path& directory, bool isNew, bool undone) const {
  const bool undoes = undone && isNew && operation_.isDatabase && before_ != absent;
  const std::string command = undoes  ? "orxkdb undo " + operation_.target
                              : isNew ? operation_.again
                                      : operation_.command;
  const auto run = test::runProgram(programIn(directory, command));
  if (run.exitCode != 0) return command + " fails: " + run.errors;
  if (content(directory) != (undoes ? before_ : isNew ? afterAgain_ : after_)) {
    return command + " makes another database; ";
  }
  const fs::path successor = directory / (operation_.target + successorSuffix);
  const fs::path replaced = directory / (operation_.target + replacedSuffix);
  const bool isLeft = !undoes && (fs::exists(successor) || fs::exists(replaced));
  return isLeft ? command + " leaves a file behind; " : "";
}

}  // namespace orx::faults
