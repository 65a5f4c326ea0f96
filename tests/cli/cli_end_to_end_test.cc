// Runs the built pairwell-cli on real folders.
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/wait.h>

#include <array>
#include <cstdio>
#include <string>

#include "support/temp_dir.h"

namespace pairwell {
namespace {

struct Result {
  int exit_code = -1;
  std::string out;
  std::string err;
};

class CliTest : public ::testing::Test {
 protected:
  CliTest() {
    mkdir(dir_.Join("A").c_str(), 0755);
    mkdir(dir_.Join("A/sub").c_str(), 0755);
    mkdir(dir_.Join("B").c_str(), 0755);
  }

  // The shipped catalogue followed by the given set sections.
  void WriteIni(const std::string& sets) {
    std::FILE* in = std::fopen(PAIRWELL_SOURCE_DIR "/data/Pairwell.ini", "rb");
    ASSERT_NE(in, nullptr);
    std::string text;
    std::array<char, 4096> buffer;
    for (std::size_t n;
         (n = std::fread(buffer.data(), 1, buffer.size(), in));) {
      text.append(buffer.data(), n);
    }
    std::fclose(in);
    dir_.WriteFile("p.ini", text + sets);
  }

  std::string TwoFolderSet(const std::string& name) {
    return "[Sec: " + name + "]\r\nDir1=" + dir_.Join("A") +
           "\r\nDir2=" + dir_.Join("B") + "\r\n";
  }

  Result Run(const std::string& args) {
    const std::string command = std::string(PAIRWELL_CLI_PATH) + " --ini '" +
                                dir_.Join("p.ini") + "' " + args + " >'" +
                                dir_.Join("out") + "' 2>'" + dir_.Join("err") +
                                "'";
    Result result;
    const int status = std::system(command.c_str());
    result.exit_code = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    result.out = dir_.ReadFile("out");
    result.err = dir_.ReadFile("err");
    return result;
  }

  TempDir dir_;
};

TEST_F(CliTest, ListShowsSetsAndFolders) {
  WriteIni(TwoFolderSet("Docs") +
           "[Sec: Music]\r\nDir1=/m\r\nDir1Flags=13\r\n");
  const Result r = Run("list");
  EXPECT_EQ(r.exit_code, 0) << r.err;
  EXPECT_NE(r.out.find("1  Docs  (2 folders)\n"), std::string::npos) << r.out;
  EXPECT_NE(r.out.find("2  Music  (1 folder)\n"), std::string::npos);
  EXPECT_NE(r.out.find("Mirror to      enabled, create base"),
            std::string::npos)
      << r.out;
}

TEST_F(CliTest, PlanTableShowsEveryFileAndChangesNothing) {
  dir_.WriteFile("A/a.txt", "one");
  dir_.WriteFile("A/sub/b.txt", "two");
  WriteIni(TwoFolderSet("Docs"));
  const Result r = Run("plan docs");
  EXPECT_EQ(r.exit_code, 0) << r.err;
  EXPECT_NE(r.out.find("File       Status  Action\n"), std::string::npos)
      << r.out;
  EXPECT_NE(r.out.find("a.txt      N_!     Copy #1 (newest)\n"),
            std::string::npos)
      << r.out;
  EXPECT_NE(r.out.find("sub/b.txt  N_!     Copy #1 (newest)\n"),
            std::string::npos);
  EXPECT_NE(r.out.find("2 conflicts (automatically handled), 2 actions "
                       "queued, 2 files total\n"),
            std::string::npos);
  EXPECT_FALSE(dir_.Exists("B/a.txt"));
  EXPECT_FALSE(dir_.Exists("B/sub"));
}

TEST_F(CliTest, PlanJsonDescribesFilesAndCopies) {
  dir_.WriteFile("B/only_b.txt", "b");
  WriteIni(TwoFolderSet("Docs"));
  const Result r = Run("plan --json 1");
  EXPECT_EQ(r.exit_code, 0) << r.err;
  EXPECT_NE(r.out.find("\"set\":\"Docs\",\"lastSync\":null,\"folders\":[{"
                       "\"path\":\"" +
                       dir_.Join("A") + "\",\"flags\":4}"),
            std::string::npos)
      << r.out;
  EXPECT_NE(r.out.find("{\"name\":\"only_b.txt\",\"status\":\"_N!\","
                       "\"action\":3,\"actionText\":\"Copy #2 (newest)\","
                       "\"source\":2,\"flags\":9,\"situation\":144,"
                       "\"conflict\":3,\"conflictName\":\"New in one folder\","
                       "\"copies\":[{\"exists\":false,\"modify\":null,"
                       "\"create\":null,\"size\":0,\"attributes\":0},"
                       "{\"exists\":true,\"modify\":\""),
            std::string::npos)
      << r.out;
  EXPECT_NE(r.out.find("\"stats\":{\"files\":1,\"needConfirmation\":0,"
                       "\"autoHandled\":1,\"text\":\"1 conflicts "
                       "(automatically handled), 1 actions queued, 1 files "
                       "total\"}}\n"),
            std::string::npos)
      << r.out;
}

TEST_F(CliTest, PlanDoesNotCreateAMissingBaseFolder) {
  dir_.WriteFile("A/a.txt", "one");
  WriteIni("[Sec: Docs]\r\nDir1=" + dir_.Join("A") +
           "\r\nDir2=" + dir_.Join("New") + "\r\nDir2Flags=12\r\n");
  const Result r = Run("plan Docs");
  EXPECT_EQ(r.exit_code, 0) << r.err;
  // A source made for the run only receives: the file is no conflict.
  EXPECT_NE(r.out.find("a.txt  N_      Copy #1 (newest)\n"), std::string::npos)
      << r.out;
  EXPECT_NE(r.err.find("Would create folder " + dir_.Join("New")),
            std::string::npos)
      << r.err;
  EXPECT_FALSE(dir_.Exists("New"));
}

TEST_F(CliTest, RefusedScanExitsOneWithTheMessage) {
  WriteIni("[Sec: Docs]\r\nDir1=" + dir_.Join("A") + "\r\n");
  const Result r = Run("plan Docs");
  EXPECT_EQ(r.exit_code, 1);
  EXPECT_NE(r.err.find("Pairwell: You need to select at least two "
                       "directories to synchronize.  Add more directories "
                       "and try again."),
            std::string::npos)
      << r.err;
  EXPECT_EQ(r.out, "");
}

TEST_F(CliTest, UnknownSetAndUsageErrorsExitTwo) {
  WriteIni(TwoFolderSet("Docs"));
  Result r = Run("plan Nope");
  EXPECT_EQ(r.exit_code, 2);
  EXPECT_NE(r.err.find("pairwell-cli: no sync set 'Nope'"), std::string::npos);
  r = Run("plan 2");
  EXPECT_EQ(r.exit_code, 2);
  r = Run("explode");
  EXPECT_EQ(r.exit_code, 2);
  EXPECT_NE(r.err.find("unknown command 'explode'"), std::string::npos);
}

TEST_F(CliTest, MissingConfigurationIsAConfigurationError) {
  const Result r = Run("list");
  EXPECT_EQ(r.exit_code, 2);
  EXPECT_NE(r.err.find("Pairwell: An error occurred while loading " +
                       dir_.Join("p.ini") + ": No such file or directory"),
            std::string::npos)
      << r.err;
  EXPECT_NE(r.err.find("The .ini file this program requires is missing or "
                       "incomplete."),
            std::string::npos);
}

TEST_F(CliTest, HelpAndVersion) {
  Result r = Run("--help");
  EXPECT_EQ(r.exit_code, 0);
  EXPECT_EQ(r.out.rfind("Usage: pairwell-cli", 0), 0u) << r.out;
  r = Run("--version");
  EXPECT_EQ(r.exit_code, 0);
  EXPECT_EQ(r.out.rfind("pairwell-cli 3.", 0), 0u) << r.out;
}

}  // namespace
}  // namespace pairwell
