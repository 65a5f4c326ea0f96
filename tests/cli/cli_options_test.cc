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
  };
  for (const auto& c : kCases) {
    std::string problem;
    Parse(c.args, &problem);
    EXPECT_EQ(problem, c.problem) << "args " << c.args.size();
  }
}

}  // namespace
}  // namespace pairwell
