// The commands of both programs, called in process on the files of a scratch directory.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "tests/fuzz/fuzz_files.h"

namespace orx::fuzz {

// The files that commands get, all in one directory.
struct Workplace {
  const Scratch& scratch;
  std::string database = scratch.file("db");  // what the input makes of it
  std::string backup = scratch.file("backup");
  std::string sound = scratch.file("sound");  // a database without a fault
  std::string output = scratch.file("output");

  // Nothing but a backup and a database that is without fault, twice.
  void fill(std::string_view backupText, std::string_view soundBytes) const;

  [[nodiscard]] std::string successor() const { return database + ".orx-new"; }
  [[nodiscard]] std::string previous() const { return database + ".orx-previous"; }
};

enum class Wording { text, json };

// Each reads `database`, and some the others as well; the number of them, and one by its number.
// The exit code. Claims that a code is one of those that are documented, that a failure has its
// words, that JSON is JSON, and that nothing was changed.
[[nodiscard]] std::size_t readingCommands();
int readDatabase(const Workplace& place, std::size_t command, Wording wording);

// The same for commands that read `backup` alone, or beside the sound database.
[[nodiscard]] std::size_t backupCommands();
int readBackup(const Workplace& place, std::size_t command, Wording wording);

enum class Change { restore, prototypes, merge, rebuild, load, undo };
inline constexpr std::size_t changes = 6;

// Changes `database`, of which `before` are the bytes. The exit code. Claims that the file under
// its name has these bytes afterwards, or that a whole new database has the name, the old one is
// beside it and can be had back; and that nothing else is left behind.
int changeDatabase(const Workplace& place, Change change, std::string_view before);

// The exit code of a single one.
int restore(const Workplace& place);
int merge(const Workplace& place);
int rebuild(const Workplace& place);
// Whether a merge of the backup would succeed, as `orxkdb plan` has it.
bool planSaysYes(const Workplace& place);
// Whether a comparison finds the two the same, as far as it can read them.
bool areSame(const std::string& a, const std::string& b);
// Whether the chains and the texts of all objects are in order, so that nothing is lost when they
// are written again.
bool hasSoundTexts(const std::string& database);

// The bytes of a database of two dozen records, the same for the same seed.
[[nodiscard]] std::string soundDatabase(const Scratch& scratch, std::uint64_t seed = 1);
// The backup lines of as many.
[[nodiscard]] std::string soundBackup(std::uint64_t seed);

}  // namespace orx::fuzz
