#include "app/program.h"

#include <gtest/gtest.h>

#include <ctime>
#include <string>
#include <vector>

#include "support/recording_user_interface.h"
#include "support/system_text.h"
#include "support/temp_dir.h"
#include "support/test_dates.h"
#include "support/test_files.h"
#include "util/date_time.h"
#include "util/system.h"

namespace pairwell {
namespace {

constexpr char kMissingCatalogue[] =
    "The .ini file this program requires is missing or incomplete.  Without "
    "it, the program will not be able to synchronize properly.";

// Start-up against a configuration file in a temporary folder.
class ProgramTest : public ::testing::Test {
 protected:
  ProgramTest() { SetEnvironmentValue(kIniPathVariable, ini_path()); }
  ~ProgramTest() override { UnsetEnvironmentValue(kIniPathVariable); }

  std::string ini_path() const { return dir_.Join("Pairwell.ini"); }

  void StartWith(const std::string& ini_text,
                 const std::string& command_line = "") {
    dir_.WriteFile("Pairwell.ini", ini_text);
    program_.Main(command_line);
  }

  std::vector<std::string> SetNames() {
    std::vector<std::string> names;
    for (int i = 1; i <= program_.SyncSets().Count(); ++i) {
      names.push_back(program_.SyncSets().Item(i).Name);
    }
    return names;
  }

  RecordingUserInterface ui_;
  Program program_{ui_};
  TempDir dir_;
};

TEST_F(ProgramTest, RealisticFileIsSavedBackByteForByte) {
  const std::string head =
      ";Pairwell settings\r\n"
      "SimulationMode=False\r\n"
      "CurSyncSet=2\r\n"
      "\r\n";
  const std::string catalogue =
      "[Conflict Types]\r\n"
      ";Types are tried in order\r\n"
      "+Created=\"Created in one folder\" USENEWEST* DONOTHING ?1?\r\n"
      "Changed=\"Changed in both\\nfolders\" USENEWEST DONOTHING* 3?3 5?5\r\n"
      "*Same=DONOTHING* ?0?\r\n"
      "\r\n";
  const std::string unknown =
      "[Unknown]\r\n"
      "key=value\r\n"
      ";kept as it is\r\n"
      "\r\n";
  const std::string docs =
      "[Sec: Docs]\r\n"
      "Dir1=/home/ann/Docs\r\n"
      "Dir1Flags=4\r\n"
      "Dir2=/mnt/backup/Docs\r\n"
      "Dir2Flags=5\r\n"
      "Dir3=/mnt/usb/Docs\r\n"
      "Dir3Flags=30\r\n"
      "Recursive=False\r\n"
      "SyncFolders=False\r\n"
      "DefActionFlags=9\r\n"
      "WarnFutureDate=False\r\n"
      "UseCreateDate=False\r\n"
      "ClearArchiveOnCopy=True\r\n"
      "MatchCDateOnCopy=False\r\n"
      "UseLogFile=True\r\n"
      "LogFileName=docs.log\r\n"
      "SmartSync=False\r\n"
      "AllowSmartDeletes=False\r\n"
      "LastSyncDate=2026-11-02 15:04:05\r\n"
      "LastSyncMoment=2026-11-02T15:04:05+00:00\r\n"
      "ArchiveDeleted=True\r\n"
      "ArchiveOverwritten=True\r\n"
      "ArchivePath=/mnt/archive\r\n"
      "FileSpec=*.txt;*.doc\r\n"
      "ExcludeSpec=*.tmp\r\n"
      "FolderSpec=*\r\n"
      "FolderExcludeSpec=.git\r\n"
      "CR:Created=3\r\n"
      "CR:Changed=1\r\n"
      "CR:Same=2\r\n"
      "\r\n";
  // Missing keys take the defaults of a section without them.
  const std::string photos_in =
      "[sec:  Photos]\r\n"
      "Dir1=/home/ann/Photos\r\n"
      "Dir2=/srv/Photos\r\n"
      "Dir2Flags=2\r\n"
      "\r\n";
  const std::string photos_out =
      "[Sec: Photos]\r\n"
      "Dir1=/home/ann/Photos\r\n"
      "Dir1Flags=4\r\n"
      "Dir2=/srv/Photos\r\n"
      "Dir2Flags=2\r\n"
      "Recursive=True\r\n"
      "SyncFolders=True\r\n"
      "DefActionFlags=8\r\n"
      "WarnFutureDate=True\r\n"
      "UseCreateDate=True\r\n"
      "ClearArchiveOnCopy=False\r\n"
      "MatchCDateOnCopy=True\r\n"
      "UseLogFile=False\r\n"
      "LogFileName=SyncLog.txt\r\n"
      "SmartSync=True\r\n"
      "AllowSmartDeletes=True\r\n"
      "ArchiveDeleted=False\r\n"
      "ArchiveOverwritten=False\r\n"
      "ArchivePath=SyncLog.txt\r\n"
      "FileSpec=*.*\r\n"
      "ExcludeSpec=\r\n"
      "FolderSpec=\r\n"
      "FolderExcludeSpec=\r\n"
      "CR:Created=3C+\r\n"
      "CR:Changed=1C\r\n"
      "CR:Same=1C\r\n"
      "\r\n";
  const std::string music_in =
      "[SEC:Music]\r\n"
      "Dir1=/home/ann/Music\r\n"
      "Dir1Flags=4\r\n"
      "Dir2=/mnt/backup/Music\r\n"
      "Dir2Flags=1\r\n"
      "cr:Changed=2\r\n"
      "\r\n";
  StartWith(head + docs + catalogue + photos_in + unknown + music_in);
  ASSERT_TRUE(ui_.messages.empty()) << ui_.messages[0].text;
  ASSERT_EQ(SetNames(), (std::vector<std::string>{"Docs", "Photos", "Music"}));

  program_.SaveSettings();
  const std::string music_out =
      "[Sec: Music]\r\n"
      "Dir1=/home/ann/Music\r\n"
      "Dir1Flags=4\r\n"
      "Dir2=/mnt/backup/Music\r\n"
      "Dir2Flags=1\r\n" +
      photos_out.substr(photos_out.find("Recursive="));
  EXPECT_EQ(dir_.ReadFile("Pairwell.ini"),
            head + catalogue + unknown + docs + photos_out + music_out);

  // A second start-up reads back what was saved. Custom handling written
  // with its letters after the number reads back as the number alone.
  std::string expected = dir_.ReadFile("Pairwell.ini");
  for (const std::string from : {"=3C+\r\n", "=1C\r\n"}) {
    const std::string to = from.substr(0, 2) + "\r\n";
    for (auto at = expected.find(from); at != std::string::npos;
         at = expected.find(from)) {
      expected.replace(at, from.size(), to);
    }
  }
  program_.Main("");
  program_.SaveSettings();
  EXPECT_EQ(dir_.ReadFile("Pairwell.ini"), expected);
}

TEST_F(ProgramTest, SetSectionsLoadInFileOrderAndAreWrittenLast) {
  StartWith(
      "[Conflict Types]\r\n[SEC:A]\r\n[Other]\r\nk=v\r\n[sec:  B]\r\n"
      "[Sec: C]\r\n[Tail]\r\n");
  EXPECT_EQ(SetNames(), (std::vector<std::string>{"A", "B", "C"}));
  EXPECT_EQ(program_.TheINIFile().SecCount(),
            3);  // Conflict Types, Other, Tail

  program_.SaveSettings();
  const std::string saved = dir_.ReadFile("Pairwell.ini");
  const auto a = saved.find("[Sec: A]\r\n");
  const auto b = saved.find("[Sec: B]\r\n");
  const auto c = saved.find("[Sec: C]\r\n");
  ASSERT_NE(a, std::string::npos);
  EXPECT_LT(saved.find("[Tail]"), a);
  EXPECT_LT(a, b);
  EXPECT_LT(b, c);
  EXPECT_EQ(saved.find("SEC:A"), std::string::npos);
}

TEST_F(ProgramTest, SecretIsNoSetButEmptySetNameIs) {
  StartWith("[Conflict Types]\r\n[SECRET]\r\nk=v\r\n[Sec:]\r\nDir1=/x\r\n");
  ASSERT_EQ(SetNames(), (std::vector<std::string>{""}));
  EXPECT_EQ(program_.SyncSets().Item(1).PathCount(), 1);
  EXPECT_NE(program_.TheINIFile().Section("SECRET"), nullptr);
  program_.SaveSettings();
  const std::string saved = dir_.ReadFile("Pairwell.ini");
  EXPECT_NE(saved.find("[SECRET]\r\nk=v\r\n"), std::string::npos);
  EXPECT_NE(saved.find("[Sec: ]\r\nDir1=/x\r\n"), std::string::npos);
}

TEST_F(ProgramTest, QuietSwitchUnknownSwitchAndQuotedArgument) {
  StartWith("[Conflict Types]\r\n[Sec: A]\r\n[Sec: B]\r\n",
            "-q /x \"quoted arg\"");
  EXPECT_TRUE(program_.SyncSets().Item(1).QuietMode);
  EXPECT_TRUE(program_.SyncSets().Item(2).QuietMode);
  ASSERT_EQ(ui_.messages.size(), 1u);
  EXPECT_EQ(ui_.messages[0].text, "Unknown command-line switch ignored: /x");
  EXPECT_EQ(ui_.messages[0].style, 64);
  EXPECT_EQ(ui_.messages[0].caption, "Pairwell");
}

TEST_F(ProgramTest, QuestionSwitchShowsOnlyTheNotice) {
  StartWith("[Conflict Types]\r\n[Sec: A]\r\n", "/?");
  ASSERT_EQ(ui_.messages.size(), 1u);
  EXPECT_EQ(ui_.messages[0].text, "COMMAND LINE SUPPORT NOT IMPLEMENTED");
  EXPECT_EQ(ui_.messages[0].style, 0);
  EXPECT_EQ(ui_.messages[0].caption, "Pairwell");
  EXPECT_EQ(SetNames(), (std::vector<std::string>{"A"}));
  EXPECT_FALSE(program_.SyncSets().Item(1).QuietMode);
}

TEST_F(ProgramTest, SwitchesMatchWholeIgnoringCaseAndLoseTheirQuotes) {
  StartWith("[Conflict Types]\r\n[Sec: A]\r\n", "/Qx - \"/x y\" plain /Q");
  EXPECT_EQ(ui_.Texts(), (std::vector<std::string>{
                             "Unknown command-line switch ignored: /Qx",
                             "Unknown command-line switch ignored: -",
                             "Unknown command-line switch ignored: /x y"}));
  EXPECT_TRUE(program_.SyncSets().Item(1).QuietMode);
}

TEST_F(ProgramTest, QuietSwitchReachesOnlySetsLoadedFromTheFile) {
  // The "Untitled" set is made after the switches are applied.
  StartWith("[Conflict Types]\r\n", "/q");
  ASSERT_EQ(SetNames(), (std::vector<std::string>{"Untitled"}));
  EXPECT_FALSE(program_.SyncSets().Item(1).QuietMode);
}

TEST_F(ProgramTest, SimulationModeFollowsBooleanConversion) {
  const struct {
    const char* text;
    bool on;
  } kCases[] = {{"1", true},    {"on", false},   {"True", true},
                {"true", true}, {"-1", true},    {"yes", false},
                {"", false},    {"0", false},    {" TRUE ", true},
                {"2.5", true},  {"False", false}};
  for (const auto& c : kCases) {
    StartWith(std::string("SimulationMode=") + c.text +
              "\r\n[Conflict Types]\r\n");
    EXPECT_EQ(program_.SimulationMode(), c.on) << "SimulationMode=" << c.text;
  }
  StartWith("[Conflict Types]\r\n");
  EXPECT_FALSE(program_.SimulationMode());
}

TEST_F(ProgramTest, NoSetSectionsGiveOneUntitledSet) {
  StartWith("[Conflict Types]\r\nA=DONOTHING* ?0?\r\n");
  ASSERT_EQ(SetNames(), (std::vector<std::string>{"Untitled"}));
  const Synchronizer& set = program_.SyncSets().Item(1);
  EXPECT_EQ(set.Log(), &program_.TheLogFile());
  EXPECT_EQ(set.ConflictTypeCount(), 1);
  // A set made at start-up has a new set's defaults, not a file's.
  EXPECT_EQ(set.FileSpec, "");
  EXPECT_EQ(set.PathCount(), 0);
  EXPECT_TRUE(ui_.messages.empty());
}

TEST_F(ProgramTest, MissingFileGivesBothMessagesAndStillStarts) {
  program_.Main("");
  EXPECT_EQ(ui_.Texts(),
            (std::vector<std::string>{
                "An error occurred while loading " + ini_path() + ": " +
                    SystemText(ENOENT, "No such file or directory"),
                kMissingCatalogue}));
  EXPECT_EQ(ui_.messages[1].style, 16);
  EXPECT_EQ(ui_.messages[1].caption, "Pairwell");
  EXPECT_EQ(SetNames(), (std::vector<std::string>{"Untitled"}));
  EXPECT_EQ(program_.SyncSets().Item(1).ConflictTypeCount(), 0);

  program_.SaveSettings();
  const std::string saved = dir_.ReadFile("Pairwell.ini");
  EXPECT_EQ(saved.substr(0, 24), "\r\n[Conflict Types]\r\n\r\n[S");
}

TEST_F(ProgramTest, FileWithoutCatalogueIsReportedButSetsLoad) {
  StartWith("[Sec: A]\r\nDir1=/a\r\n");
  EXPECT_EQ(ui_.Texts(), (std::vector<std::string>{kMissingCatalogue}));
  EXPECT_EQ(SetNames(), (std::vector<std::string>{"A"}));
  EXPECT_NE(program_.TheINIFile().Section("Conflict Types"), nullptr);
}

TEST_F(ProgramTest, BadCatalogueTextIsReportedAndTheRestLoads) {
  StartWith(
      "[Conflict Types]\r\nBad=x?0 DONOTHING*\r\nGood=?0?\r\n"
      "[Sec: A]\r\n");
  EXPECT_EQ(
      ui_.Texts(),
      (std::vector<std::string>{"An error was detected in the INI file."}));
  ASSERT_EQ(program_.SyncSets().Item(1).ConflictTypeCount(), 1);
  EXPECT_EQ(program_.SyncSets().Item(1).ConflictTypes(1).Name, "Good");
}

TEST_F(ProgramTest, MainTellsWhetherTheConfigurationWasComplete) {
  dir_.WriteFile("Pairwell.ini", "[Conflict Types]\r\n");
  EXPECT_TRUE(program_.Main(""));
  dir_.WriteFile("Pairwell.ini", "[Sec: A]\r\n");
  EXPECT_FALSE(program_.Main(""));
  RemoveFile(ini_path());
  EXPECT_FALSE(program_.Main(""));
}

TEST_F(ProgramTest, StartUpClearsTheLogFlags) {
  program_.TheLogFile().LogFlags = 15;
  StartWith("[Conflict Types]\r\n");
  EXPECT_EQ(program_.TheLogFile().LogFlags, 0);
}

TEST_F(ProgramTest, ClearLogDailyLastsUntilTheNextSave) {
  StartWith("[Conflict Types]\r\n[Sec: A]\r\nClearLogDaily=True\r\n");
  EXPECT_TRUE(program_.SyncSets().Item(1).ClearLogDaily);
  program_.SaveSettings();
  EXPECT_EQ(dir_.ReadFile("Pairwell.ini").find("ClearLogDaily"),
            std::string::npos);
  program_.Main("");
  EXPECT_FALSE(program_.SyncSets().Item(1).ClearLogDaily);
}

TEST_F(ProgramTest, SetsWhoseNamesDifferInCaseShareOneSection) {
  StartWith("[Conflict Types]\r\n");
  program_.NewSyncSet("Docs").PathAdd("/first");
  program_.NewSyncSet("DOCS").FileSpec = "*.txt";
  program_.SaveSettings();
  const std::string saved = dir_.ReadFile("Pairwell.ini");
  EXPECT_NE(saved.find("[Sec: Docs]\r\nDir1=/first\r\nDir1Flags=4\r\n"),
            std::string::npos);
  EXPECT_EQ(saved.find("[Sec: DOCS]"), std::string::npos);
  EXPECT_NE(saved.find("FileSpec=*.txt\r\n"), std::string::npos);
}

TEST_F(ProgramTest, SavingTwiceLeavesNoStaleKeysOrSets) {
  StartWith(
      "[Conflict Types]\r\n[Sec: A]\r\nDir1=/a\r\nDir2=/b\r\n"
      "[Sec: B]\r\n");
  program_.SaveSettings();
  program_.SyncSets().Item(1).PathRemove(2);
  program_.SyncSets().Remove(2);
  program_.SaveSettings();
  const std::string saved = dir_.ReadFile("Pairwell.ini");
  EXPECT_EQ(saved.find("Dir2"), std::string::npos);
  EXPECT_EQ(saved.find("[Sec: B]"), std::string::npos);
}

TEST_F(ProgramTest, RenamedSetIsSavedUnderItsNewName) {
  StartWith("[Conflict Types]\r\n[Sec: Old]\r\nDir1=/a\r\n");
  program_.SyncSets().Item(1).Name = "New";
  program_.SaveSettings();
  const std::string saved = dir_.ReadFile("Pairwell.ini");
  EXPECT_EQ(saved.find("[Sec: Old]"), std::string::npos);
  EXPECT_NE(saved.find("[Sec: New]\r\nDir1=/a\r\n"), std::string::npos);
}

TEST_F(ProgramTest, NewSyncSetCreatesAnEmptyCatalogueSectionWhenMissing) {
  StartWith("");
  EXPECT_NE(program_.TheINIFile().Section("Conflict Types"), nullptr);
  Synchronizer& set = program_.NewSyncSet("Second");
  EXPECT_EQ(program_.SyncSets().Count(), 2);
  EXPECT_EQ(&program_.SyncSets().Item(2), &set);
  EXPECT_EQ(set.Name, "Second");
}

TEST_F(ProgramTest, SaveFailureThrowsAndKeepsTheOldFile) {
  StartWith("[Conflict Types]\r\n[Sec: A]\r\n");
  const std::string before = dir_.ReadFile("Pairwell.ini");
  SetEnvironmentValue(kIniPathVariable, dir_.Join("no/folder/Pairwell.ini"));
  EXPECT_THROW(program_.SaveSettings(), std::system_error);
  EXPECT_EQ(dir_.ReadFile("Pairwell.ini"), before);
}

TEST_F(ProgramTest, LastSyncDateSurvivesSaveAndLoad) {
  StartWith(
      "[Conflict Types]\r\n[Sec: A]\r\nLastSyncDate=11/2/2026 3:04:05 PM\r\n");
  DateParts expected;
  expected.year = 2026;
  expected.month = 11;
  expected.day = 2;
  expected.hour = 15;
  expected.minute = 4;
  expected.second = 5;
  EXPECT_DOUBLE_EQ(program_.SyncSets().Item(1).LastSyncDate,
                   DateFromParts(expected));
  program_.SaveSettings();
  EXPECT_NE(dir_.ReadFile("Pairwell.ini")
                .find("LastSyncDate=2026-11-02 15:04:05\r\n"),
            std::string::npos);
}

// Makes the path's modification time two days old.
void AgeByTwoDays(const std::string& path) {
  ASSERT_TRUE(SetModifyTime(path, time(nullptr) - 2 * 86400));
}

TEST_F(ProgramTest, ClearLogIfOldKeepsAnOrdinaryLogFile) {
  StartWith(
      "[Conflict Types]\r\n[Sec: A]\r\nClearLogDaily=True\r\n"
      "LogFileName= old.log \r\n");
  dir_.WriteFile("old.log", "yesterday's lines");
  AgeByTwoDays(dir_.Join("old.log"));
  // The lookup adds "/*" to the name, so an ordinary file is never found.
  ClearLogIfOld(program_.SyncSets().Item(1));
  EXPECT_EQ(dir_.ReadFile("old.log"), "yesterday's lines");
  EXPECT_TRUE(ui_.messages.empty());
}

TEST_F(ProgramTest, ClearLogIfOldDoesNothingUnlessAsked) {
  StartWith("[Conflict Types]\r\n[Sec: A]\r\nLogFileName=logdir\r\n");
  ASSERT_TRUE(CreateFolder(dir_.Join("logdir")));
  AgeByTwoDays(dir_.Join("logdir"));
  ClearLogIfOld(program_.SyncSets().Item(1));
  EXPECT_TRUE(dir_.Exists("logdir"));
}

TEST_F(ProgramTest, ClearLogIfOldIgnoresTheFailureToDeleteAFolder) {
  StartWith(
      "[Conflict Types]\r\n[Sec: A]\r\nClearLogDaily=True\r\n"
      "LogFileName=logdir\r\n");
  ASSERT_TRUE(CreateFolder(dir_.Join("logdir")));
  dir_.WriteFile("logdir/kept.txt", "x");
  AgeByTwoDays(dir_.Join("logdir"));
  // Found (a folder has a "." entry) and old, but a folder is not a file:
  // the deletion fails quietly and everything stays.
  ClearLogIfOld(program_.SyncSets().Item(1));
  EXPECT_EQ(dir_.ReadFile("logdir/kept.txt"), "x");
  EXPECT_TRUE(ui_.messages.empty());
}

TEST_F(ProgramTest, RelativeLogNamesAreTakenBesideTheConfiguration) {
  EXPECT_EQ(ConfigFolder(), dir_.path());
}

TEST_F(ProgramTest, SaveLastSyncDatesChangesOnlyTheLastSyncKeysOnDisk) {
  StartWith("[Conflict Types]\r\n[SEC:Docs]\r\nDir1=/a\r\n[Sec: Other]\r\n");
  // Meanwhile somebody edits the file.
  const std::string edited =
      ";edited\r\n\r\n[Conflict Types]\r\n\r\n[SEC:Docs]\r\nDir1=/b\r\n"
      "LastSyncDate=2020-01-01 00:00:00\r\n;note\r\n\r\n[Sec: Other]\r\n\r\n";
  dir_.WriteFile("Pairwell.ini", edited);
  Synchronizer& docs = program_.SyncSets().Item(1);
  docs.LastSyncDate = MakeDate(2026, 11, 2, 15, 4, 5);
  EXPECT_TRUE(program_.SaveLastSyncDates({&docs}));
  std::string expected = edited;
  expected.replace(expected.find("2020-01-01 00:00:00"), 19,
                   "2026-11-02 15:04:05");
  // The moment beside it is new: it goes at the end of the section.
  expected.insert(expected.find(";note\r\n") + 7,
                  "LastSyncMoment=2026-11-02T15:04:05+00:00\r\n");
  EXPECT_EQ(dir_.ReadFile("Pairwell.ini"), expected);
  EXPECT_TRUE(ui_.messages.empty());
}

TEST_F(ProgramTest, SaveLastSyncDatesTellsWhenASetIsGone) {
  StartWith("[Conflict Types]\r\n[Sec: Docs]\r\n");
  dir_.WriteFile("Pairwell.ini", "[Conflict Types]\r\n\r\n");
  program_.SyncSets().Item(1).LastSyncDate = 45000;
  EXPECT_FALSE(program_.SaveLastSyncDates({&program_.SyncSets().Item(1)}));
  EXPECT_EQ(ui_.Texts(),
            (std::vector<std::string>{
                "The set 'Docs' is no longer in " + ini_path() +
                "; its last synchronization date was not saved."}));
  // Nothing to write: the file is left as it was.
  EXPECT_EQ(dir_.ReadFile("Pairwell.ini"), "[Conflict Types]\r\n\r\n");
}

TEST_F(ProgramTest, SaveLastSyncDatesOfAMissingFileChangesNothing) {
  StartWith("[Conflict Types]\r\n[Sec: Docs]\r\n");
  RemoveFile(ini_path());
  program_.SyncSets().Item(1).LastSyncDate = 45000;
  EXPECT_FALSE(program_.SaveLastSyncDates({&program_.SyncSets().Item(1)}));
  EXPECT_FALSE(dir_.Exists("Pairwell.ini"));
  ASSERT_EQ(ui_.messages.size(), 1u);
}

TEST_F(ProgramTest, StartRemovesWhatACrashedSaveLeftBesideTheFile) {
  const std::string stale = dir_.Join("Pairwell.ini.pairwell-Ab12Cd");
  const std::string recent = dir_.Join("Pairwell.ini.pairwell-Zz99Yy");
  const std::string other = dir_.Join("Other.ini.pairwell-Ab12Cd");
  const std::string longer = dir_.Join("Pairwell.ini.pairwell-Ab12Cd7");
  for (const std::string& path : {stale, recent, other, longer}) {
    const std::string name = path.substr(path.rfind('/') + 1);
    dir_.WriteFile(name, "half a file");
    const std::time_t when =
        path == recent ? std::time(nullptr) + 600 : std::time(nullptr) - 3600;
    ASSERT_TRUE(SetModifyTime(path, when)) << path;
  }

  StartWith("[Conflict Types]\r\n");

  EXPECT_FALSE(dir_.Exists("Pairwell.ini.pairwell-Ab12Cd"));
  // Another process may be saving right now; other names are not ours.
  EXPECT_TRUE(dir_.Exists("Pairwell.ini.pairwell-Zz99Yy"));
  EXPECT_TRUE(dir_.Exists("Other.ini.pairwell-Ab12Cd"));
  EXPECT_TRUE(dir_.Exists("Pairwell.ini.pairwell-Ab12Cd7"));
}

}  // namespace
}  // namespace pairwell
