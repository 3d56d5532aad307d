// What a failed call on the keyed database means to an operator. The same reason means one thing
// while a database is opened and another while it is used, and often the files tell which of two it
// is: each program has words for the situations that are told apart here.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

#include "platform/kdb_codes.h"
#include "platform/kdb_obstacle.h"

namespace orx::kdb {

enum class Situation : std::uint8_t {
  refused,       // nothing more is known
  noDatabase,    // nothing has the name
  onlyPrevious,  // nothing has the name, but the previous generation is there
  brokenLink,    // the name is a symbolic link that leads to no database
  noDirectory,   // for the database
  notADatabase,
  damaged,
  inUse,     // open in another program
  lostName,  // moved, removed or replaced by somebody else since it was opened, or a mount point
  noPermission,
  nameTaken,  // something else has the name, or that of a file beside it
  nameTooLong,
  nameEmpty,
  nameOfAnother,  // of a file that belongs to another database, whether it is there or not
  noRecords,      // there is none, or none is left
  noRecord,       // one that is needed is not there
  keyTaken,
  noSpace,
  noInodes,
  noMemory,
  tooManyFiles,
  noExchange,  // the file system can neither exchange nor link names
  ioError,
};
inline constexpr std::size_t situationCount = static_cast<std::size_t>(Situation::ioError) + 1;

// Of a table of words: its entries name their situation, and stand in the order of them all.
template <typename Table>
[[nodiscard]] consteval bool coversSituations(const Table& table) {
  if (table.size() != situationCount) return false;
  for (std::size_t i = 0; i < situationCount; ++i) {
    if (table[i].situation != static_cast<Situation>(i)) return false;
  }
  return true;
}

// What was being done with the database.
enum class Phase : std::uint8_t {
  opening,
  creating,
  running,
  closing,  // a new one may find its name taken
};

struct Diagnosis {
  Situation situation = Situation::refused;
  Obstacle obstacle = {};  // what kept the database from being opened, if it was that
};

// Of the failure in `status`, on the database `name`. Looks at the files as they are now.
[[nodiscard]] Diagnosis diagnose(const std::string& name, const kdbStatus& status, Phase phase);

}  // namespace orx::kdb
