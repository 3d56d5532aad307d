// The commands of both programs, called in process on the files of a scratch directory.
#pragma once

#include <string>
#include <string_view>

#include "tests/support/temp_dir.h"

namespace orx::fuzz {

// The bytes of a database of two dozen records, and the backup lines of as many others.
[[nodiscard]] std::string soundDatabase(const std::string& scratchFile);
[[nodiscard]] std::string soundBackup();

// The files that commands get, all in one directory.
struct Workplace {
  test::TempDir scratch;
  std::string database = scratch.file("db");  // what the input makes of it
  std::string backup = scratch.file("backup");
  std::string sound = scratch.file("sound");  // a database without a fault
  std::string output = scratch.file("output");
  std::string soundBytes = soundDatabase(scratch.file("made"));

  // Nothing but these two and the sound database.
  void fill(std::string_view databaseBytes, std::string_view backupText) const;
};

enum class Wording { text, json };

// Commands by their numbers, of which any is taken modulo the number of them. Each ends with a code
// that is documented, a failure has its words, JSON is JSON, and nothing is changed.
void readDatabase(const Workplace& place, std::size_t command, Wording wording);
// The same for commands that read the backup alone, or beside the sound database.
[[nodiscard]] std::size_t backupCommands();
void readBackup(const Workplace& place, std::size_t command, Wording wording);

enum class Change { restore, prototypes, merge, rebuild, load, undo };

// Changes the database, and gives the exit code.
int apply(const Workplace& place, Change change);
// The same, where the database has the bytes `before`. It has them afterwards, or a whole new one
// has the name, the old one is beside it and can be had back; and nothing else is left behind.
int changeDatabase(const Workplace& place, Change change, std::string_view before);

// A database of these bytes and a sound backup, handed to a command that reads or changes one.
[[nodiscard]] std::size_t databaseCommands();
void handOver(const Workplace& place, const std::string& bytes, std::size_t command,
              Wording wording);

// Whether a merge of the backup would succeed, as `orxkdb plan` has it.
bool planSaysYes(const Workplace& place);
// Whether a comparison finds the two the same, as far as it can read them.
bool areSame(const std::string& a, const std::string& b);
// Whether the chains and the texts of all objects are in order, so that nothing is lost when they
// are written again.
bool hasSoundTexts(const std::string& database);

}  // namespace orx::fuzz
