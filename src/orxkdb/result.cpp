#include "orxkdb/result.h"

#include <sys/stat.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <system_error>

#include "messages/error_msg.h"
#include "platform/interruption.h"
#include "platform/kdb_obstacle.h"
#include "terminal/file_words.h"
#include "terminal/free_space.h"

namespace orx::orxkdb {

namespace {

// In `next`, {db} stands for the database as a word of a command, {dir} for its directory.
struct Sentence {
  kdb::Reason reason = kdb::Reason::noError;
  const char* what = "";
  const char* next = "";
  bool tellsState = false;  // what became of the database follows
};

constexpr std::array sentences{
    Sentence{kdb::Reason::notFound, "there is no such database",
             "check the name, \"ls {dir}\"; \"orxkdb create {db}\" makes a database"},
    Sentence{kdb::Reason::format, "this is no database, or it is damaged",
             "check the name; move a damaged database away and restore its backup into a new one"},
    Sentence{kdb::Reason::inUse, "the database is open in another program",
             "wait until that program has ended; \"fuser -v {db}\" tells which it is"},
    Sentence{kdb::Reason::authority, "no permission for the database or its directory",
             "run this as their owner; \"ls -ld {dir} {db}\" tells who that is"},
    Sentence{kdb::Reason::unique, "there is already a file of that name",
             "choose another name; \"orxkdb load --replace\" replaces the records of a database"},
    Sentence{kdb::Reason::length, "the name is too long for the file system",
             "choose a shorter name"},
    Sentence{kdb::Reason::arguments, "the name of the database is empty", "give its name"},
    Sentence{kdb::Reason::space, "there is no space left",
             "free space, see \"df -h {dir}\", and run this again", true},
    Sentence{kdb::Reason::storage, "memory ran out", "free memory and run this again", true},
    Sentence{kdb::Reason::ioError, "the disk could not be read or written",
             "look into the system's log", true},
    Sentence{kdb::Reason::systemReject, "the file system can neither exchange nor link names",
             "keep the database on another", true},
    Sentence{kdb::Reason::open, "too many files are open",
             "raise the limit with \"ulimit -n 1024\", or end other programs, and run this again",
             true},
};
constexpr Sentence noInodes{kdb::Reason::space, "the file system can hold no more files",
                            "remove files, see \"df -i {dir}\", and run this again", true};
constexpr Sentence nameOfAnother{
    kdb::Reason::arguments, "this is the name of a file that belongs to another database",
    "give it a name of its own: a change of the other database would replace it"};
constexpr Sentence lostName{kdb::Reason::inUse,
                            "the database was moved, removed or replaced by somebody else",
                            "look for it with \"ls -l {db}*\"", true};

// In the order of ObstacleKind; of the file that keeps a database from being changed.
constexpr std::array obstacles{
    Sentence{},
    Sentence{kdb::Reason::unique, "a directory or another file has a name that is needed",
             "move it away, \"ls -ld {db}\" shows it"},
    Sentence{kdb::Reason::unique,
             "this may be the database that a killed run replaced, or what it was making",
             "see which with \"orxkdb stat {db}\", then rename or remove it"},
    Sentence{kdb::Reason::authority,
             "this file cannot be read, renamed or replaced, which a change of the database needs",
             "see with \"ls -l {db}\", \"lsattr {db}\" and \"findmnt {db}\" why"},
    Sentence{kdb::Reason::authority,
             "the database before the last change could not become the previous generation",
             "rename it to end in .orx-previous"},
};
static_assert(obstacles.size() == static_cast<std::size_t>(kdb::ObstacleKind::replaced) + 1);
constexpr Sentence missingDirectory{kdb::Reason::notFound, "there is no directory for the database",
                                    "make the directory, or check the name"};
constexpr Sentence otherwise{kdb::Reason::noError, "the database refused the call",
                             "tell the maintainers with these codes", true};

const Sentence& sentenceOf(std::int32_t reason, const std::string& database) {
  if (reason == static_cast<std::int32_t>(kdb::Reason::space) && lacksInodes(database)) {
    return noInodes;
  }
  const auto* found = std::ranges::find(sentences, static_cast<kdb::Reason>(reason),
                                        [](const Sentence& entry) { return entry.reason; });
  return found == sentences.end() ? otherwise : *found;
}

std::string numberAndName(std::int32_t number, std::string_view name) {
  return std::to_string(number).append(" ").append(name);
}

std::string codesOf(const kdb::kdbStatus& status) {
  return " (" + numberAndName(status.returnCode, returnCodeName(status.returnCode)) + ", " +
         numberAndName(status.reason, reasonName(status.reason)) + ")";
}

std::string expanded(std::string_view text, const std::string& database) {
  const std::array<Placed, 2> places{
      {{"{db}", shellWord(database)}, {"{dir}", shellWord(parentOf(database))}}};
  return filled(text, places);
}

// The database was moved or removed, what it was before the last change is there.
bool onlyPreviousIsLeft(const std::string& database, const kdb::kdbStatus& status) {
  return status.reason == static_cast<std::int32_t>(kdb::Reason::notFound) &&
         kdb::looksLikeDatabase(kdb::previousName(database).c_str());
}

Result statusFailure(ExitCode code, const std::string& database, const kdb::kdbStatus& status,
                     const Sentence& sentence, const std::string& record = "") {
  Result failure = fail(code, sentence.what, absolutePath(database) + record + codesOf(status),
                        expanded(sentence.next, database));
  if (hasPublished()) {
    failure.addHint("the database has its new contents already");
  } else if (sentence.tellsState) {
    failure.addHint("the database is as it was");
  }
  return failure;
}

// Disk and memory can fail an opening that was in order.
ExitCode openCode(const kdb::kdbStatus& status) {
  switch (static_cast<kdb::Reason>(status.reason)) {
    case kdb::Reason::space:
    case kdb::Reason::storage:
    case kdb::Reason::ioError:
    case kdb::Reason::open:
    case kdb::Reason::systemReject:
      return exitFailed;
    default:
      return exitNotOpened;
  }
}

std::string withError(std::string where, int error) {
  return where.append(" (").append(std::generic_category().message(error)).append(")");
}

bool has(const kdb::kdbStatus& status, kdb::Reason reason) {
  return status.reason == static_cast<std::int32_t>(reason);
}

// The file beside the database that failed the opening; no text when it was not one.
Result obstacleFailure(const std::string& database, const kdb::kdbStatus& status) {
  const bool mayBe = has(status, kdb::Reason::unique) || has(status, kdb::Reason::authority) ||
                     has(status, kdb::Reason::inUse);
  const kdb::Obstacle obstacle = mayBe ? kdb::obstacleOf(database) : kdb::Obstacle();
  if (obstacle.kind == kdb::ObstacleKind::none) return {};
  return statusFailure(openCode(status), obstacle.path, status,
                       obstacles[static_cast<std::size_t>(obstacle.kind)]);
}

const Sentence& sentenceOfName(const std::string& database, const kdb::kdbStatus& status) {
  const bool isNamed = has(status, kdb::Reason::arguments) && !database.empty();
  return isNamed ? nameOfAnother : sentenceOf(status.reason, database);
}

const char* adviceFor(int error) {
  switch (error) {
    case ENOENT:
    case ENOTDIR:
    case ENAMETOOLONG:
      return "check the name and its directory";
    case EACCES:
    case EPERM:
    case EROFS:
      return "check the permissions, or choose another place";
    case EISDIR:
      return "give the name of a file in it";
    case EEXIST:
      return "choose another name";
    case ENOSPC:
    case EDQUOT:
    case EFBIG:
      return "free space, or choose another place";
    case EMFILE:
    case ENFILE:
      return "raise the limit of open files with \"ulimit -n 1024\", or end other programs";
    case EPIPE:
    case EBADF:
      return "keep the receiver of the output open, or give the name of a file";
    default:
      return "remove the cause and run this again";
  }
}

}  // namespace

Result fail(ExitCode code, std::string_view what, std::string_view where, std::string_view next) {
  std::string text(what);
  text.append(", ").append(where).append(", ").append(next);
  return {code, std::move(text), std::string(next)};
}

void Result::addHint(std::string_view more) {
  text.append("; ").append(more);
  hint.append("; ").append(more);
}

std::string_view Result::textWithoutHint() const {
  const std::string end = ", " + hint;
  return std::string_view(text).substr(0, text.size() - (text.ends_with(end) ? end.size() : 0));
}

Result openFailure(const std::string& database, const kdb::kdbStatus& status) {
  if (onlyPreviousIsLeft(database, status)) {
    return fail(exitNotOpened, "there is no such database, but its previous generation",
                absolutePath(database) + codesOf(status),
                "check the name; \"mv " + shellWord(kdb::previousName(database)) + " " +
                    shellWord(database) + "\" makes it the database");
  }
  if (Result failure = obstacleFailure(database, status); !failure.ok()) return failure;
  return statusFailure(openCode(status), database, status, sentenceOfName(database, status));
}

Result createFailure(const std::string& database, const kdb::kdbStatus& status) {
  struct stat file {};
  const bool isTaken = ::lstat(database.c_str(), &file) == 0;
  if (!isTaken) {
    if (Result failure = obstacleFailure(database, status); !failure.ok()) return failure;
  }
  return statusFailure(
      openCode(status), database, status,
      has(status, kdb::Reason::notFound) ? missingDirectory : sentenceOfName(database, status));
}

Result databaseFailure(const std::string& database, const kdb::kdbStatus& status,
                       const std::string& record) {
  return statusFailure(
      has(status, kdb::Reason::format) ? exitNotAsExpected : exitFailed, database, status,
      has(status, kdb::Reason::inUse) ? lostName : sentenceOf(status.reason, database), record);
}

Result lastFailure(const std::string& database, kdb::kdbHandle handle, const std::string& record) {
  kdb::kdbStatus status;
  (void)kdb::GetLastStatus(handle, status);
  return databaseFailure(database, status, record);
}

Result systemFailure(ExitCode code, std::string_view what, std::string where, int error) {
  return fail(code, what, withError(std::move(where), error), adviceFor(error));
}

Result fileFailure(ExitCode code, std::string_view what, const std::string& file, int error) {
  const std::string where = withError(absolutePath(file), error);
  if (error != ENOSPC || !lacksInodes(file)) return fail(code, what, where, adviceFor(error));
  return fail(code, what, where, expanded(noInodes.next, file));
}

Result changedFailure(const std::string& file) {
  return fail(exitFailed, "the file changed while it was read", absolutePath(file),
              "wait until the program that writes it has ended and run this again");
}

}  // namespace orx::orxkdb
