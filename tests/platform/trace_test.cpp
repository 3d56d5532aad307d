#include "platform/trace.h"

#include <gmock/gmock.h>
#include <sys/stat.h>

#include <cerrno>
#include <regex>

#include "tests/support/kdb_records.h"
#include "tests/support/temp_dir.h"

namespace orx {
namespace {

ORX_TRACE_UNIT("orxtest.cpp", "ORXTEST");

int traced(int value) {
  ORX_TRACE("traced");
  if (trace.on(0x10)) DIAG_Printf(trace.anchor(), 7, "value %d", value);
  return trace.exit(value + 1);
}

void dumped() {
  ORX_TRACE_VALUE("dumped");
  const char bytes[] = "0123456789abcdef\x01";
  DIAG_Dump(trace.anchor(), 8, bytes, 17, "dump of source");
}

// What is traced under `patterns`: the time, the unit and the line number, which change, are cut.
std::string run(const std::string& patterns) {
  const test::TempDir directory;
  trace_setting::configure(patterns, directory.file("trace"));
  errno = EDOM;
  EXPECT_EQ(traced(41), 42);
  dumped();
  EXPECT_EQ(errno, EDOM);
  trace_setting::configure("", "");
  const std::regex head("(^|\n).{15} ORXTEST ([a-z]+):[0-9]+");
  return std::regex_replace(test::readFile(directory / "trace"), head, "$1$2");
}

TEST(Trace, PatternsChooseFunctionsAndFlagsAddUp) {
  const std::string dump =
      "dumped dump of source (17 bytes)\n"
      "  000000  30 31 32 33 34 35 36 37 38 39 61 62 63 64 65 66  0123456789abcdef\n"
      "  000010  01                                               .\n";
  const std::pair<const char*, std::string> cases[] = {
      {"", ""},
      {"traced=0x40", "traced entry\ntraced exit 42\n" + dump},
      {"tra*=0x10", "traced value 41\n" + dump},
      {"tra*=0x10,*=64",
       "traced entry\ntraced value 41\ntraced exit 42\ndumped entry\n" + dump + "dumped exit\n"},
      {"=0x40,broken", ""},
  };
  for (const auto& [patterns, expected] : cases) EXPECT_EQ(run(patterns), expected) << patterns;
}

TEST(Trace, AFileThatCannotTakeLinesClosesTheTraceAndIsKept) {
  const test::TempDir directory;
  const std::string database = directory.file("db"), pipe = directory.file("pipe");
  test::createDatabase(database, 3);
  ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
  const std::string before = test::readFile(database);
  for (const std::string& file : {database, database + ".orx-new", database + ".orx-old", pipe}) {
    testing::internal::CaptureStderr();
    trace_setting::configure("*=0x41", file);
    EXPECT_TRUE(traced(1) == 2 && !traceIsOpen());
    EXPECT_THAT(testing::internal::GetCapturedStderr(),
                testing::HasSubstr(file == pipe ? "cannot be opened\n" : "names a database\n"));
  }
  EXPECT_TRUE(test::readFile(database) == before);
  EXPECT_THAT(directory.names(), testing::ElementsAre("db", "pipe"));
  trace_setting::configure("", "");
}

}  // namespace
}  // namespace orx
