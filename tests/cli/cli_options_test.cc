#include "cli/cli_options.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace pairwell {
namespace {

CliOptions Parse(const std::vector<std::string>& args, std::string* problem) {
  CliOptions options;
  *problem = ParseCliOptions(args, &options);
  return options;
}

TEST(CliOptionsTest, PlanWithIniAndJson) {
  std::string problem;
  const CliOptions options =
      Parse({"--ini", "/x/p.ini", "plan", "--json", "Docs"}, &problem);
  EXPECT_EQ(problem, "");
  EXPECT_EQ(options.ini_path, "/x/p.ini");
  EXPECT_EQ(options.command, "plan");
  EXPECT_TRUE(options.json);
  EXPECT_EQ(options.sets, std::vector<std::string>{"Docs"});
}

TEST(CliOptionsTest, HistoryAndUndoTakeTheirOptions) {
  std::string problem;
  const CliOptions history = Parse({"history", "--json", "Docs"}, &problem);
  EXPECT_EQ(problem, "");
  EXPECT_EQ(history.command, "history");
  EXPECT_TRUE(history.json);
  const CliOptions undo = Parse(
      {"undo", "--run", "20261125-043012", "--simulate", "--force", "Docs"},
      &problem);
  EXPECT_EQ(problem, "");
  EXPECT_EQ(undo.command, "undo");
  EXPECT_EQ(undo.run_id, "20261125-043012");
  EXPECT_TRUE(undo.simulate);
  EXPECT_TRUE(undo.force);
  EXPECT_EQ(undo.sets, std::vector<std::string>{"Docs"});
  EXPECT_EQ(Parse({"undo", "--run=x", "Docs"}, &problem).run_id, "x");
  EXPECT_NE(UsageText().find("undo [--run ID] [--simulate] [--force] SET"),
            std::string::npos);
}

TEST(CliOptionsTest, IniWithEqualsAndList) {
  std::string problem;
  const CliOptions options = Parse({"--ini=a.ini", "list"}, &problem);
  EXPECT_EQ(problem, "");
  EXPECT_EQ(options.ini_path, "a.ini");
  EXPECT_EQ(options.command, "list");
}

TEST(CliOptionsTest, HelpAndVersionWinAnywhereBeforeTheCommand) {
  std::string problem;
  EXPECT_EQ(Parse({"--help"}, &problem).command, "help");
  EXPECT_EQ(Parse({"--ini", "x", "--version"}, &problem).command, "version");
  EXPECT_EQ(problem, "");
  EXPECT_NE(UsageText().find("plan [--json] SET"), std::string::npos);
}

TEST(CliOptionsTest, UsageErrorsSayWhatIsWrong) {
  const struct {
    std::vector<std::string> args;
    const char* problem;
  } kCases[] = {
      {{}, "no command given"},
      {{"--ini"}, "--ini needs a file"},
      {{"--bogus", "list"}, "unknown option '--bogus'"},
      {{"frobnicate"}, "unknown command 'frobnicate'"},
      {{"list", "Docs"}, "list takes no set"},
      {{"plan"}, "plan takes exactly one set"},
      {{"plan", "a", "b"}, "plan takes exactly one set"},
      {{"plan", "--fast", "a"}, "unknown option '--fast' for plan"},
      {{"list", "--json"}, "unknown option '--json' for list"},
      {{"plan", "--progress", "a"}, "unknown option '--progress' for plan"},
      {{"list", "--quiet"}, "unknown option '--quiet' for list"},
      {{"history"}, "history takes exactly one set"},
      {{"undo", "a", "b"}, "undo takes exactly one set"},
      {{"undo", "--run"}, "--run needs a run id"},
      {{"undo", "--run=", "a"}, "--run needs a run id"},
      {{"history", "--force", "a"}, "unknown option '--force' for history"},
      {{"sync", "--run", "x", "a"}, "unknown option '--run' for sync"},
  };
  for (const auto& c : kCases) {
    std::string problem;
    Parse(c.args, &problem);
    EXPECT_EQ(problem, c.problem) << "args " << c.args.size();
  }
}

TEST(CliOptionsTest, SyncProgressFollowsTheTerminalUnlessTold) {
  std::string problem;
  EXPECT_EQ(Parse({"sync", "Docs"}, &problem).progress, ProgressMode::kAuto);
  EXPECT_EQ(Parse({"sync", "--progress", "Docs"}, &problem).progress,
            ProgressMode::kOn);
  EXPECT_EQ(Parse({"sync", "Docs", "--quiet"}, &problem).progress,
            ProgressMode::kOff);
  EXPECT_EQ(problem, "");
}

TEST(CliOptionsTest, OfProgressAndQuietTheLastOneCounts) {
  std::string problem;
  EXPECT_EQ(Parse({"sync", "--progress", "--quiet", "Docs"}, &problem).progress,
            ProgressMode::kOff);
  EXPECT_EQ(Parse({"sync", "--quiet", "Docs", "--progress"}, &problem).progress,
            ProgressMode::kOn);
  EXPECT_EQ(problem, "");
  EXPECT_NE(UsageText().find("[--progress | --quiet]"), std::string::npos);
}

}  // namespace
}  // namespace pairwell
