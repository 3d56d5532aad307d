#include "platform/kdb_diagnosis.h"

#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <system_error>

#include "platform/file.h"
#include "platform/free_space.h"
#include "platform/kdb.h"
#include "platform/kdb/publish.h"
#include "platform/kdb_files.h"
#include "platform/taken_name.h"

namespace orx::kdb {

namespace {

bool isBeforeUse(Phase phase) {
  return phase == Phase::opening || phase == Phase::creating;
}

Situation withoutDatabase(const std::string& name, Phase phase) {
  if (!isBeforeUse(phase)) return Situation::noRecord;
  if (phase == Phase::creating) return Situation::noDirectory;
  if (isTaken(name)) return Situation::brokenLink;
  std::error_code error;
  if (!std::filesystem::is_directory(directoryOf(name), error)) return Situation::noDirectory;
  const DatabasePaths paths = DatabasePaths::of(name);
  if (!paths.namesFit()) return Situation::nameTooLong;
  if (paths.isOfAnother()) return Situation::nameOfAnother;
  const bool hasPrevious = looksLikeDatabase(previousName(name).c_str());
  return hasPrevious ? Situation::onlyPrevious : Situation::noDatabase;
}

Situation situationOf(const std::string& name, Reason reason, Phase phase) {
  switch (reason) {
    case Reason::notFound:
      return withoutDatabase(name, phase);
    case Reason::format:
      return looksLikeDatabase(name.c_str()) ? Situation::damaged : Situation::notADatabase;
    case Reason::inUse:
      return isBeforeUse(phase) ? Situation::inUse : Situation::lostName;
    case Reason::authority:
      return Situation::noPermission;
    case Reason::unique:
      return phase == Phase::running ? Situation::keyTaken : Situation::nameTaken;
    case Reason::length:
      return Situation::nameTooLong;
    case Reason::arguments:
      if (!isBeforeUse(phase)) return Situation::refused;
      return name.empty() ? Situation::nameEmpty : Situation::nameOfAnother;
    case Reason::endOfFile:
      return Situation::noRecords;
    case Reason::space:
      return lacksInodes(name) ? Situation::noInodes : Situation::noSpace;
    case Reason::storage:
      return Situation::noMemory;
    case Reason::open:
      return Situation::tooManyFiles;
    case Reason::systemReject:
      return Situation::noExchange;
    case Reason::ioError:
      return Situation::ioError;
    case Reason::noError:
    case Reason::notHeld:
      break;
  }
  return Situation::refused;
}

// A database that may not even be read; nothing beside it matters then.
bool isHidden(const std::string& name) {
  return ::access(name.c_str(), R_OK) != 0 && errno == EACCES;
}

// The file that kept a database from being opened for a change explains more than the failure,
// where it is not the database. One may also have come between the opening and the first change.
bool mayBeObstacle(const std::string& name, Reason reason, Phase phase) {
  if (phase == Phase::creating && isTaken(name)) return false;
  if (!isBeforeUse(phase)) return reason == Reason::unique;
  if (reason == Reason::authority) return !isHidden(name);
  return reason == Reason::unique || reason == Reason::inUse;
}

}  // namespace

Diagnosis diagnose(const std::string& name, const kdbStatus& status, Phase phase) {
  const auto reason = static_cast<Reason>(status.reason);
  Diagnosis diagnosis{situationOf(name, reason, phase)};
  if (mayBeObstacle(name, reason, phase)) diagnosis.obstacle = obstacleOf(name);
  return diagnosis;
}

}  // namespace orx::kdb
