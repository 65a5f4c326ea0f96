// Where the programs look for their configuration, their shipped files and
// their logs, and the first start that makes a person's configuration.
#include "app/config_location.h"

#include <gtest/gtest.h>
#include <stdlib.h>

#include <string>

#include "support/disk_files.h"
#include "support/recording_user_interface.h"
#include "support/temp_dir.h"
#include "support/test_files.h"
#include "util/system.h"

namespace pairwell {
namespace {

// Sets an environment variable for the test's life, and puts back what it
// was.
class ScopedVariable {
 public:
  ScopedVariable(const char* name, const char* value) : name_(name) {
    const char* old = getenv(name);
    had_ = old != nullptr;
    if (had_) old_ = old;
    if (value == nullptr) {
      UnsetEnvironmentValue(name);
    } else {
      SetEnvironmentValue(name, value);
    }
  }
  ~ScopedVariable() {
    if (had_) {
      SetEnvironmentValue(name_, old_);
    } else {
      UnsetEnvironmentValue(name_);
    }
  }
  ScopedVariable(const ScopedVariable&) = delete;
  ScopedVariable& operator=(const ScopedVariable&) = delete;

 private:
  const char* name_;
  bool had_ = false;
  std::string old_;
};

// The program's folder in the person's configuration and state folders.
#ifdef _WIN32
constexpr char kFolder[] = "Pairwell";
#else
constexpr char kFolder[] = "pairwell";
#endif

// A person's home under a temporary folder, with no configuration named by
// the environment. The test program has no Pairwell.ini beside it.
class ConfigLocationTest : public ::testing::Test {
 protected:
  // Where the files are expected below the home: its configuration folder
  // ("home/.config/pairwell/Pairwell.ini"), its state folder.
  std::string InConfig(const std::string& name) const {
    return dir_.Join(std::string("home/.config/") + kFolder + name);
  }
  std::string StateFolder() const {
    return dir_.Join(std::string("home/.local/state/") + kFolder);
  }

  TempDir dir_;
  ScopedVariable ini_{kIniPathVariable, nullptr};
#ifdef _WIN32
  // Windows names the two folders itself; here they lie where a POSIX home
  // has them, so that the tests read the same.
  ScopedVariable config_{"APPDATA", dir_.Join("home/.config").c_str()};
  ScopedVariable state_{"LOCALAPPDATA", dir_.Join("home/.local/state").c_str()};
#else
  ScopedVariable home_{"HOME", dir_.Join("home").c_str()};
  ScopedVariable config_{"XDG_CONFIG_HOME", nullptr};
  ScopedVariable state_{"XDG_STATE_HOME", nullptr};
#endif
};

TEST_F(ConfigLocationTest, EnvironmentVariableWins) {
  ScopedVariable ini(kIniPathVariable, "/some/where.ini");
  EXPECT_EQ(FindConfigPlace(), ConfigPlace::kEnvironment);
  EXPECT_EQ(GetINIPath(), "/some/where.ini");
  EXPECT_EQ(ConfigFolder(), "/some");
  // Its logs stay beside it, as they always have.
  EXPECT_EQ(LogFolder(), "/some");
}

TEST_F(ConfigLocationTest, WithoutAPortableFileItIsInTheHomesConfigFolder) {
  EXPECT_EQ(FindConfigPlace(), ConfigPlace::kUser);
  EXPECT_EQ(GetINIPath(), InConfig("/Pairwell.ini"));
  EXPECT_EQ(LogFolder(), StateFolder());
}

TEST_F(ConfigLocationTest, XdgFoldersAreFollowedWhenAbsolute) {
#ifdef _WIN32
  GTEST_SKIP() << "POSIX only: the XDG folders";
#endif
  ScopedVariable config("XDG_CONFIG_HOME", dir_.Join("cfg").c_str());
  ScopedVariable state("XDG_STATE_HOME", dir_.Join("st").c_str());
  EXPECT_EQ(GetINIPath(), dir_.Join("cfg/pairwell/Pairwell.ini"));
  EXPECT_EQ(LogFolder(), dir_.Join("st/pairwell"));
  // A relative one is to be ignored.
  ScopedVariable relative("XDG_CONFIG_HOME", "relative/cfg");
  EXPECT_EQ(GetINIPath(), InConfig("/Pairwell.ini"));
}

TEST_F(ConfigLocationTest, ShippedFilesAreBesideABuiltProgram) {
  // The test program is a build's: no share folder above it.
  EXPECT_EQ(SharedDataFolder(), ExecutableFolder());
}

TEST_F(ConfigLocationTest, FirstStartWithoutTheDefaultSaysSoAndMakesNoFile) {
  RecordingUserInterface ui;
  ASSERT_FALSE(Exists(SharedDataFolder() + "/Pairwell.ini"));

  EXPECT_FALSE(CreateUserConfig());

  ASSERT_EQ(ui.messages.size(), 1u);
  EXPECT_EQ(ui.messages[0].text.rfind(
                "Pairwell could not create its configuration file " +
                    InConfig("/Pairwell.ini") + " from the default " +
                    SharedDataFolder() + "/Pairwell.ini: ",
                0),
            0u)
      << ui.messages[0].text;
  EXPECT_FALSE(Exists(InConfig("/Pairwell.ini")));
  // The log folder is there for the logs all the same.
  EXPECT_TRUE(Exists(StateFolder()));
}

TEST_F(ConfigLocationTest, AnExistingConfigurationIsLeftAsItIs) {
  RecordingUserInterface ui;
  MakeFolder(dir_.Join("home"));
  MakeFolder(dir_.Join("home/.config"));
  MakeFolder(InConfig(""));
  Put(InConfig("/Pairwell.ini"), "mine", 1600000000);

  EXPECT_TRUE(CreateUserConfig());

  EXPECT_TRUE(ui.messages.empty());
  EXPECT_EQ(Read(InConfig("/Pairwell.ini")), "mine");
}

TEST_F(ConfigLocationTest, NoConfigurationIsMadeForOneNamedByTheEnvironment) {
  RecordingUserInterface ui;
  ScopedVariable ini(kIniPathVariable, dir_.Join("named.ini").c_str());

  EXPECT_TRUE(CreateUserConfig());

  EXPECT_TRUE(ui.messages.empty());
  EXPECT_FALSE(Exists(dir_.Join("named.ini")));
  EXPECT_FALSE(Exists(dir_.Join("home")));
}

}  // namespace
}  // namespace pairwell
