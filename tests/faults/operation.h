// The runs that are disturbed: what each starts from, what it makes, and what has to hold after it,
// however it ended.
#pragma once

#include <filesystem>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "tests/faults/traced_program.h"
#include "tests/support/temp_dir.h"

namespace orx::faults {

struct Operation {
  const char* name;
  const char* program;
  std::vector<std::string> arguments;
  std::string target = "db";      // the file that it makes or changes
  bool isDatabase = true;         // or a text
  bool exchangeFails = false;     // on a file system that cannot exchange names
  bool mayRewrite = false;        // without its backup it publishes the same records again
  bool behindKill = false;        // an earlier run died before its database became the previous one
  bool survivesPowerLoss = true;  // as a whole: the messages of create come behind it
  std::vector<std::string> again = {};  // orxkdb's or its own arguments once the target is new;
                                        // empty: as before
  const char* againProgram = nullptr;

  [[nodiscard]] bool isRestore() const { return program == std::string_view("orxrestore"); }
};
[[nodiscard]] const std::vector<Operation>& operations();

// Every record of a database under its key, in order, or every byte of a text; "absent" and
// "unreadable" stand for what has none.
[[nodiscard]] std::string contentOf(const std::filesystem::path& file, bool isDatabase);

// An operation with the directory that it starts from, and what an undisturbed run makes of it.
class Scene {
 public:
  explicit Scene(const Operation& operation);

  [[nodiscard]] const Operation& operation() const { return operation_; }
  [[nodiscard]] const std::filesystem::path& start() const { return start_.path(); }
  [[nodiscard]] const std::vector<SystemCall>& calls() const { return calls_; }
  // A copy of the start; the messages are linked to, not copied.
  void copyTo(const std::filesystem::path& directory) const;
  [[nodiscard]] TracedProgram program(const std::filesystem::path& directory) const;

  // Whether `directory` holds the new state; none when it holds neither.
  [[nodiscard]] std::optional<bool> isNew(const std::filesystem::path& directory) const;
  // What is wrong with the other generations, the inputs and the names in `directory`; empty for
  // nothing. A run that died may leave its successor.
  [[nodiscard]] std::string faultInFiles(const std::filesystem::path& directory, bool isNew,
                                         bool mayLeaveSuccessor) const;
  // What is wrong with exit code and messages.
  [[nodiscard]] std::string faultInWords(const TracedResult& result, bool isNew) const;
  // Runs the operation again, undisturbed, from what `directory` holds; or, with `undone` and where
  // the database is new, takes the run back.
  [[nodiscard]] std::string faultInNextRun(const std::filesystem::path& directory, bool isNew,
                                           bool undone) const;

 private:
  [[nodiscard]] unsigned permissions(const std::filesystem::path& directory) const;
  [[nodiscard]] std::string content(const std::filesystem::path& directory) const;
  [[nodiscard]] std::string faultInUndo(const std::filesystem::path& directory) const;
  [[nodiscard]] std::string faultInGenerations(const std::filesystem::path& directory,
                                               bool isNew) const;
  // Exit code and errors; the operation itself, or what follows it once its target is new.
  struct Run {
    int exitCode;
    std::string errors;
  };
  [[nodiscard]] Run runUndisturbed(const std::filesystem::path& directory, bool again) const;

  const Operation& operation_;
  const test::TempDir& start_;
  std::vector<SystemCall> calls_;
  std::string before_;
  std::string previous_;  // before the run
  std::string after_;
  std::string afterAgain_;
  unsigned permissions_ = 0;         // of the target, when it was made
  std::vector<std::string> inputs_;  // names and contents that never change
  std::map<std::string, std::string> inputContents_;
};

}  // namespace orx::faults
