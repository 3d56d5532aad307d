#include "platform/trace.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <cstdio>
#include <fstream>
#include <string>

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

class Trace : public testing::Test {
 protected:
  std::string run(const std::string& patterns) {
    const std::string file = testing::TempDir() + "orx_trace.txt";
    (void)std::remove(file.c_str());
    trace_setting::configure(patterns, file);
    errno = EDOM;
    EXPECT_EQ(traced(41), 42);
    dumped();
    EXPECT_EQ(errno, EDOM);
    trace_setting::configure("", "");
    return withoutTimes(file);
  }

  // Only what does not change from run to run: the time, the unit and the line are cut.
  static std::string withoutTimes(const std::string& file) {
    std::ifstream in(file);
    std::string text;
    for (std::string line; std::getline(in, line);) {
      if (const auto unit = line.find(" ORXTEST "); unit == 15) {
        line.erase(0, unit + 9);
        line.erase(line.find(':'), line.find(' ') - line.find(':'));
      }
      text += line + "\n";
    }
    return text;
  }
};

TEST_F(Trace, PatternsChooseFunctionsAndFlagsAddUp) {
  const std::string dump =
      "dumped dump of source (17 bytes)\n"
      "  000000  30 31 32 33 34 35 36 37 38 39 61 62 63 64 65 66  0123456789abcdef\n"
      "  000010  01                                               .\n";
  const struct {
    const char* patterns;
    std::string expected;
  } cases[] = {
      {"", ""},
      {"nothing=0x40", dump},
      {"traced=0x40", "traced entry\ntraced exit 42\n" + dump},
      {"tra*=0x10", "traced value 41\n" + dump},
      {"tra*=0x10,*=64",
       "traced entry\ntraced value 41\ntraced exit 42\ndumped entry\n" + dump + "dumped exit\n"},
      {"=0x40,broken", ""},
  };
  for (const auto& row : cases) EXPECT_EQ(run(row.patterns), row.expected) << row.patterns;
}

TEST_F(Trace, AFileThatCannotBeOpenedClosesTheTrace) {
  trace_setting::configure("*=0x41", "/nonexistent/directory/trace");
  EXPECT_EQ(traced(1), 2);
  trace_setting::configure("", "");
}

TEST_F(Trace, AnchorsDescribeTheirFunction) {
  static constinit TraceAnchor anchor = makeTraceAnchor(traceUnit, "some", 12);
  EXPECT_EQ(anchor.functionLength, 4);
  EXPECT_EQ(anchor.unit->headerVersion, 630);
  EXPECT_EQ(anchor.unit->headerMagic, 32768);
  EXPECT_EQ(anchor.unit->buildDateLength, 11);
  EXPECT_EQ(anchor.unit->buildTimeLength, 8);
  EXPECT_NE(anchor.flagsAt, *anchor.syncCounter);
  (void)DIAG_Sync(anchor);
  EXPECT_EQ(anchor.flagsAt, *anchor.syncCounter);
}

}  // namespace
}  // namespace orx
