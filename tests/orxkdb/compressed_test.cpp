// Compressed backups and dumps: every subcommand takes them as it takes what was compressed.
#include <gmock/gmock.h>

#include <regex>

#include "orxkdb/exit_codes.h"
#include "tests/support/compress.h"
#include "tests/support/program_runs.h"
#include "tests/support/small_fleet.h"

namespace orx::orxkdb {
namespace {

using testing::HasSubstr;

class CompressedInput : public testing::TestWithParam<const char*> {
 protected:
  void SetUp() override {
    if (!test::hasCompressor(GetParam())) GTEST_SKIP() << GetParam() << " is not there";
    ASSERT_EQ(run("sample --objects 300 a").exitCode, exitDone);
    ASSERT_EQ(run("sample --objects 300 --seed 2 --order random b").exitCode, exitDone);
    test::makeDatabase(scratch_.file("db"), test::smallFleet());
    ASSERT_EQ(run("dump db dump").exitCode, exitDone);
  }

  test::ProgramResult run(const std::string& words, const std::string& input = "") {
    return test::runIn(scratch_, "orxkdb", test::wordsOf(words), input);
  }
  [[nodiscard]] std::string bytesOf(const std::string& name) const {
    return test::readFile(scratch_ / name);
  }
  void compress(const std::string& name, const std::string& bytes) {
    test::writeFile(scratch_ / name, test::compressed(GetParam(), bytes));
  }

  test::TempDir scratch_;
};

// Under its old name: only the first bytes tell.
TEST_P(CompressedInput, IsReadLikeAPlainFile) {
  const std::string commands[] = {"check b", "diff a b", "plan db b", "explain --line b:7",
                                  "load db dump --replace"};
  std::vector<test::ProgramResult> plain;
  for (const std::string& words : commands) plain.push_back(run(words));
  for (const char* name : {"a", "b", "dump"}) compress(name, bytesOf(name));
  for (std::size_t i = 0; i < std::size(commands); ++i) {
    const test::ProgramResult result = run(commands[i]);
    EXPECT_EQ(result.output, plain[i].output) << commands[i];
    EXPECT_EQ(result.errors, plain[i].errors);
    EXPECT_EQ(result.exitCode, plain[i].exitCode);
  }
  EXPECT_THAT(run("load piped", bytesOf("dump")).output, HasSubstr("3 records loaded"));
  const auto piped = test::runProgram(test::shellScript(
      scratch_,
      "for words in check 'diff a' 'plan db'; do cat b | orxkdb $words /dev/stdin; done"));
  const std::string output = std::regex_replace(piped.output, std::regex("/dev/stdin"), "b");
  EXPECT_EQ(output, plain[0].output + plain[1].output + plain[2].output);
}

TEST_P(CompressedInput, ThatIsNoWholeBackupOrDumpChangesNothing) {
  compress("database", bytesOf("db"));
  compress("endless", std::string(20'000'000, 'x'));
  for (const std::string name : {"a", "dump"}) {
    compress(name, bytesOf(name));
    const std::string whole = bytesOf(name);
    test::writeFile(scratch_ / (name + ".cut"), whole.substr(0, whole.size() - 9));
    test::writeFile(scratch_ / (name + ".more"), whole + "something else");
  }
  const std::string database = bytesOf("db");
  const auto names = scratch_.names();
  const std::string cut = "ends before it is complete, ";
  const std::string more = "is damaged, or something else follows it, ";
  const std::string format = std::string(" (") + GetParam() + ", within its first ";
  const std::tuple<const char*, ExitCode, std::string> cases[] = {
      {"check a.cut", exitNotAsExpected, cut + "a.cut" + format},
      {"diff a a.more", exitNotOpened, more + "a.more" + format},
      {"plan db a.cut", exitNotAsExpected, cut + "a.cut" + format},
      {"load new dump.cut", exitNotAsExpected, cut + "dump.cut:"},
      {"load --replace db dump.more", exitNotAsExpected, more + "dump.more:"},
      {"check database", exitNotAsExpected, "what comes out is a database, not a backup"},
      {"plan db endless", exitNotAsExpected, "is no backup, a line does not end, endless"},
  };
  for (const auto& [words, code, errors] : cases) {
    const test::ProgramResult result = run(words);
    EXPECT_EQ(result.exitCode, code) << words;
    EXPECT_THAT(result.errors, HasSubstr(errors));
    EXPECT_EQ(result.output, "");
  }
  EXPECT_EQ(scratch_.names(), names);
  EXPECT_EQ(bytesOf("db"), database);
}

INSTANTIATE_TEST_SUITE_P(Formats, CompressedInput, testing::ValuesIn(test::compressors),
                         [](const auto& format) { return std::string(format.param); });

TEST(CompressedBackup, NeedsSpaceInTheScratchDirectory) {
  const test::TempDir scratch;
  test::writeFile(scratch / "a", test::compressed("gzip", test::backupText(test::smallFleet())));
  const auto result =
      test::runIn(scratch, "orxkdb", {"check", "a"}, "", {}, {"TMPDIR=" + scratch.file("none")});
  EXPECT_EQ(result.exitCode, exitFailed);
  EXPECT_THAT(result.errors, HasSubstr("a into " + scratch.file("none") + " (No such file"));
}

}  // namespace
}  // namespace orx::orxkdb
