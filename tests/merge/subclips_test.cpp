#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

#include "merge/add_log_notes.hpp"
#include "merge/merge_files.hpp"

namespace pellago::merge_test {
namespace {

using SubclipsTest = ScratchFolderTest;
using testing::ElementsAre;

TEST_F(SubclipsTest, FurtherRowsGetRenamedCopiesAtTheEndOfTheClipsParent) {
  write_xlsx(path("log.xlsx"), {{"Name", "Subclip Name", "In", "Out", "Scene"},
                                {"C001", "take one", "", "00:00:08:00", "s1"},
                                {"C001", "", "00:00:02:00", "", "s2"},
                                {"C001", "take three", "", "", "s3"}});
  const MergeReport report =
      add_log_notes(path("log.xlsx"), data_path("merge_copies.xml"), path("out.xml"));

  EXPECT_EQ(read_file(path("out.xml")), read_file(data_path("merge_copies_logged.xml")));
  EXPECT_EQ(report.clips_visited, 3u);
  EXPECT_EQ(report.clips_changed, 2u);
  EXPECT_EQ(report.subclips_made, 4u);
  // A row without a subclip name leaves its copy named as the clip.
  const CutClip cut{.name = "C001", .subclips = {"take one", "C001", "take three"}};
  EXPECT_THAT(report.cut_clips, ElementsAre(cut, cut));
  EXPECT_EQ(report.rows_unmatched, 0u);
}

TEST_F(SubclipsTest, ClipsBeyondTheSheetsRowCountGetOnlyClearingAndCopiesUnderThePositionLimit) {
  const std::vector<SheetRow> rows{{"Name", "Subclip Name", "In", "Scene"},
                                   {"X", "first", "", "one"},
                                   {"X", "second", "", "two"}};
  write_xlsx(path("log.xlsx"), rows);
  const MergeReport limited =
      add_log_notes(path("log.xlsx"), data_path("merge_position_limit.xml"), path("out.xml"));
  EXPECT_EQ(read_file(path("out.xml")), read_file(data_path("merge_position_limit_cleared.xml")));
  EXPECT_THAT(limited.cut_clips, ElementsAre(CutClip{.name = "X", .subclips = {"X", "X"}}));

  // Without the limit the clip is logged in full, as a longer sheet logs it.
  Host unlimited;
  unlimited.rules.position_limit = false;
  add_log_notes(path("log.xlsx"), data_path("merge_position_limit.xml"), path("out.xml"),
                unlimited);
  EXPECT_EQ(read_file(path("out.xml")), read_file(data_path("merge_position_limit_logged.xml")));

  // A blank row counts as a row of the sheet.
  write_xlsx(path("log.xlsx"), {rows[0], rows[1], {}, rows[2]});
  const MergeReport report =
      add_log_notes(path("log.xlsx"), data_path("merge_position_limit.xml"), path("out.xml"));
  EXPECT_EQ(read_file(path("out.xml")), read_file(data_path("merge_position_limit_logged.xml")));
  EXPECT_EQ(report.rows_unmatched, 0u);
}

TEST_F(SubclipsTest, SubclipsAreCutFromInToOutWithOffsetsIntoTheMedia) {
  write_xlsx(path("log.xlsx"), {{"Name", "Subclip Name", "In", "Out"},
                                {"W", "worked example", "00:00:06:00", "00:00:09:24"},
                                {"W", "before the start", "00:00:02:00", "00:00:05:24"},
                                {"W", "end offset 0", "00:00:20:00", "00:00:23:23"},
                                {"W", "end offset 1", "00:00:20:00", "00:00:23:22"},
                                {"W", "one frame", "00:00:10:00", "00:00:10:00"},
                                {"W", "backwards", "00:00:10:00", "00:00:09:00"},
                                {"W", "", "00:00:06:00", "00:00:09:24"},
                                {"W", "open out", "00:00:06:00", ""},
                                {"V", "single row", "00:00:06:00", "00:00:09:24"},
                                {"U", "drop frame", "00:01:00;02", "00:01:00;11"},
                                {"U", "from zero", "00:00:00;00", "00:00:00;29"}});
  const MergeReport report =
      add_log_notes(path("log.xlsx"), data_path("merge_subclips.xml"), path("out.xml"));

  EXPECT_EQ(read_file(path("out.xml")), read_file(data_path("merge_subclips_cut.xml")));
  EXPECT_EQ(report.subclips_made, 8u);
}

}  // namespace
}  // namespace pellago::merge_test
