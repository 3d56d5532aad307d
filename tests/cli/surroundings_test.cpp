// The programs among hostile surroundings: whatever they are, the database is the old one or the
// new one, whole, exit code and words tell which, and nothing else is left behind.
#include <fcntl.h>
#include <gmock/gmock.h>
#include <sched.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <csignal>
#include <list>

#include "restore/exit_codes.h"
#include "tests/faults/operation.h"
#include "tests/support/child_conditions.h"
#include "tests/support/program_runs.h"

namespace orx::test {
namespace {

namespace fs = std::filesystem;
using faults::Operation, faults::TracedCall;
using testing::AnyOf, testing::HasSubstr;

constexpr int cannotBeMade = 77;
constexpr rlim_t megabyte = rlim_t{1} << 20;

// The operations where names can be exchanged.
const std::list<faults::Scene>& scenes() {
  static const std::list<faults::Scene> all = [] {
    std::list<faults::Scene> made;
    for (const Operation& operation : faults::operations()) {
      if (!operation.exchangeFails && !operation.behindKill) made.emplace_back(operation);
    }
    return made;
  }();
  return all;
}

// A copy of what an operation starts from, and a run in it.
struct Attempt {
  explicit Attempt(const faults::Scene& of) : scene(of) {
    fs::permissions(directory.path(), fs::perms(0755));
    scene.copyTo(directory.path());
    traced = scene.program(directory.path());
  }
  // The old state with a failure, or the new one; `words` says whether the program has any.
  void expectOldOrNew(const ProgramResult& ended, bool words = true) {
    const auto outcome = scene.look(directory.path(), words ? &ended : nullptr, false);
    EXPECT_EQ(outcome.faults, "") << ended.errors;
    isNew = outcome.isNew;
  }
  const ProgramResult& under(std::function<void()> condition) {
    traced.program.inChild = std::move(condition);
    result = runProgram(traced.program);
    expectOldOrNew(result, result.exitCode != 127 && result.exitCode != cannotBeMade);
    return result;
  }

  const faults::Scene& scene;
  TempDir directory;
  faults::TracedProgram traced;
  ProgramResult result = {};
  bool isNew = false;
};

std::function<void()> limited(decltype(RLIMIT_AS) resource, rlim_t most) {
  return [=] {
    const rlimit limit{most, most};
    (void)setrlimit(resource, &limit);
  };
}

// Sanitizers need more memory and files than their programs do.
bool areSanitized() {
  return runProgram({.file = builtProgram("orxkdb"),
                     .arguments = {"--version"},
                     .inChild = limited(RLIMIT_AS, 4096 * megabyte)})
             .exitCode != 0;
}

void becomeNobody() {
  if (setgid(65534) != 0 || setuid(65534) != 0) _exit(cannotBeMade);
  if (access(builtProgram("orxkdb").c_str(), X_OK) != 0) _exit(cannotBeMade);
}

TEST(Surroundings, OutputThatNobodyTakesDoesNotStopAChange) {
  std::vector<std::function<void()>> conditions(brokenOutputs.begin(), brokenOutputs.end());
  conditions.emplace_back([] {
    for (const int stream : {0, 1, 2}) (void)close(stream);
  });
  for (const faults::Scene& scene : scenes()) {
    for (const auto& broken : conditions) {
      EXPECT_EQ(Attempt(scene).under(broken).exitCode, 0) << scene.operation().name;
    }
  }
}

TEST(Surroundings, WithoutPermissionNothingIsChanged) {
  if (geteuid() != 0) GTEST_SKIP() << "needs a second user";
  for (const faults::Scene& scene : scenes()) {
    Attempt run(scene);
    for (const char* name : {"backup.txt", "shuffled.txt"}) {
      const fs::path input = run.directory / name;
      if (fs::exists(input)) fs::permissions(input, fs::perms(0644));
    }
    const auto& result = run.under(becomeNobody);
    if (result.exitCode == cannotBeMade) GTEST_SKIP() << "the programs are hidden from others";
    EXPECT_EQ(result.exitCode, exitDatabaseNotOpened) << scene.operation().name << result.errors;
    EXPECT_THAT(result.errors, HasSubstr("permission")) << scene.operation().name;
  }
  Attempt undo(scenes().front());
  const std::string previous = undo.directory.file("db.orx-previous");
  for (const char* name : {"", "db"}) (void)!chown(undo.directory.file(name).c_str(), 65534, 65534);
  undo.traced.program = faults::programIn(undo.directory.path(), "orxkdb undo db");
  EXPECT_EQ(undo.under(becomeNobody).exitCode, exitDatabaseNotOpened);
  EXPECT_THAT(undo.result.errors, HasSubstr(", " + previous + " (11 Authority"));
}

TEST(Surroundings, AReadOnlyFileSystemIsNotWrittenTo) {
  for (const faults::Scene& scene : scenes()) {
    Attempt run(scene);
    const std::string path = run.directory.path();
    const auto readOnly = [&path] {
      const bool ready =
          unshare(CLONE_NEWNS) == 0 && mount("none", "/", nullptr, MS_REC | MS_PRIVATE, "") == 0 &&
          mount(path.c_str(), path.c_str(), nullptr, MS_BIND, nullptr) == 0 &&
          mount(nullptr, path.c_str(), nullptr, MS_REMOUNT | MS_BIND | MS_RDONLY, nullptr) == 0 &&
          chdir(path.c_str()) == 0;
      if (!ready) _exit(cannotBeMade);
    };
    const auto& result = run.under(readOnly);
    if (result.exitCode == cannotBeMade) GTEST_SKIP() << "no right to mount";
    EXPECT_EQ(result.exitCode, exitDatabaseNotOpened) << scene.operation().name << result.errors;
  }
}

TEST(Surroundings, AFileThatMayNotGrowIsAFullDisk) {
  for (const faults::Scene& scene : scenes()) {
    for (const rlim_t limit : {rlim_t{100}, rlim_t{12288}}) {
      SCOPED_TRACE(scene.operation().name + (" " + std::to_string(limit)));
      const auto result = Attempt(scene).under(fileLimit(limit));
      EXPECT_THAT(result.exitCode, AnyOf(0, exitFailed));
      if (result.exitCode == exitFailed) {
        EXPECT_THAT(result.errors, AnyOf(HasSubstr("df -h ."), HasSubstr("free space")));
      }
    }
  }
}

// From too little for the start of the program up to enough for the run.
TEST(Surroundings, FewOpenFilesAndLittleMemoryAreEnoughOrAFailure) {
  if (areSanitized()) GTEST_SKIP() << "sanitizers open files and take terabytes of addresses";
  for (const faults::Scene& scene : scenes()) {
    int exitCode = -1;
    for (rlim_t most = 4; most < 16; ++most) {
      Attempt run(scene);
      exitCode = run.under(limited(RLIMIT_NOFILE, most)).exitCode;
      if (exitCode == 0 || exitCode == 127) continue;
      EXPECT_THAT(run.result.errors, HasSubstr("ulimit -n 1024")) << most;
    }
    EXPECT_EQ(exitCode, 0) << scene.operation().name;
    exitCode = -1;
    for (rlim_t bytes = 32 * megabyte; bytes <= 512 * megabyte && exitCode != 0;
         bytes += bytes / 8) {
      Attempt run(scene);
      exitCode = run.under(limited(RLIMIT_AS, bytes)).exitCode;
    }
    EXPECT_EQ(exitCode, 0) << scene.operation().name;
  }
}

TEST(Surroundings, WhatIsNoBundleIsAMissingOne) {
  for (const char* const make : {
           "mkdir -p PRESTORE_restore/root.res",
           "mkdir PRESTORE_restore; mkfifo PRESTORE_restore/root.res",
           "mkdir PRESTORE_restore; ln -s /dev/zero PRESTORE_restore/root.res",
           "echo text > PRESTORE_restore",
       }) {
    Attempt run(scenes().front());
    (void)runProgram(shellScript(run.directory, "rm PRESTORE_restore; " + std::string(make)));
    EXPECT_EQ(run.under({}).exitCode, 0) << make;
  }
}

// At the first call of each kind that touches a file of the directory, which stands for a phase of
// the run. Its thread waits there, but for those that are parts of a step, which has to be
// finished.
TEST(Surroundings, ASignalInAnyPhaseLeavesOldOrNewAndTellsWhich) {
  struct Phase {
    const char* name;
    std::vector<long> calls;
    int interruptions = 0;
  };
  Phase phases[] = {
      {"reading or deleting", {SYS_pread64}},  {"reading the backup", {SYS_read}},
      {"adding", {SYS_pwrite64, SYS_pwritev}}, {"syncing", {SYS_fsync, SYS_fdatasync}},
      {"publishing", {SYS_renameat2}},         {"keeping the old one", {SYS_rename}}};
  constexpr int signals[] = {SIGINT, SIGTERM, SIGHUP};
  std::size_t turn = 0;
  for (const faults::Scene& scene : scenes()) {
    ++turn;  // so that each phase meets each signal
    for (Phase& phase : phases) {
      const int signal = signals[turn++ % std::size(signals)];
      SCOPED_TRACE(scene.operation().name + (std::string(", ") + phase.name));
      Attempt run(scene);
      bool isSent = false;
      run.traced.onCall = [&](const TracedCall& call) {
        const bool isStep = has(call.call, faults::trait::steps);
        if (isSent || std::ranges::count(phase.calls, call.call.number) == 0) return false;
        const std::string file = isStep ? "" : fs::read_symlink(call.file(call.descriptor()));
        if (!isStep && !file.starts_with(run.directory.file(""))) return false;
        isSent = kill(call.thread, signal) == 0;
        return isSent && !isStep;
      };
      const auto result = runTraced(run.traced);
      run.expectOldOrNew(result, result.exitCode == 0);
      if (result.exitCode == 0) continue;  // there is no such phase, or it was over first
      ++phase.interruptions;
      EXPECT_EQ(result.exitCode, 128 + signal);
      const auto told = run.isNew
                            ? "the (database is already changed|result has its name already)"
                            : ": interrupted(: the database is unchanged|, no database and no "
                              "file was changed, run this again)\n$";
      EXPECT_THAT(result.errors, testing::ContainsRegex(told));
    }
  }
  for (const Phase& phase : phases) EXPECT_GT(phase.interruptions, 0) << phase.name;
}

// Each has a backup of its own, so that the database tells whose it is.
TEST(Load, OfRunsThatStartAtOnceEachHasTheDatabaseForItselfOrIsRefused) {
  const TempDir directory;
  const auto result = runProgram(shellScript(directory, R"(orxkdb create db > log
for id in {1..100}; do orxkdb sample --objects 20 --seed $id b$id > log; done
for id in {1..100}; do { orxrestore -i b$id -o db; echo "exit code $?"; } > out$id 2>&1 & done
wait; won=$(grep -lx 'exit code 0' out*)
refused=$(grep -lz 'RC=3(BusyObject), RSN=19(InUse).*exit code 5' out*); wc -w <<< "$won $refused"
for out in $won; do orxkdb diff db b${out#out} > log 2>&1 && echo same; done; ls db.orx-new)"));
  EXPECT_EQ(result.output, "100\nsame\n") << result.errors;
}

}  // namespace
}  // namespace orx::test
