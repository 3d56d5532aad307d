#include "tests/faults/operation.h"

#include <algorithm>
#include <array>
#include <stdexcept>

#include "platform/kdb.h"
#include "tests/support/places.h"
#include "tests/support/run_program.h"

namespace orx::faults {

namespace {

namespace fs = std::filesystem;

constexpr const char* absent = "absent";
constexpr const char* unreadable = "unreadable";
constexpr const char* bundle = "PRESTORE_restore";
constexpr const char* successorSuffix = ".orx-new";
constexpr const char* replacedSuffix = ".orx-old";
constexpr const char* previousSuffix = ".orx-previous";

// A leak is not looked for here: the tool that does cannot work beside another tracer.
const std::vector<std::string> environment{"LC_ALL=C", "ASAN_OPTIONS=detect_leaks=0",
                                           "TMPDIR=/tmp"};

test::ProgramResult runIn(const fs::path& directory, const char* program,
                          std::vector<std::string> arguments) {
  return test::runProgram({.file = test::builtProgram(program),
                           .arguments = std::move(arguments),
                           .directory = directory,
                           .environment = environment});
}

void mustRun(const fs::path& directory, const char* program, std::vector<std::string> arguments) {
  const std::string words = arguments.front();
  const test::ProgramResult result = runIn(directory, program, std::move(arguments));
  if (result.exitCode != 0)
    throw std::runtime_error(program + (" " + words) + ": " + result.errors);
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
  mustRun(directory, "orxkdb", {"create", "db"});
  mustRun(directory, "orxkdb", {"sample", "--objects", "20", "--seed", "5", "older.txt"});
  mustRun(directory, "orxkdb", {"sample", "--objects", "40", "--seed", "3", "counted.txt"});
  mustRun(directory, "orxkdb", {"sample", "--objects", "30", "backup.txt"});
  mustRun(directory, "orxkdb",
          {"sample", "--objects", "1800", "--seed", "9", "--order", "random", "shuffled.txt"});
  test::writeFile(directory / "base.txt",
                  withWrongCounts(test::readFile(directory / "counted.txt")));
  mustRun(directory, "orxrestore", {"-i", "backup.txt", "-o", "db"});
  mustRun(directory, "orxkdb", {"dump", "db", "input.dump"});
  mustRun(directory, "orxrestore", {"-i", "older.txt", "-o", "db"});
  mustRun(directory, "orxrestore", {"-i", "base.txt", "-o", "db"});
  test::writeFile(directory / "out.txt", "what was written before\n");
  for (const char* const name : {"older.txt", "counted.txt", "base.txt"}) {
    fs::remove(directory / name);
  }
}

// Nobody changes it: every run gets a copy.
const test::TempDir& sharedStart() {
  static const test::TempDir directory;
  static const bool made = (makeStart(directory.path()), true);
  (void)made;
  return directory;
}

bool hasAny(const std::string& text, const std::vector<const char*>& words) {
  return std::ranges::any_of(
      words, [&text](const char* word) { return text.find(word) != std::string::npos; });
}

}  // namespace

const std::vector<Operation>& operations() {
  static const std::vector<Operation> all{
      {.name = "restore", .program = "orxrestore", .arguments = {"-i", "backup.txt", "-o", "db"}},
      {.name = "restore-shuffled",
       .program = "orxrestore",
       .arguments = {"-i", "shuffled.txt", "-o", "db"}},
      {.name = "restore-linking",
       .program = "orxrestore",
       .arguments = {"-i", "backup.txt", "-o", "db"},
       .exchangeFails = true},
      {.name = "restore-behind-kill",
       .program = "orxrestore",
       .arguments = {"-i", "backup.txt", "-o", "db"},
       .behindKill = true},
      {.name = "merge",
       .program = "orxrestore",
       .arguments = {"-i", "backup.txt", "-m", "db"},
       .mayRewrite = true},
      {.name = "use-count", .program = "orxrestore", .arguments = {"-u", "db"}},
      {.name = "load",
       .program = "orxkdb",
       .arguments = {"load", "made", "input.dump"},
       .target = "made",
       .again = {"load", "--replace", "made", "input.dump"}},
      {.name = "load-replace",
       .program = "orxkdb",
       .arguments = {"load", "--replace", "db", "input.dump"}},
      {.name = "undo", .program = "orxkdb", .arguments = {"undo", "db"}},
      {.name = "undo-linking",
       .program = "orxkdb",
       .arguments = {"undo", "db"},
       .exchangeFails = true},
      {.name = "backup",
       .program = "orxkdb",
       .arguments = {"backup", "db", "out.txt"},
       .target = "out.txt",
       .isDatabase = false},
      {.name = "create",
       .program = "orxkdb",
       .arguments = {"create", "made"},
       .target = "made",
       .survivesPowerLoss = false,
       .again = {"-i", "backup.txt", "-o", "made"},
       .againProgram = "orxrestore"},
  };
  return all;
}

std::string contentOf(const fs::path& file, bool isDatabase) {
  if (!fs::exists(fs::symlink_status(file))) return absent;
  if (!isDatabase) return test::readFile(file);
  kdb::kdbHandle database;
  kdb::kdbStatus status;
  const std::string name = file.string();
  if (kdb::kdbOpen(name.c_str(), static_cast<std::int32_t>(name.size()), kdb::openForReading,
                   database, status) != 0) {
    return unreadable;
  }
  std::string content = "database";
  kdb::kdbHandle cursor;
  std::int32_t code = kdb::OpenCursor(database, nullptr, 0, cursor);
  std::array<std::uint8_t, kdb::recordSize> record{};
  std::array<std::uint8_t, kdb::keySize> key{};
  while (code == 0) {
    std::int32_t length = 0;
    code = kdb::ReadNextFromCursor(cursor, 0, record.data(), kdb::recordSize, length);
    if (code != 0) break;
    (void)kdb::GetCursorKey(cursor, key.data(), kdb::keySize);
    content.append(key.begin(), key.end()).append(record.begin(), record.end());
  }
  (void)kdb::AbandonDatabase(database);
  return code == static_cast<std::int32_t>(kdb::endOfData.code) ? content : unreadable;
}

Scene::Scene(const Operation& operation) : operation_(operation), start_(sharedStart()) {
  for (const auto* const name : {"backup.txt", "shuffled.txt", "input.dump"}) {
    inputContents_[name] = test::readFile(start() / name);
  }
  before_ = content(start());
  previous_ = contentOf(start() / (operation_.target + previousSuffix), true);
  const test::TempDir directory;
  copyTo(directory.path());
  const TracedResult first = runTraced(program(directory.path()));
  calls_ = first.calls;
  after_ = content(directory.path());
  permissions_ = permissions(directory.path());
  const Run second = runUndisturbed(directory.path(), true);
  afterAgain_ = content(directory.path());
  if (first.exitCode != 0 || second.exitCode != 0 || before_ == after_) {
    throw std::runtime_error(std::string(operation_.name) + " does not work: " + first.errors +
                             second.errors);
  }
}

void Scene::copyTo(const fs::path& directory) const {
  for (const auto& entry : fs::directory_iterator(start())) {
    const fs::path copy = directory / entry.path().filename();
    const bool isMade = std::string_view(operation_.name) == "create";
    if (entry.is_regular_file()) fs::copy_file(entry.path(), copy);
    if (entry.is_directory() && !isMade) fs::create_directory_symlink(entry.path(), copy);
  }
  if (!operation_.behindKill) return;
  const fs::path database = directory / operation_.target;
  fs::rename(database.string() + previousSuffix, database.string() + successorSuffix);
  fs::permissions(database, fs::perms::sticky_bit, fs::perm_options::add);
}

TracedProgram Scene::program(const fs::path& directory) const {
  return {.file = test::builtProgram(operation_.program),
          .arguments = operation_.arguments,
          .directory = directory,
          .environment = environment,
          .exchangeFails = operation_.exchangeFails};
}

std::string Scene::content(const fs::path& directory) const {
  return contentOf(directory / operation_.target, operation_.isDatabase);
}

unsigned Scene::permissions(const fs::path& directory) const {
  const fs::path target = directory / operation_.target;
  return static_cast<unsigned>(fs::status(target).permissions() & fs::perms::all);
}

std::optional<bool> Scene::isNew(const fs::path& directory) const {
  const std::string found = content(directory);
  if (found == before_) return false;
  if (found == after_) return true;
  return std::nullopt;
}

// With the new database, the old one is the previous generation or, until the next run, still has
// the successor's name or, where names cannot be exchanged, one of its own. With the old one, the
// generation before it is as it was.
std::string Scene::faultInGenerations(const fs::path& directory, bool isNew) const {
  const std::string previous = contentOf(directory / (operation_.target + previousSuffix), true);
  const std::string successor = contentOf(directory / (operation_.target + successorSuffix), true);
  if (isNew) {
    const std::string linked = contentOf(directory / (operation_.target + replacedSuffix), true);
    const bool waits = successor == before_ || (operation_.exchangeFails && linked == before_);
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
  if (operation_.isDatabase) faults += faultInGenerations(directory, isNew);
  if (fs::exists(directory / operation_.target) && permissions(directory) != permissions_) {
    faults += "the permissions changed; ";
  }
  for (const auto& [name, content] : inputContents_) {
    if (test::readFile(directory / name) != content) faults += name + " changed; ";
  }
  for (const auto& entry : fs::directory_iterator(directory)) {
    const std::string name = entry.path().filename();
    const bool isKnown = fs::exists(start() / name) || name == operation_.target ||
                         name == bundle || name == operation_.target + previousSuffix;
    const bool isSuccessor =
        name == operation_.target + successorSuffix || name == operation_.target + replacedSuffix;
    if (!isKnown && !isSuccessor) faults += name + " is left behind; ";
    const bool waits = operation_.behindKill && contentOf(entry.path(), true) == previous_;
    if (isSuccessor && !isNew && !mayLeaveSuccessor && !waits) faults += name + " is left behind; ";
  }
  return faults;
}

std::string Scene::faultInWords(const TracedResult& result, bool isNew) const {
  // How the programs say that the change is made although the run failed.
  static const std::vector<const char*> told{"has what the run did", "the database is made",
                                             "has its new contents", "has its name"};
  static const std::vector<const char*> denied{"is unchanged", "is as it was"};
  // What is no reason here.
  static const std::vector<const char*> wrong{"InUse", "NotFound", "Authority", "Format"};
  if (result.signal != 0) return "ended by signal " + std::to_string(result.signal) + "; ";
  if (result.exitCode == 0) {
    return isNew ? "" : "exit code 0 and nothing is changed; ";
  }
  const bool isOrxkdb = std::string_view(operation_.program) == "orxkdb";
  const std::vector<int> codes = isOrxkdb ? std::vector{2, 5, 6} : std::vector{4, 5, 6};
  if (std::ranges::find(codes, result.exitCode) == codes.end()) {
    return "exit code " + std::to_string(result.exitCode) + "; ";
  }
  if (isNew != hasAny(result.errors, told)) {
    return std::string("exit code ") + std::to_string(result.exitCode) + ", " +
           (isNew ? "new" : "old") + ", and standard error says something else; ";
  }
  if (hasAny(result.output + result.errors, wrong)) return "another reason is told; ";
  if (result.exitCode == 6 && !isNew && !hasAny(result.errors, denied)) {
    return "exit code 6, old, and standard error does not say so; ";
  }
  return "";
}

Scene::Run Scene::runUndisturbed(const fs::path& directory, bool again) const {
  const bool other = again && !operation_.again.empty();
  const char* const program =
      other && operation_.againProgram != nullptr ? operation_.againProgram : operation_.program;
  const test::ProgramResult result =
      runIn(directory, program, other ? operation_.again : operation_.arguments);
  return {result.exitCode, result.errors};
}

std::string Scene::faultInUndo(const fs::path& directory) const {
  const test::ProgramResult result = runIn(directory, "orxkdb", {"undo", operation_.target});
  if (result.exitCode != 0) return "undo fails: " + result.errors;
  return content(directory) == before_ ? "" : "undo makes another database; ";
}

std::string Scene::faultInNextRun(const fs::path& directory, bool isNew, bool undone) const {
  if (undone && isNew && operation_.isDatabase && before_ != absent) return faultInUndo(directory);
  const Run run = runUndisturbed(directory, isNew);
  if (run.exitCode != 0) {
    return "the next run ends with " + std::to_string(run.exitCode) + ": " + run.errors;
  }
  if (content(directory) != (isNew ? afterAgain_ : after_))
    return "the next run makes another database; ";
  for (const char* const suffix : {successorSuffix, replacedSuffix}) {
    if (fs::exists(directory / (operation_.target + suffix))) {
      return "the next run leaves " + (operation_.target + suffix) + "; ";
    }
  }
  return "";
}

}  // namespace orx::faults
