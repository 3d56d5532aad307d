// The runs that are disturbed: what each starts from, what it makes, and what has to hold after it,
// however it ended.
#pragma once

#include <filesystem>
#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "tests/faults/traced_program.h"
#include "tests/support/temp_dir.h"

namespace orx::faults {

struct Operation {
  const char* name;
  const char* command;
  std::string target = "db";      // the file that it makes or changes
  bool isDatabase = true;         // or a text
  bool exchangeFails = false;     // on a file system that cannot exchange names
  bool mayRewrite = false;        // without its backup it publishes the same records again
  bool behindKill = false;        // an earlier run died before its database became the previous one
  bool survivesPowerLoss = true;  // as a whole: the messages of create come behind it
  const char* again = command;    // once the target is new

  [[nodiscard]] bool reads(const std::string& name) const {
    return (std::string(command) + " " + again).find(name) != std::string::npos;
  }
  [[nodiscard]] bool isRestore() const {
    return std::string_view(command).starts_with("orxrestore ");
  }
};
[[nodiscard]] const std::vector<Operation>& operations();

struct CaseOutcome {
  bool isNew = false;
  std::string faults = {};  // empty: as it should be
  bool isMissed = false;    // the run took another way and did not come to the fault
};

// A built program with its words, which blanks separate.
[[nodiscard]] test::Program programIn(const std::filesystem::path& directory,
                                      const std::string& command);

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

  // Whether the old or the new state is in `directory`, which of them exit code and words of the
  // run tell, and what is wrong with the other generations, the inputs and the names. A run without
  // a result died; it may leave its successor.
  [[nodiscard]] CaseOutcome look(const std::filesystem::path& directory,
                                 const test::ProgramResult* result, bool mayLeaveSuccessor) const;
  // Runs the operation again, undisturbed, from what `directory` holds; or, with `undone` and where
  // the database is new, takes the run back.
  [[nodiscard]] std::string faultInNextRun(const std::filesystem::path& directory, bool isNew,
                                           bool undone) const;

 private:
  [[nodiscard]] std::string content(const std::filesystem::path& directory) const;
  [[nodiscard]] unsigned permissions(const std::filesystem::path& directory) const;
  [[nodiscard]] std::string faultInGenerations(const std::filesystem::path& directory,
                                               bool isNew) const;
  [[nodiscard]] std::string faultInFiles(const std::filesystem::path& directory, bool isNew,
                                         bool mayLeaveSuccessor) const;
  [[nodiscard]] std::string faultInWords(const test::ProgramResult& result, bool isNew) const;

  const Operation& operation_;
  const test::TempDir& start_;
  std::vector<SystemCall> calls_;
  // Of the target, and of the generation behind it before the run.
  std::string before_, after_, afterAgain_, previous_;
  unsigned permissions_ = 0;                   // of the target, when it was made
  std::map<std::string, std::string> inputs_;  // names and contents that never change
};

}  // namespace orx::faults
