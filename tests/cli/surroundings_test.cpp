// The programs among hostile surroundings: whatever they are, the database is the old one or the
// new one, whole, exit code and words tell which, and nothing else is left behind.
#include <fcntl.h>
#include <gmock/gmock.h>
#include <sched.h>
#include <signal.h>
#include <sys/mount.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <map>

#include "messages/message_keys.h"
#include "restore/exit_codes.h"
#include "tests/support/child_conditions.h"
#include "tests/support/program_runs.h"
#include "tests/support/small_fleet.h"
#include "tests/support/test_bundle.h"

namespace orx::test {
namespace {

using testing::AllOf;
using testing::HasSubstr;
using testing::Not;

struct Operation {
  const char* name;
  const char* program;
  std::vector<std::string> arguments;
  std::string target;  // what it changes or makes
};

const std::vector<Operation> operations{
    {"restore", "orxrestore", {"-i", "backup", "-o", "db"}, "db"},
    {"merge", "orxrestore", {"-i", "backup", "-m", "db"}, "db"},
    {"rebuild", "orxrestore", {"-u", "db"}, "db"},
    {"load", "orxkdb", {"load", "--replace", "db", "dump"}, "db"},
    {"undo", "orxkdb", {"undo", "db"}, "db"},
    {"create", "orxkdb", {"create", "new"}, "new"},
    {"backup", "orxkdb", {"backup", "db", "new.txt"}, "new.txt"},
};

bool restores(const Operation& operation) {
  return std::string(operation.program) == "orxrestore";
}

// A directory with all that the operations need.
class Scene {
 public:
  Scene() {
    std::filesystem::permissions(directory_.path(), std::filesystem::perms(0755));
    writeEchoBundle(directory_.path());
    std::filesystem::remove(directory_ / "root.txt");
    const Line miscounted = modelLine(attribute(17, {"7"}));
    makeDatabase(directory_.file("db"), {systemLine(), miscounted, referringLine()});
    makeDatabase(directory_.file("db.orx-previous"), {plainLine(1)});
    std::vector<Line> lines = smallFleet();
    for (std::uint32_t id = 10; id < 40; ++id) lines.push_back(referringLine(id));
    writeFile(directory_ / "backup", backupText(lines));
    makeDatabase(directory_.file("filled"), lines);
    (void)runIn(directory_, "orxkdb", {"dump", "filled", "dump"});
    std::filesystem::remove(directory_ / "filled");
  }

  // A new copy.
  Scene(const Scene& other) {
    std::filesystem::copy(other.directory_.path(), directory_.path(),
                          std::filesystem::copy_options::recursive |
                              std::filesystem::copy_options::overwrite_existing);
    std::filesystem::permissions(directory_.path(), std::filesystem::perms(0755));
  }
  Scene& operator=(const Scene&) = delete;

  [[nodiscard]] const TempDir& directory() const { return directory_; }

  // Under its own path a run sees another file system or none: "@" in front of a name stands for
  [[nodiscard]] ProgramResult run(const Operation& operation, std::function<void()> inChild = {},
                                  std::vector<std::string> environment = {}) const {
    return runIn(directory_, operation.program, operation.arguments, "", std::move(inChild),
                 std::move(environment));
  }

  [[nodiscard]] std::string target(const Operation& operation) const {
    return readFile(directory_ / operation.target);
  }
  // Of the records where it is a database: files of equal records may differ.
  [[nodiscard]] std::string content(const Operation& operation) const {
    if (!std::filesystem::exists(directory_ / operation.target)) return "absent";
    if (operation.target == "new.txt") return target(operation);
    std::string all;
    const Opened database(directory_.file(operation.target), kdb::openForReading);
    if (database.opened != "0/0") return "unreadable";
    for (const Record& record : database.all()) all.append(record.begin(), record.end());
    return "database " + all;
  }
  [[nodiscard]] bool hasLeftovers() const {
    return std::ranges::any_of(directory_.names(),
                               [](const auto& name) { return name.ends_with(".orx-new"); });
  }

 private:
  TempDir directory_;
};

class Surroundings : public testing::Test {
 protected:
  static void SetUpTestSuite() { scene_ = new Scene; }
  static void TearDownTestSuite() {
    delete scene_;
    scene_ = nullptr;
  }

  // What an undisturbed run makes.
  static const std::string& newContent(const Operation& operation) {
    static std::map<std::string, std::string> known;
    const auto [content, isNew] = known.try_emplace(operation.name);
    if (isNew) {
      const Scene undisturbed(*scene_);
      EXPECT_EQ(undisturbed.run(operation).exitCode, 0) << operation.name;
      content->second = undisturbed.content(operation);
    }
    return content->second;
  }

  // Exit code 0 and the new state, or a failure with words and the old state.
  static void expectOldOrNew(const Scene& after, const Operation& operation,
                             const ProgramResult& result) {
    EXPECT_FALSE(after.hasLeftovers()) << operation.name;
    // Without its messages; or what comes after the change failed, and that is told.
    const bool isChanged = result.errors.find("the database is made") != std::string::npos ||
                           result.errors.find("has its new contents") != std::string::npos;
    if (result.exitCode == 0 || isChanged) {
      EXPECT_EQ(after.content(operation), newContent(operation)) << operation.name;
    } else {
      EXPECT_EQ(after.target(operation), scene_->target(operation)) << operation.name;
      EXPECT_NE(result.errors, "") << operation.name;
    }
  }

  static Scene* scene_;
};
Scene* Surroundings::scene_ = nullptr;

constexpr int cannotBeMade = 77;
constexpr rlim_t megabyte = rlim_t{1} << 20;

std::function<void()> limitedMemory(rlim_t bytes) {
  return [bytes] {
    const rlimit limit{bytes, bytes};
    (void)setrlimit(RLIMIT_AS, &limit);
  };
}

// Sanitizers need more memory and files than their programs do.
bool areSanitized() {
  return runProgram({.file = builtProgram("orxkdb"),
                     .arguments = {"--version"},
                     .inChild = limitedMemory(4096 * megabyte)})
             .exitCode != 0;
}

TEST_F(Surroundings, OutputThatNobodyTakesDoesNotStopAChange) {
  for (const Operation& operation : operations) {
    const std::string& expected = newContent(operation);
    for (const auto& broken : brokenOutputs) {
      const Scene scene(*scene_);
      EXPECT_EQ(scene.run(operation, broken).exitCode, 0) << operation.name;
      EXPECT_EQ(scene.content(operation), expected) << operation.name;
    }
    const Scene scene(*scene_);
    const auto allClosed = [] {
      for (const int stream : {0, 1, 2}) (void)close(stream);
    };
    EXPECT_EQ(scene.run(operation, allClosed).exitCode, 0) << operation.name;
    EXPECT_EQ(scene.content(operation), expected) << operation.name << ", all streams closed";
  }
}

TEST_F(Surroundings, WithoutPermissionNothingIsChanged) {
  if (geteuid() != 0) GTEST_SKIP() << "needs a second user";
  const auto nobody = [] {
    if (setgid(65534) != 0 || setuid(65534) != 0) _exit(cannotBeMade);
    if (access(builtProgram("orxkdb").c_str(), X_OK) != 0) _exit(cannotBeMade);
  };
  for (const Operation& operation : operations) {
    const Scene scene(*scene_);
    const auto result = scene.run(operation, nobody);
    if (result.exitCode == cannotBeMade) GTEST_SKIP() << "the programs are hidden from others";
    EXPECT_EQ(result.exitCode, exitDatabaseNotOpened) << operation.name << result.errors;
    EXPECT_THAT(result.errors, HasSubstr("permission")) << operation.name;
    expectOldOrNew(scene, operation, result);
  }
}

TEST_F(Surroundings, AnUnreadablePreviousGenerationIsWhatUndoNames) {
  if (geteuid() != 0) GTEST_SKIP() << "needs a second user";
  const Scene scene(*scene_);
  const std::string previous = scene.directory().file("db.orx-previous");
  std::filesystem::permissions(previous, std::filesystem::perms(0600));
  for (const char* name : {"", "db"})
    (void)!chown(scene.directory().file(name).c_str(), 65534, 65534);
  const auto nobody = [] {
    if (setgid(65534) != 0 || setuid(65534) != 0) _exit(cannotBeMade);
    if (access(builtProgram("orxkdb").c_str(), X_OK) != 0) _exit(cannotBeMade);
  };
  const auto result = runIn(scene.directory(), "orxkdb", {"undo", "db"}, "", nobody);
  if (result.exitCode == cannotBeMade) GTEST_SKIP() << "the programs are hidden from others";
  EXPECT_EQ(result.exitCode, exitDatabaseNotOpened);
  EXPECT_THAT(result.errors, HasSubstr(", " + previous + " (11 Authority"));
}

TEST_F(Surroundings, AReadOnlyFileSystemIsNotWrittenTo) {
  for (const Operation& operation : operations) {
    const Scene scene(*scene_);
    const std::string path = scene.directory().path();
    const auto readOnly = [&path] {
      const bool ready =
          unshare(CLONE_NEWNS) == 0 && mount("none", "/", nullptr, MS_REC | MS_PRIVATE, "") == 0 &&
          mount(path.c_str(), path.c_str(), nullptr, MS_BIND, nullptr) == 0 &&
          mount(nullptr, path.c_str(), nullptr, MS_REMOUNT | MS_BIND | MS_RDONLY, nullptr) == 0 &&
          chdir(path.c_str()) == 0;
      if (!ready) _exit(cannotBeMade);
    };
    const auto result = scene.run(operation, readOnly);
    if (result.exitCode == cannotBeMade) GTEST_SKIP() << "no right to mount";
    EXPECT_EQ(result.exitCode, exitDatabaseNotOpened) << operation.name << result.errors;
    expectOldOrNew(scene, operation, result);
  }
}

TEST_F(Surroundings, ADirectoryThatWasDeletedHoldsNothing) {
  const Scene scene(*scene_);
  const std::string gone = scene.directory().file("gone");
  const auto inDeleted = [&gone] {
    if (mkdir(gone.c_str(), 0700) != 0 || chdir(gone.c_str()) != 0 || rmdir(gone.c_str()) != 0) {
      _exit(cannotBeMade);
    }
  };
  for (const Operation& operation : operations) {
    const auto result = scene.run(operation, inDeleted);
    const bool opensBackupFirst = std::string(operation.name) == "restore";
    EXPECT_EQ(result.exitCode, opensBackupFirst ? exitBackupNotOpened : exitDatabaseNotOpened)
        << operation.name << result.errors;
    expectOldOrNew(scene, operation, result);
  }
  const Operation elsewhere{
      "load",
      "orxkdb",
      {"load", "--replace", scene.directory().file("db"), scene.directory().file("dump")},
      "db"};
  EXPECT_EQ(scene.run(elsewhere, inDeleted).exitCode, 0) << "absolute names need no directory";
}

TEST_F(Surroundings, AFileThatMayNotGrowIsAFullDisk) {
  for (const Operation& operation : operations) {
    for (const rlim_t limit : {rlim_t{100}, rlim_t{12288}}) {
      const Scene scene(*scene_);
      const auto result = scene.run(operation, fileLimit(limit));
      EXPECT_THAT(result.exitCode, testing::AnyOf(0, exitFailed)) << operation.name << limit;
      expectOldOrNew(scene, operation, result);
    }
  }
}

TEST_F(Surroundings, FewOpenFilesAreEnoughOrAFailure) {
  if (areSanitized()) GTEST_SKIP() << "sanitizers open files of their own";
  for (const Operation& operation : operations) {
    int failures = 0;
    for (rlim_t most = 4; most < 16; ++most) {
      const Scene scene(*scene_);
      const auto result = scene.run(operation, [most] {
        const rlimit limit{most, most};
        (void)setrlimit(RLIMIT_NOFILE, &limit);
      });
      failures += result.exitCode == 0 ? 0 : 1;
      expectOldOrNew(scene, operation, result);
    }
    EXPECT_LT(failures, 12) << operation.name;
  }
}

// From too little for the start of the program up to enough for the run.
TEST_F(Surroundings, LittleMemoryIsEnoughOrAFailure) {
  if (areSanitized()) GTEST_SKIP() << "sanitized programs need terabytes of addresses";
  for (const Operation& operation : operations) {
    bool enough = false;
    for (rlim_t bytes = 32 * megabyte; bytes <= 512 * megabyte; bytes += bytes / 8) {
      const Scene scene(*scene_);
      const auto result = scene.run(operation, limitedMemory(bytes));
      const bool started = result.exitCode != 127;
      EXPECT_TRUE(started || result.errors.find("shared libraries") != std::string::npos);
      expectOldOrNew(scene, operation, result);
      enough = result.exitCode == 0;
      if (!enough) continue;
      break;
    }
    EXPECT_TRUE(enough) << operation.name;
  }
}

// Files that are no resource files, and texts that would read or write memory if they were printed.
TEST_F(Surroundings, AHostileBundleIsAMissingOne) {
  const std::string hostile = R"("%n%n%s%s%s%s%s%999999999d%*d%1$s")";
  const auto root = [](const Scene& scene) {
    return scene.directory() / "PRESTORE_restore/root.res";
  };
  const std::pair<const char*, std::function<void(const Scene&)>> cases[] = {
      {"texts",
       [&](const Scene& scene) {
         std::string source = "root {\n";
         for (const MessageSignature& signature : messageSignatures) {
           source.append(signature.key).append(" { " + hostile + " }\n");
         }
         compileBundle(scene.directory().path(), "root", source + "}\n");
       }},
      {"pipe",
       [&](const Scene& scene) {
         std::filesystem::remove(root(scene));
         (void)mkfifo(root(scene).c_str(), 0666);
       }},
      {"directory",
       [&](const Scene& scene) {
         std::filesystem::remove(root(scene));
         std::filesystem::create_directory(root(scene));
       }},
      {"device",
       [&](const Scene& scene) {
         std::filesystem::remove(root(scene));
         std::filesystem::create_symlink("/dev/zero", root(scene));
       }},
      {"no directory",
       [&](const Scene& scene) {
         std::filesystem::remove_all(scene.directory() / "PRESTORE_restore");
         writeFile(scene.directory() / "PRESTORE_restore", "text");
       }},
  };
  for (const auto& [what, make] : cases) {
    for (const Operation& operation : operations) {
      if (!restores(operation)) continue;
      const Scene scene(*scene_);
      make(scene);
      const auto result = scene.run(operation);
      EXPECT_EQ(result.exitCode, 0) << what << " " << operation.name;
      EXPECT_THAT(result.output, Not(HasSubstr("%"))) << what;
      expectOldOrNew(scene, operation, result);
    }
  }
}

// A signal at the first call of each kind, which stands for a phase of the run.
TEST_F(Surroundings, ASignalInAnyPhaseLeavesOldOrNewAndTellsWhich) {
  const struct {
    const char *call, *phase;
  } phases[] = {{"pread", "reading or deleting"},
                {"read", "reading the backup"},
                {"pwrite", "adding"},
                {"fsync", "syncing"},
                {"exchange", "publishing"},
                {"rename", "keeping the old one"}};
  const std::pair<int, const char*> signals[] = {{SIGINT, "2"}, {SIGTERM, "15"}, {SIGHUP, "1"}};
  std::map<std::string, int> interruptions;
  std::size_t turn = 0;
  for (const Operation& operation : operations) {
    ++turn;  // so that each phase meets each signal
    for (const auto& phase : phases) {
      const auto& [signal, number] = signals[turn++ % std::size(signals)];
      SCOPED_TRACE(std::string(operation.name) + ", " + phase.phase + ", signal " + number);
      const Scene scene(*scene_);
      const auto result = scene.run(
          operation, {},
          {"LD_PRELOAD=" ORX_SIGNAL_SHIM, "ASAN_OPTIONS=verify_asan_link_order=0",
           std::string("ORX_SIGNAL=") + number, std::string("ORX_SIGNAL_AT=") + phase.call});
      EXPECT_FALSE(scene.hasLeftovers());
      if (result.exitCode == 0) {  // there is no such phase, or it was over first
        EXPECT_EQ(scene.content(operation), newContent(operation));
        continue;
      }
      EXPECT_EQ(result.exitCode, 128 + signal);
      ++interruptions[phase.call];
      if (scene.content(operation) == scene_->content(operation)) {
        EXPECT_THAT(result.errors,
                    testing::AnyOf(HasSubstr("interrupted: the database is unchanged"),
                                   HasSubstr("no database and no file was changed")));
      } else {
        EXPECT_EQ(scene.content(operation), newContent(operation));
        EXPECT_THAT(result.errors, testing::AnyOf(HasSubstr("the database is already changed"),
                                                  HasSubstr("the result has its name already")));
      }
    }
  }
  for (const auto& phase : phases) EXPECT_GT(interruptions[phase.call], 0) << phase.phase;
}

}  // namespace
}  // namespace orx::test
