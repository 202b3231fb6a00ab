// The exported log sheet merged back into its document changes nothing but the update behaviours.
//
// Document shapes where that cannot hold, and why:
// - Clips sharing a name get one row, filled from the first of them; the merge writes it into all.
//   Clips of one name that differ in a logging text, in Good, or in having an unset In or Out
//   (an empty cell clears the point in every one of them) are changed.
// - Fields the merge writes into every match ("Good", "Scene", "Shot/Take", "Log Note", "Master
//   Comment 1-4"): a clip holding several such elements with different texts gets the first text
//   in all of them.
// - Good: the merge writes TRUE or FALSE, so a good element holding anything else becomes one of
//   them: an empty one FALSE, "true" TRUE.
// - Logging elements holding more than plain text (child elements, CDATA sections, entity
//   references, comments) are rewritten as one text node; texts holding a carriage return, or
//   longer than a cell can hold (32767 characters), do not come back as they were.
// - An unset In or Out (-1) is an empty cell, which also sets the clip's first media/audio/in or
//   out to -1, and writes "-1" exactly where the text only read as -1 (" -1").
// - Columns whose cells the merge writes into an element that it adds when missing or fails
//   without (In, Out, Label, Label 2, Description, Angle, Comment 1, Comment 2) are left out when
//   some clip lacks the element, and clip names the merge cannot log (no rate, no duration) are
//   left out: the sheet holds less, and the property holds.
// - The position limit only keeps the merge from writing, so it never breaks the property. Blank
//   rows at the end keep it from holding back notes a logger adds for clips further down than the
//   sheet has rows (clips sharing a name make the sheet shorter than the clip list); a document
//   with a clip whose name is empty gets no blank rows, as they would all match that clip, and
//   there notes for clips beyond the sheet's row count stay unwritten.
#include "export/export_sheet.hpp"

#include <fmt/format.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cerrno>
#include <filesystem>
#include <string>
#include <vector>

#include "check/check.hpp"
#include "error.hpp"
#include "merge/add_log_notes.hpp"
#include "merge/merge_document.hpp"
#include "merge/merge_files.hpp"

namespace pellago::merge_test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class ExportSheetTest : public ScratchFolderTest {
 protected:
  // Exports `xml`, merges the sheet back and compares with a merge that changes no clip.
  ExportReport expect_round_trip(const std::string& xml) {
    const ExportReport report = export_log_sheet(xml, path("sheet.xlsx"), ExistingSheet::replace);
    write_xlsx(path("no_rows.xlsx"), {{"Name"}});
    add_log_notes(path("sheet.xlsx"), xml, path("merged.xml"));
    add_log_notes(path("no_rows.xlsx"), xml, path("unchanged.xml"));
    EXPECT_EQ(read_file(path("merged.xml")), read_file(path("unchanged.xml"))) << xml;
    return report;
  }

  std::vector<LogRow> exported_rows(std::vector<std::string>& headers) {
    const Workbook workbook = open_workbook(path("sheet.xlsx"), SheetKind::xlsx);
    const std::vector<Cell> header_cells = read_header_row(workbook);
    for (const Cell& cell : header_cells) headers.push_back(std::get<std::string>(cell));
    return read_log_rows(workbook, header_cells);
  }
};

TEST_F(ExportSheetTest, RoundTripHoldsOnEveryCommittedExport) {
  std::vector<std::string> exports;
  for (const char* folder : {"examples", "tests"}) {
    for (const auto& entry : std::filesystem::recursive_directory_iterator(source_path(folder))) {
      if (entry.path().extension() != ".xml") continue;
      if (read_file(entry.path()).find("<clip") == std::string::npos) continue;
      // Two master clips of this bin share a name but not their Out points: one row per name
      // cannot give each its own.
      if (entry.path().filename() == "msub20001812aa.xml") continue;
      exports.push_back(entry.path().string());
    }
  }
  ASSERT_GT(exports.size(), 20u);
  for (const std::string& xml : exports) expect_round_trip(xml);

  // The example has no label, angle or clip comments: those columns would add elements.
  const ExportReport report = expect_round_trip(source_path("examples/project.xml"));
  EXPECT_EQ(report.rows, 6u);
  std::vector<std::string> left_out;
  for (const ColumnLeftOut& column : report.columns_left_out) left_out.push_back(column.header);
  EXPECT_THAT(left_out, ElementsAre("Label", "Angle", "Comment 1", "Comment 2"));
  EXPECT_EQ(report.columns_left_out[0].element, "<labels><label>");
  EXPECT_EQ(report.columns_left_out[0].clip, "A001_C001_0611AB");
  EXPECT_THAT(report.names_left_out, IsEmpty());
}

struct GeneratedClip {
  std::string name;
  int timebase;
  std::string ntsc;
  std::string display_format;
  std::int64_t start_frame;
  std::int64_t in;
  std::int64_t out;
  std::string good;
};

// A master clip as an export writes it, ready to be cut into subclips: uuid, master clip id,
// a track clip item with links, the file's timecode, two markers and an aux timecode.
std::string clip_markup(const GeneratedClip& clip, int number) {
  const std::string rate =
      fmt::format("<rate><ntsc>{}</ntsc><timebase>{}</timebase></rate>", clip.ntsc, clip.timebase);
  return fmt::format(
      R"(<clip id="C{0}"><uuid>U{0}</uuid><updatebehavior>add</updatebehavior>
<name>{1}</name><duration>5000</duration>{2}<in>{3}</in><out>{4}</out>
<masterclipid>C{0}</masterclipid><ismasterclip>TRUE</ismasterclip>
<logginginfo><description>Wide &amp; slow {1}</description><scene>{1}</scene>
<shottake>3/{1}</shottake><lognote> two
lines </lognote><good>{5}</good></logginginfo>
<labels><label>Good Take</label><label2>Interview</label2></labels>
<comments><mastercomment1>101</mastercomment1><mastercomment2/><mastercomment3>01:00:10:00</mastercomment3>
<mastercomment4>m4</mastercomment4><clipcommenta>a &lt;b&gt;</clipcommenta><clipcommentb/></comments>
<defaultangle>{1}</defaultangle>
<media><video><track><clipitem id="C{0}1"><name>{1}</name><duration>5000</duration>{2}
<in>-1</in><out>-1</out><start>-1</start><end>-1</end><masterclipid>C{0}</masterclipid>
<file id="F{0}"><name>{1}.mov</name>{2}<duration>5000</duration>
<timecode>{2}<frame>{6}</frame><source>source</source><displayformat>{7}</displayformat></timecode>
<timecode><frame>{8}</frame><displayformat>{7}</displayformat><source>aux1</source></timecode>
</file><link><linkclipref>C{0}1</linkclipref><mediatype>video</mediatype></link></clipitem>
</track></video></media>
<marker><in>{3}</in><out>-1</out><name>Slate</name><comment>clap</comment></marker>
<marker><in>20</in><out>-1</out><name>Focus</name><comment/></marker>
</clip>)",
      number, clip.name, rate, clip.in, clip.out, clip.good, clip.start_frame, clip.display_format,
      clip.start_frame + 7);
}

TEST_F(ExportSheetTest, RoundTripHoldsOnGeneratedExports) {
  const std::vector<GeneratedClip> clips{
      {"A001_C001", 24, "TRUE", "NDF", 86400, 24, 100, "TRUE"},
      {"A001_C002", 30, "TRUE", "DF", 107892, 1800, -1, "FALSE"},
      {"101", 60, "TRUE", "DF", 215784, 3600, 4000, "FALSE"},
      {"A001_C001", 24, "TRUE", "NDF", 86400, 24, 100, "TRUE"},  // the same clip again
      {" B002 &amp; C ", 25, "FALSE", "NDF", 90000, -1, -1, "FALSE"},
      {"B002_C003", 24, "FALSE", "NDF", 0, 0, 23, "TRUE"},
      {"B002_C004", 30, "FALSE", "NDF", 108000, 5, 6, "FALSE"},
      {"B002_C005", 60, "FALSE", "NDF", 10, 0, 1, "FALSE"},
      {"D001_C001", 50, "FALSE", "NDF", 180000, 50, 99, "FALSE"},  // a rate the table lacks
  };
  // Nested bins: each clip one bin deeper than the one before, up to three.
  std::string children;
  for (std::size_t i = 0; i < clips.size(); ++i) {
    std::string clip = clip_markup(clips[i], static_cast<int>(i));
    for (std::size_t depth = 0; depth < i % 3; ++depth) {
      clip = fmt::format("<bin><name>Bin {}</name><children>{}</children></bin>", depth, clip);
    }
    children += clip + "\n";
  }
  write_file(path("generated.xml"),
             fmt::format("<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<!DOCTYPE xmeml>\n"
                         "<xmeml version=\"5\"><project><name>Generated</name><children>\n{}"
                         "</children></project></xmeml>\n",
                         children));

  const ExportReport report = expect_round_trip(path("generated.xml"));
  EXPECT_EQ(report.rows, 8u);
  EXPECT_EQ(report.clips, 9u);
  EXPECT_THAT(report.columns_left_out, IsEmpty());

  std::vector<std::string> headers;
  const std::vector<LogRow> rows = exported_rows(headers);
  EXPECT_THAT(headers, ElementsAre("Name", "In", "Out", "Subclip Name", "Good", "Label", "Label 2",
                                   "Description", "Scene", "Shot/Take", "Log Note", "Angle",
                                   "Master Comment 1", "Master Comment 2", "Master Comment 3",
                                   "Master Comment 4", "Comment 1", "Comment 2", "Marker Timecode",
                                   "Marker Name", "Marker Comment", "Marker Color", "Aux TC 1",
                                   "Aux TC 2", "Marker Timecode (in project)",
                                   "Marker Name (in project)", "Marker Comment (in project)",
                                   "Marker Timecode (in project)", "Marker Name (in project)",
                                   "Marker Comment (in project)", "Aux TC 1 (in project)"));
  // One blank row: the last clip stands at position 8, below the sheet's 9 rows.
  ASSERT_EQ(rows.size(), 9u);
  EXPECT_TRUE(is_blank(rows[8]));
  const auto cells = [&rows](std::size_t row, std::initializer_list<const char*> headers) {
    std::vector<std::string> texts;
    for (const char* header : headers) texts.push_back(*rows[row].field(header));
    return texts;
  };
  EXPECT_THAT(cells(0, {"Name", "In", "Out", "Good", "Aux TC 1 (in project)"}),
              ElementsAre("A001_C001", "01:00:01:00", "01:00:04:04", "yes", "01:00:00:07"));
  EXPECT_THAT(cells(1, {"Name", "In", "Out", "Good", "Aux TC 1 (in project)"}),
              ElementsAre("A001_C002", "01:01:00;02", "", "", "01:00:00;07"));
  EXPECT_THAT(cells(2, {"Name", "In", "Out"}), ElementsAre("101", "01:01:00;04", "01:01:06;44"));
  EXPECT_THAT(cells(3, {"Name", "In", "Log Note", "Comment 1", "Comment 2"}),
              ElementsAre(" B002 & C ", "", " two\nlines ", "a <b>", ""));
  EXPECT_THAT(cells(7, {"Name", "In", "Out"}),
              ElementsAre("D001_C001", "01:00:01:00", "01:00:01:49"));
  // Markers the clip holds: the merge reads none of them, the marker group of its own is empty.
  EXPECT_THAT(rows[0].markers, IsEmpty());

  // A check finds nothing to say about the "(in project)" columns, only the name the sheet gives
  // to two clips.
  const CheckReport checked = check(path("sheet.xlsx"), path("generated.xml"));
  EXPECT_EQ(checked.error, std::nullopt);
  ASSERT_EQ(checked.findings.size(), 1u);
  EXPECT_EQ(checked.findings[0].kind, FindingKind::shared_clip_name);
}

// A timeline: one row per distinct name of the sequences' clip items (Resolve names them after
// their files), In and Out left to the editor; merged back, the rows log every item.
TEST_F(ExportSheetTest, ATimelineGivesARowPerClipItemName) {
  const std::string timeline =
      source_path("tests/document/data/realworld/resolve_timeline.xml").string();
  const ExportReport report = export_log_sheet(timeline, path("sheet.xlsx"));
  EXPECT_EQ(report.rows, 12u);
  EXPECT_EQ(report.clips, 0u);
  EXPECT_EQ(report.clip_items, 17u);
  std::vector<std::string> headers;
  const std::vector<LogRow> rows = exported_rows(headers);
  ASSERT_EQ(rows.size(), 12u);
  EXPECT_EQ(*rows[0].field("Name"), "203_04_shot_31a.mov");
  EXPECT_EQ(*rows[0].field("In"), "");

  Host host;
  host.rules = default_rules();
  const MergeReport merged = add_log_notes(path("sheet.xlsx"), timeline, path("out.xml"), host);
  EXPECT_EQ(merged.clip_items_logged, 17u);
  EXPECT_EQ(merged.rows_unmatched, 0u);
}

TEST_F(ExportSheetTest, RefusesAnExistingSheetAndWritesNothingOnFailure) {
  const std::string example = source_path("examples/project.xml").string();
  write_file(path("sheet.xlsx"), "earlier sheet");
  try {
    export_log_sheet(example, path("sheet.xlsx"));
    ADD_FAILURE() << "an existing sheet was replaced";
  } catch (const Error& error) {
    EXPECT_EQ(error.system_error, EEXIST);
    EXPECT_EQ(error.what(), fmt::format("\"{}\" exists already", path("sheet.xlsx")));
  }
  EXPECT_THROW(export_log_sheet(path("missing.xml"), path("sheet.xlsx"), ExistingSheet::replace),
               Error);
  EXPECT_THROW(export_log_sheet(example, path("sheet.xls")), Error);
  EXPECT_EQ(read_file(path("sheet.xlsx")), "earlier sheet");
  // Not a regular file: refused even with replace, before the document is read.
  std::filesystem::create_directory(path("folder.xlsx"));
  try {
    export_log_sheet(path("missing.xml"), path("folder.xlsx"), ExistingSheet::replace);
    ADD_FAILURE() << "a folder was replaced";
  } catch (const Error& error) {
    EXPECT_EQ(error.what(), fmt::format("cannot write \"{}\": it exists and is not a regular file",
                                        path("folder.xlsx")));
  }
  std::filesystem::remove(path("folder.xlsx"));
  EXPECT_THAT(folder_entries(folder_), ElementsAre("sheet.xlsx"));

  // A document cut short is exported as far as it could be recovered, and says where it broke.
  const std::string project = read_file(example);
  write_file(path("cut.xml"), project.substr(0, project.find("</clip>") + 7));
  const ExportReport report =
      export_log_sheet(path("cut.xml"), path("sheet.xlsx"), ExistingSheet::replace);
  EXPECT_EQ(read_file(path("sheet.xlsx")).substr(0, 2), "PK");
  EXPECT_EQ(report.rows, 1u);
  EXPECT_GT(report.recovered.count, 0u);
  EXPECT_THAT(folder_entries(folder_), ElementsAre("cut.xml", "sheet.xlsx"));
}

}  // namespace
}  // namespace pellago::merge_test
