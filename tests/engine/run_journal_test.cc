#include "engine/run_journal.h"

#include <gtest/gtest.h>

#include <fstream>

#include "support/temp_dir.h"

namespace pairwell {
namespace {

JournalStep Step(JournalStep::Kind kind, const std::string& rel) {
  JournalStep step;
  step.kind = kind;
  step.rel = rel;
  step.kept = "/k/" + rel;
  step.before = FileIdentity{5, 1700000000123456789, 42, 0444};
  step.after = FileIdentity{7, 1700000100000000000, 43, 0644};
  return step;
}

TEST(RunJournalTest, WhatIsRecordedReadsBackExactly) {
  TempDir dir;
  JournalHeader header;
  header.set_name = "Photos\t2026";
  header.run_id = "20261125-043012";
  header.folder = "/media/stick/photos";
  header.started = 1795581012;
  header.last_sync_date = 46350.5123456789;
  header.has_last_sync_moment = true;
  header.last_sync_moment = 1795000000;
  header.undoes = "20261124-120000";
  // Names may hold anything a file system allows but a NUL.
  const std::vector<JournalStep> steps = {
      Step(JournalStep::Kind::kFolderCreated, "new"),
      Step(JournalStep::Kind::kCreated, "new/a\tb%20c.txt"),
      Step(JournalStep::Kind::kReplaced, "line\nbreak\r.txt"),
      Step(JournalStep::Kind::kDeleted, "100%.txt"),
      Step(JournalStep::Kind::kFolderRemoved, "old")};
  RunJournal journal;
  ASSERT_EQ(journal.Create(dir.Join("journal"), header), 0);
  for (const JournalStep& step : steps) ASSERT_EQ(journal.Record(step), 0);
  ASSERT_EQ(journal.End(false), 0);

  JournalContent content;
  std::string problem;
  ASSERT_TRUE(RunJournal::Read(dir.Join("journal"), &content, &problem))
      << problem;

  EXPECT_EQ(content.header.set_name, header.set_name);
  EXPECT_EQ(content.header.run_id, header.run_id);
  EXPECT_EQ(content.header.folder, header.folder);
  EXPECT_EQ(content.header.started, header.started);
  EXPECT_EQ(content.header.last_sync_date, header.last_sync_date);
  EXPECT_TRUE(content.header.has_last_sync_moment);
  EXPECT_EQ(content.header.last_sync_moment, header.last_sync_moment);
  EXPECT_EQ(content.header.undoes, header.undoes);
  EXPECT_TRUE(content.ended);
  EXPECT_FALSE(content.stopped);
  ASSERT_EQ(content.steps.size(), steps.size());
  for (std::size_t i = 0; i < steps.size(); ++i) {
    EXPECT_EQ(content.steps[i].kind, steps[i].kind) << i;
    EXPECT_EQ(content.steps[i].rel, steps[i].rel) << i;
    EXPECT_EQ(content.steps[i].kept, steps[i].kept) << i;
    EXPECT_EQ(content.steps[i].before.modified_ns,
              steps[i].before.modified_ns);
    EXPECT_EQ(content.steps[i].before.mode, 0444);
    EXPECT_EQ(content.steps[i].after.inode, 43u);
  }
}

TEST(RunJournalTest, StepCutShortByTheEndOfTheRunIsDropped) {
  TempDir dir;
  JournalHeader header;
  header.set_name = "Docs";
  header.run_id = "20261125-043012";
  RunJournal journal;
  ASSERT_EQ(journal.Create(dir.Join("journal"), header), 0);
  ASSERT_EQ(journal.Record(Step(JournalStep::Kind::kDeleted, "a.txt")), 0);
  ASSERT_EQ(journal.Flush(), 0);
  // The program died in the middle of its next line.
  std::ofstream(dir.Join("journal"), std::ios::app) << "step\treplaced\tb.t";

  JournalContent content;
  std::string problem;
  ASSERT_TRUE(RunJournal::Read(dir.Join("journal"), &content, &problem));

  ASSERT_EQ(content.steps.size(), 1u);
  EXPECT_EQ(content.steps[0].rel, "a.txt");
  EXPECT_FALSE(content.ended);
}

TEST(RunJournalTest, OtherFilesAreNoJournal) {
  TempDir dir;
  dir.WriteFile("notes.txt", "set\tDocs\nrun\tx\n");
  JournalContent content;
  std::string problem;
  EXPECT_FALSE(RunJournal::Read(dir.Join("notes.txt"), &content, &problem));
  EXPECT_EQ(problem, "is not a run journal");
  EXPECT_FALSE(RunJournal::Read(dir.Join("missing"), &content, &problem));
  // A second journal of the same name is refused.
  RunJournal journal;
  EXPECT_EQ(journal.Create(dir.Join("notes.txt"), JournalHeader()), EEXIST);
}

}  // namespace
}  // namespace pairwell
