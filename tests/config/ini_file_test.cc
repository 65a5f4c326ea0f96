#include "config/ini_file.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <memory>
#include <sstream>
#include <stdexcept>
#include <system_error>
#include <utility>
#include <vector>

#include "support/recording_user_interface.h"
#include "support/section_entries.h"
#include "support/system_text.h"
#include "support/temp_dir.h"
#include "support/test_files.h"

namespace pairwell {
namespace {

class INIFileTest : public ::testing::Test {
 protected:
  // Loads the text from a real file and returns the store.
  void Load(const std::string& text) {
    dir_.WriteFile("test.ini", text);
    ASSERT_TRUE(ini_.LoadFile(dir_.Join("test.ini")));
  }

  RecordingUserInterface ui_;
  TempDir dir_;
  INIFile ini_;
};

TEST_F(INIFileTest, DuplicateSectionsMergeAndRepeatedKeysKeepFirstPlace) {
  Load("[A]\r\nx=1\r\n[a]\r\nx=2\r\ny=3\r\n");
  ASSERT_EQ(ini_.SecCount(), 1);
  EXPECT_EQ(ini_.SectionI(1)->SecName, "A");
  EXPECT_EQ(EntriesOf(*ini_.SectionI(1)), (Entries{{"x", "2"}, {"y", "3"}}));
  EXPECT_EQ(ini_.ToText(), "\r\n[A]\r\nx=2\r\ny=3\r\n\r\n");
}

TEST_F(INIFileTest, EntryNamesAndValuesAreSplitAtTheFirstEqualsUntrimmed) {
  Load("[S]\r\nk=v=w\r\n=v\r\n  k2 = v \r\n");
  EXPECT_EQ(EntriesOf(*ini_.Section("S")),
            (Entries{{"k", "v=w"}, {"", "v"}, {"k2 ", " v "}}));
}

TEST_F(INIFileTest, CommentBeforeFirstHeaderStaysInHeadSection) {
  Load(";note\r\n[S]\r\nk=v\r\n");
  EXPECT_EQ(EntriesOf(*ini_.SectionI(0)), (Entries{{";", "note"}}));
  EXPECT_EQ(ini_.SectionI(0)->CommentCount(), 1);
  EXPECT_EQ(ini_.ToText(), ";note\r\n\r\n[S]\r\nk=v\r\n\r\n");
}

TEST_F(INIFileTest, HeaderWithoutUsableBracketIsDroppedAndLinesStay) {
  Load("[S]\r\na=1\r\n[]\r\nb=2\r\n[abc\r\nc=3\r\n");
  ASSERT_EQ(ini_.SecCount(), 1);
  EXPECT_EQ(EntriesOf(*ini_.Section("S")),
            (Entries{{"a", "1"}, {"b", "2"}, {"c", "3"}}));
}

TEST_F(INIFileTest, TextAfterClosingBracketIsIgnored) {
  Load("[Sec: One] trailing\r\nk=v\r\n");
  ASSERT_EQ(ini_.SecCount(), 1);
  EXPECT_EQ(ini_.SectionI(1)->SecName, "Sec: One");
}

TEST_F(INIFileTest, SpacesInsideBracketsAndLeadingSpacesOfHeaderLine) {
  Load("   [ Spaced ]\r\nk=v\r\n");
  EXPECT_EQ(ini_.SectionI(1)->SecName, " Spaced ");
}

TEST_F(INIFileTest, SectionNamesIgnoreCaseButKeyNamesDoNot) {
  Load("[Conflict Types]\r\nDir=x\r\n");
  EXPECT_EQ(ini_.IndexOfSection("CONFLICT TYPES"), 1);
  EXPECT_EQ(ini_.IndexOfSection(""), 0);
  EXPECT_EQ(ini_.IndexOfSection("missing"), -1);
  const auto section = ini_.Section("conflict types");
  ASSERT_NE(section, nullptr);
  EXPECT_EQ(section->FindVar("dir"), "");
  EXPECT_EQ(section->FindVarIndex("dir"), -1);
  EXPECT_EQ(section->FindVar("Dir"), "x");
  EXPECT_EQ(ini_.Section("nothing"), nullptr);
}

TEST_F(INIFileTest, FindVar2GivesEmptyValueOfPresentKeyAndDefaultOtherwise) {
  Load("[S]\r\nk=\r\n");
  EXPECT_EQ(ini_.Section("S")->FindVar2("k", "d"), "");
  EXPECT_EQ(ini_.Section("S")->FindVar2("other", "d"), "d");
}

TEST_F(INIFileTest, MissingFileShowsOneMessageAndSaveThenStartsWithBlank) {
  const std::string path = dir_.Join("absent.ini");
  EXPECT_FALSE(ini_.LoadFile(path));
  ASSERT_EQ(ui_.messages.size(), 1u);
  EXPECT_EQ(ui_.messages[0].text,
            "An error occurred while loading " + path + ": " +
                SystemText(ENOENT, "No such file or directory"));
  EXPECT_EQ(ui_.messages[0].style, 48);
  EXPECT_EQ(ui_.messages[0].caption, "Pairwell");
  EXPECT_EQ(ini_.SecCount(), 0);
  ASSERT_NE(ini_.SectionI(0), nullptr);
  EXPECT_EQ(ini_.SectionI(0)->VarCount(), 0);

  EXPECT_TRUE(ini_.SaveFile(path));
  EXPECT_EQ(dir_.ReadFile("absent.ini"), "\r\n");
}

TEST_F(INIFileTest, UnreadableFileIsReportedWithTheSystemReason) {
  // A folder cannot be read as a file, whoever runs the test.
  EXPECT_FALSE(ini_.LoadFile(dir_.path()));
  ASSERT_EQ(ui_.messages.size(), 1u);
  // Windows will not open a folder as a file at all: access denied.
#ifdef _WIN32
  const std::string reason = ErrorText(EACCES);
#else
  const std::string reason = "Is a directory";
#endif
  EXPECT_EQ(ui_.messages[0].text,
            "An error occurred while loading " + dir_.path() + ": " + reason);
}

TEST_F(INIFileTest, SaveIntoMissingFolderThrowsAndLeavesNothing) {
  ini_.Clear();
  ini_.AddSection("S")->AddVar("k", "v");
  EXPECT_THROW(ini_.SaveFile(dir_.Join("no/such/folder/x.ini")),
               std::system_error);
  EXPECT_FALSE(dir_.Exists("no"));
}

TEST_F(INIFileTest, FailedSaveKeepsTheOldFileWhole) {
  Load("[S]\r\nk=old\r\n");
  // Saving over a folder path fails at the rename; the old file is
  // untouched and no temporary file is left behind.
  ini_.Section("S")->AddVar("k", "new");
  EXPECT_THROW(ini_.SaveFile(dir_.path()), std::system_error);
  EXPECT_EQ(dir_.ReadFile("test.ini"), "[S]\r\nk=old\r\n");
}

TEST_F(INIFileTest, LinesEndingInLoneLfOrCrAreRead) {
  Load("[S]\nk=1\rj=2\r\n");
  EXPECT_EQ(EntriesOf(*ini_.Section("S")), (Entries{{"k", "1"}, {"j", "2"}}));
}

TEST_F(INIFileTest, LinesWithoutEqualsAndBlankLinesAreDropped) {
  Load("[S]\r\n\r\njunk\r\nk=v\r\n\r\n\r\n");
  EXPECT_EQ(EntriesOf(*ini_.Section("S")), (Entries{{"k", "v"}}));
  EXPECT_EQ(ini_.ToText(), "\r\n[S]\r\nk=v\r\n\r\n");
}

TEST_F(INIFileTest, SaveThenReloadReproducesEverythingInOrder) {
  const std::string text =
      ";head comment\r\nCurSyncSet=2\r\n\r\n"
      "[Conflict Types]\r\n; a comment\r\nA=\"a b\" 0?0\r\n\r\n"
      "[Other]\r\nz=1\r\n;c\r\n;c\r\na=2\r\n\r\n";
  Load(text);
  EXPECT_EQ(ini_.ToText(), text);
  ini_.SaveFile(dir_.Join("again.ini"));
  EXPECT_EQ(dir_.ReadFile("again.ini"), text);
}

TEST_F(INIFileTest, SaveKeepsTheFilesPermissionBits) {
  Load("[S]\r\n");
  ASSERT_TRUE(SetMode(dir_.Join("test.ini"), 0640));
  ini_.SaveFile(dir_.Join("test.ini"));
  const int mode = ModeOf(dir_.Join("test.ini"));
  ASSERT_GE(mode, 0);
  EXPECT_EQ(mode & 0777, KeptMode(0640));
}

TEST_F(INIFileTest, AddSectionFindsExistingOrAppends) {
  ini_.Clear();
  const auto a = ini_.AddSection("Alpha");
  EXPECT_EQ(ini_.AddSection("ALPHA"), a);
  ini_.AddSection("Beta");
  EXPECT_EQ(ini_.SecCount(), 2);
  EXPECT_EQ(ini_.SectionI(2)->SecName, "Beta");
}

TEST_F(INIFileTest, RemoveSectionIRules) {
  ini_.Clear();
  ini_.AddSection("One");
  ini_.AddSection("Two");
  ini_.AddSection("Three");
  EXPECT_EQ(ini_.RemoveSectionI(0), ini_.SectionI(0));
  EXPECT_EQ(ini_.SecCount(), 3);
  EXPECT_EQ(ini_.RemoveSectionI(-1), nullptr);
  EXPECT_EQ(ini_.RemoveSectionI(4), nullptr);
  const auto removed = ini_.RemoveSectionI(2);
  ASSERT_NE(removed, nullptr);
  EXPECT_EQ(removed->SecName, "Two");
  EXPECT_EQ(ini_.SecCount(), 2);
  EXPECT_EQ(ini_.SectionI(2)->SecName, "Three");
  EXPECT_EQ(ini_.RemoveSection("one")->SecName, "One");
  EXPECT_EQ(ini_.RemoveSection("absent"), nullptr);
  EXPECT_EQ(ini_.SecCount(), 1);
}

TEST_F(INIFileTest, SectionIOutsideRangeThrows) {
  ini_.Clear();
  EXPECT_THROW(ini_.SectionI(1), std::out_of_range);
  EXPECT_THROW(ini_.SectionI(-1), std::out_of_range);
}

TEST_F(INIFileTest, NewStoreHasNoHeadSectionUntilCleared) {
  INIFile fresh;
  EXPECT_EQ(fresh.SecCount(), 0);
  EXPECT_EQ(fresh.SectionI(0), nullptr);
  fresh.Clear();
  EXPECT_NE(fresh.SectionI(0), nullptr);
}

TEST(INIFileSectionTest, AddVarReplacesInPlaceButAlwaysAppendsComments) {
  INIFileSection section("S");
  section.AddVar("a", "1");
  section.AddVar(";", "c");
  section.AddVar("b", "2");
  section.AddVar("a", "3");
  section.AddVar(";", "c");
  EXPECT_EQ(EntriesOf(section),
            (Entries{{"a", "3"}, {";", "c"}, {"b", "2"}, {";", "c"}}));
  EXPECT_EQ(section.VarCount(), 4);
  EXPECT_EQ(section.CommentCount(), 2);
  EXPECT_EQ(section.FindVarIndex(";"), 2);
  section.ClearVars();
  EXPECT_EQ(section.VarCount(), 0);
  EXPECT_EQ(section.CommentCount(), 0);
}

TEST(INIFileSectionTest, EntriesAreEditedInPlaceAndIndexesAreChecked) {
  INIFileSection section("S");
  section.AddVar("a", "1");
  section.SetVarName(1, "b");
  section.SetVarValue(1, "2");
  EXPECT_EQ(section.FindVar("b"), "2");
  EXPECT_THROW(section.VarName(0), std::out_of_range);
  EXPECT_THROW(section.VarValue(2), std::out_of_range);
  EXPECT_THROW(section.SetVarValue(2, "x"), std::out_of_range);
}

TEST(INIFileSectionTest, ReadVarsStopsAtHeaderAndReturnsIt) {
  std::istringstream in("a=1\r\n  [Next] x\r\nb=2\r\n");
  INIFileSection section;
  EXPECT_EQ(section.ReadVars(in), "[Next] x");
  EXPECT_EQ(EntriesOf(section), (Entries{{"a", "1"}}));
  EXPECT_EQ(section.ReadVars(in), "");
  EXPECT_EQ(EntriesOf(section), (Entries{{"a", "1"}, {"b", "2"}}));
}

TEST(INIFileSectionTest, WriteVarsWritesHeadingOnlyWhenAsked) {
  INIFileSection section("S");
  section.AddVar("k", "v");
  section.AddVar(";", " note");
  std::ostringstream with, without;
  section.WriteVars(with, true);
  section.WriteVars(without, false);
  EXPECT_EQ(with.str(), "[S]\r\nk=v\r\n; note\r\n");
  EXPECT_EQ(without.str(), "k=v\r\n; note\r\n");
}

TEST(INIFileSectionTest, LoadFromFileReadsEveryExactHeaderMatch) {
  TempDir dir;
  dir.WriteFile("f.ini",
                "[S]\r\na=1\r\n[T]\r\nb=2\r\n  [S]  \r\nc=3\r\n[s]\r\nd=4\r\n");
  INIFileSection section;
  EXPECT_TRUE(section.LoadFromFile(dir.Join("f.ini"), "S"));
  EXPECT_EQ(section.SecName, "S");
  // "[s]" differs in case, so "d" is not read.
  EXPECT_EQ(EntriesOf(section), (Entries{{"a", "1"}, {"c", "3"}}));
}

TEST(INIFileSectionTest, LoadFromFileSkipsTheHeaderThatEndedTheRead) {
  TempDir dir;
  dir.WriteFile("f.ini", "[S]\r\na=1\r\n[S]\r\nb=2\r\n");
  INIFileSection section;
  EXPECT_TRUE(section.LoadFromFile(dir.Join("f.ini"), "S"));
  // The second "[S]" was consumed while reading the first part, so the
  // lines after it are only scanned for headers.
  EXPECT_EQ(EntriesOf(section), (Entries{{"a", "1"}}));
}

TEST(INIFileSectionTest, LoadFromFileOnMissingFileOrSectionIsFalseQuietly) {
  RecordingUserInterface ui;
  TempDir dir;
  INIFileSection section;
  EXPECT_FALSE(section.LoadFromFile(dir.Join("missing.ini"), "S"));
  dir.WriteFile("f.ini", "[T]\r\na=1\r\n");
  EXPECT_FALSE(section.LoadFromFile(dir.Join("f.ini"), "S"));
  EXPECT_EQ(section.VarCount(), 0);
  EXPECT_TRUE(ui.messages.empty());
}

TEST_F(INIFileTest, NulByteEndsTheLineItStandsIn) {
  const char kText[] = "[Sec: X]\r\nDir1=/x/top\0/A\r\nDir2=/y\r\nK\0ey=v\r\n";
  Load(std::string(kText, sizeof kText - 1));
  const std::shared_ptr<INIFileSection> section = ini_.Section("Sec: X");
  ASSERT_TRUE(section);
  EXPECT_EQ(section->FindVar("Dir1"), "/x/top");
  EXPECT_EQ(section->FindVar("Dir2"), "/y");
  // A name cut before its "=" makes no entry.
  EXPECT_EQ(section->VarCount(), 2);
}

TEST_F(INIFileTest, ManySectionsAreFoundByNameIgnoringCase) {
  std::string text;
  for (int i = 0; i < 100000; ++i) {
    text += "[Sec: " + std::to_string(i) + "]\r\nDir1=/d" + std::to_string(i) +
            "\r\n";
  }
  text += "[sec: 7]\r\nDir2=/later\r\n";
  ini_.LoadText(text);
  EXPECT_EQ(ini_.SecCount(), 100000);
  EXPECT_EQ(ini_.IndexOfSection("SEC: 99999"), 100000);
  EXPECT_EQ(ini_.Section("Sec: 7")->FindVar("Dir2"), "/later");
  EXPECT_EQ(ini_.IndexOfSection("Sec: 100000"), -1);
  // Removing a section moves the later ones down; the index follows.
  ini_.RemoveSection("sec: 0");
  EXPECT_EQ(ini_.IndexOfSection("Sec: 0"), -1);
  EXPECT_EQ(ini_.IndexOfSection("Sec: 99999"), 99999);
  EXPECT_EQ(ini_.AddSection("New")->SecName, "New");
  EXPECT_EQ(ini_.IndexOfSection("NEW"), 100000);
  ini_.Clear();
  EXPECT_EQ(ini_.IndexOfSection("Sec: 1"), -1);
  EXPECT_EQ(ini_.IndexOfSection(""), 0);
}

TEST_F(INIFileTest, FailedSaveLeavesNoTemporaryFile) {
  Load("[S]\r\nk=old\r\n");
  ASSERT_TRUE(CreateFolder(dir_.Join("settings.ini")));
  EXPECT_THROW(ini_.SaveFile(dir_.Join("settings.ini")), std::system_error);
  std::vector<std::string> names;
  for (const auto& entry : std::filesystem::directory_iterator(dir_.path())) {
    names.push_back(entry.path().filename().string());
  }
  std::sort(names.begin(), names.end());
  EXPECT_EQ(names, (std::vector<std::string>{"settings.ini", "test.ini"}));
}

TEST(INIFileSectionTest, ManyKeysAreFoundByExactName) {
  INIFileSection section("S");
  for (int i = 0; i < 100000; ++i) {
    section.AddVar("Key" + std::to_string(i), std::to_string(i));
  }
  section.AddVar("Key5", "replaced");
  EXPECT_EQ(section.VarCount(), 100000);
  EXPECT_EQ(section.FindVarIndex("Key99999"), 100000);
  EXPECT_EQ(section.FindVar("Key5"), "replaced");
  EXPECT_EQ(section.FindVarIndex("key5"), -1);
  // A renamed entry is found by its new name only.
  section.SetVarName(1, "First");
  EXPECT_EQ(section.FindVarIndex("First"), 1);
  EXPECT_EQ(section.FindVarIndex("Key0"), -1);
  section.ClearVars();
  EXPECT_EQ(section.FindVarIndex("Key1"), -1);
}

}  // namespace
}  // namespace pairwell
