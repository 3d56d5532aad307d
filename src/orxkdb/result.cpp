#include "orxkdb/result.h"

#include <sys/stat.h>

#include <array>
#include <cerrno>
#include <system_error>

#include "messages/error_msg.h"
#include "platform/free_space.h"
#include "platform/interruption.h"
#include "platform/kdb_diagnosis.h"
#include "platform/kdb_files.h"
#include "terminal/file_words.h"

namespace orx::orxkdb {

namespace {

using kdb::Situation;

// In `next`, {db} stands for the database as a word of a command, {previous} for its previous
// generation, {dir} for its directory.
struct Words {
  const char* what = "";
  const char* next = "";
  bool tellsState = false;  // what became of the database follows
};
struct Sentence {
  Situation situation;
  Words words;
};

constexpr std::array sentences{
    Sentence{Situation::refused,
             {"the database refused the call", "tell the maintainers with these codes", true}},
    Sentence{Situation::noDatabase,
             {"there is no such database",
              "check the name, \"ls {dir}\"; \"orxkdb create {db}\" makes a database"}},
    Sentence{Situation::onlyPrevious,
             {"there is no such database, but its previous generation",
              "check the name; \"mv {previous} {db}\" makes it the database"}},
    Sentence{Situation::brokenLink,
             {"this is a symbolic link that leads to no database",
              "see with \"ls -l {db}\" where it leads, and put the database there"}},
    Sentence{Situation::noDirectory,
             {"there is no directory for the database", "make the directory, or check the name"}},
    Sentence{Situation::notADatabase, {"this is no database", "check the name"}},
    Sentence{Situation::damaged,
             {"the database is damaged", "move it away and restore its backup into a new one"}},
    Sentence{Situation::inUse,
             {"the database is open in another program",
              "wait until that program has ended; \"fuser -v {db}\" tells which it is"}},
    Sentence{Situation::lostName,
             {"the database was moved, removed or replaced by somebody else",
              "look for it with \"ls -l {db}*\"; the database is as it was"}},
    Sentence{Situation::noPermission,
             {"no permission for the database or its directory",
              "run this as their owner; \"ls -ld {dir} {db}\" tells who that is"}},
    Sentence{Situation::nameTaken,
             {"there is already a file of that name",
              "choose another name; \"orxkdb load --replace\" replaces the records of a database"}},
    Sentence{Situation::nameTooLong,
             {"the name is too long for the file system", "choose a shorter name"}},
    Sentence{Situation::nameEmpty, {"the name of the database is empty", "give its name"}},
    Sentence{Situation::nameOfAnother,
             {"the name belongs to another database",
              "check the name, or choose another: a change of that database replaces what has it"}},
    Sentence{Situation::noRecords,
             {"the database has no further record", "look at it with \"orxkdb check {db}\"", true}},
    Sentence{Situation::noRecord,
             {"a record is not in the database", "look at it with \"orxkdb check {db}\"", true}},
    Sentence{Situation::keyTaken,
             {"a record of that key is in the database already",
              "look at the input for records of one key", true}},
    Sentence{
        Situation::noSpace,
        {"there is no space left", "free space, see \"df -h {dir}\", and run this again", true}},
    Sentence{Situation::noInodes,
             {"the file system can hold no more files",
              "remove files, see \"df -i {dir}\", and run this again", true}},
    Sentence{Situation::noMemory, {"memory ran out", "free memory and run this again", true}},
    Sentence{Situation::tooManyFiles,
             {"too many files are open",
              "raise the limit with \"ulimit -n 1024\", or end other programs, and run this again",
              true}},
    Sentence{Situation::noExchange,
             {"the file system can neither exchange nor link names", "keep the database on another",
              true}},
    Sentence{Situation::ioError,
             {"the disk could not be read or written", "look into the system's log", true}},
};
static_assert(kdb::coversSituations(sentences));

// In the order of ObstacleKind; {db} stands for the file that keeps a database from being changed.
constexpr std::array obstacles{
    Words{},
    Words{"a directory or another file has a name that is needed",
          "move it away, \"ls -ld {db}\" shows it"},
    Words{"this may be the database that a killed run replaced, or what it was making",
          "see which with \"orxkdb stat {db}\", then rename or remove it"},
    Words{"this file cannot be read, renamed or replaced, which a change of the database needs",
          "see with \"ls -l {db}\", \"lsattr {db}\" and \"findmnt {db}\" why"},
    Words{"the database before the last change could not become the previous generation",
          "rename it to end in .orx-previous"},
};
static_assert(obstacles.size() == static_cast<std::size_t>(kdb::ObstacleKind::replaced) + 1);

const Words& wordsOf(Situation situation) {
  return sentences[static_cast<std::size_t>(situation)].words;
}

std::string numberAndName(std::int32_t number, std::string_view name) {
  return std::to_string(number).append(" ").append(name);
}

std::string codesOf(const kdb::kdbStatus& status) {
  return " (" + numberAndName(status.returnCode, returnCodeName(status.returnCode)) + ", " +
         numberAndName(status.reason, reasonName(status.reason)) + ")";
}

std::string expanded(std::string_view text, const std::string& database) {
  const std::array<Placed, 3> places{{{"{db}", shellWord(database)},
                                      {"{previous}", shellWord(kdb::previousName(database))},
                                      {"{dir}", shellWord(parentOf(database))}}};
  return filled(text, places);
}

Result statusFailure(ExitCode code, const std::string& database, const kdb::kdbStatus& status,
                     const Words& words, const std::string& record = "") {
  Result failure = fail(code, words.what, absolutePath(database) + record + codesOf(status),
                        expanded(words.next, database));
  if (hasPublished()) {
    failure.addHint("the database has its new contents already");
  } else if (words.tellsState) {
    failure.addHint(unchangedState(database));
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

// In an opening that failed it may be a file beside the database that the text is about.
Result notOpened(const std::string& database, const kdb::kdbStatus& status, kdb::Phase phase) {
  const kdb::Diagnosis found = kdb::diagnose(database, status, phase);
  if (found.obstacle.kind == kdb::ObstacleKind::none) {
    return statusFailure(openCode(status), database, status, wordsOf(found.situation));
  }
  return statusFailure(openCode(status), found.obstacle.path, status,
                       obstacles[static_cast<std::size_t>(found.obstacle.kind)]);
}

Result useFailure(const std::string& database, const kdb::kdbStatus& status, kdb::Phase phase,
                  const std::string& record = "") {
  const bool isFormat = status.reason == static_cast<std::int32_t>(kdb::Reason::format);
  const kdb::Diagnosis found = kdb::diagnose(database, status, phase);
  return statusFailure(isFormat ? exitNotAsExpected : exitFailed, database, status,
                       wordsOf(found.situation), record);
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
  return notOpened(database, status, kdb::Phase::opening);
}

Result createFailure(const std::string& database, const kdb::kdbStatus& status) {
  return notOpened(database, status, kdb::Phase::creating);
}

Result closeFailure(const std::string& database, const kdb::kdbStatus& status) {
  return useFailure(database, status, kdb::Phase::closing);
}

Result lastFailure(const std::string& database, kdb::kdbHandle handle, const std::string& record) {
  kdb::kdbStatus status;
  (void)kdb::GetLastStatus(handle, status);
  return useFailure(database, status, kdb::Phase::running, record);
}

// What could not be changed or replaced has its name, what could not be made has none. A disk that
// failed may not tell any more.
std::string_view unchangedState(const std::string& database) {
  struct stat file {};
  if (::lstat(database.c_str(), &file) == 0) return "the database is as it was";
  if (errno == ENOENT) return "no database was made";
  return "no database was made or changed";
}

Result systemFailure(ExitCode code, std::string_view what, std::string where, int error) {
  return fail(code, what, withError(std::move(where), error), adviceFor(error));
}

Result fileFailure(ExitCode code, std::string_view what, const std::string& file, int error) {
  const std::string where = withError(absolutePath(file), error);
  if (error != ENOSPC || !lacksInodes(file)) return fail(code, what, where, adviceFor(error));
  return fail(code, what, where, expanded(wordsOf(Situation::noInodes).next, file));
}

Result changedFailure(const std::string& file) {
  return fail(exitFailed, "the file changed while it was read", absolutePath(file),
              "wait until the program that writes it has ended and run this again");
}

}  // namespace orx::orxkdb
