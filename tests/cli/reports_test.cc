// The plan's JSON report gives each copy its own dates, however many of them
// are alike.
#include "cli/reports.h"

#include <gtest/gtest.h>

#include <string>

#include "cli/output_buffer.h"
#include "engine/sync_file.h"
#include "engine/synchronizer.h"
#include "support/recording_user_interface.h"
#include "support/scanned_folders.h"
#include "support/temp_dir.h"
#include "util/date_time.h"

namespace pairwell {
namespace {

// The text of the copies of the file named `name` in the report.
std::string CopiesOf(const std::string& json, const std::string& name) {
  const std::string::size_type file = json.find("\"name\":\"" + name + "\"");
  if (file == std::string::npos) return std::string();
  const std::string::size_type copies = json.find("\"copies\":", file);
  return json.substr(copies, json.find(']', copies) - copies + 1);
}

std::string CopyText(double modify, double create) {
  return "{\"exists\":true,\"modify\":\"" + FormatGeneralDate(modify) +
         "\",\"create\":\"" + FormatGeneralDate(create) +
         "\",\"size\":100,\"attributes\":0}";
}

TEST(PlanJsonTest, EveryCopyShowsItsOwnDatesWhenNeighboursShareThem) {
  RecordingUserInterface ui;
  TempDir dir;
  Synchronizer set;
  ScanFolders(set, dir, {kFolderSource, kFolderSource},
              {"a.txt", "b.txt", "c.txt"}, {});
  // Alike, then a create date of its own, then the same again, then a
  // missing copy between equal dates.
  set.WFile(1).SetCopy(1, Present(Old(), 100, 0, Old()));
  set.WFile(1).SetCopy(2, Present(Old(), 100, 0, Old()));
  set.WFile(2).SetCopy(1, Present(Old(), 100, 0, SyncDate()));
  set.WFile(2).SetCopy(2, Present(Fresh(), 100, 0, Fresh()));
  set.WFile(3).SetCopy(1, Present(Fresh(), 100, 0, Fresh()));
  set.WFile(3).SetCopy(2, kMissing);
  OutputBuffer out;

  PlanJson(set, out);

  EXPECT_EQ(CopiesOf(out.text(), "a.txt"), "\"copies\":[" +
                                               CopyText(Old(), Old()) + "," +
                                               CopyText(Old(), Old()) + "]");
  EXPECT_EQ(CopiesOf(out.text(), "b.txt"),
            "\"copies\":[" + CopyText(Old(), SyncDate()) + "," +
                CopyText(Fresh(), Fresh()) + "]");
  EXPECT_EQ(CopiesOf(out.text(), "c.txt"),
            "\"copies\":[" + CopyText(Fresh(), Fresh()) +
                ",{\"exists\":false,\"modify\":null,\"create\":null,"
                "\"size\":0,\"attributes\":0}]");
}

}  // namespace
}  // namespace pairwell
