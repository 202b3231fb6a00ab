#include <fmt/format.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/resource.h>

#include <filesystem>
#include <string>
#include <vector>

#include "document/document.hpp"
#include "error.hpp"
#include "merge/add_log_notes.hpp"
#include "merge/merge_files.hpp"

namespace pellago::merge_test {
namespace {

using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::ThrowsMessage;

const char* phase_name(MergePhase phase) {
  switch (phase) {
    case MergePhase::reading_sheet:
      return "sheet";
    case MergePhase::reading_xml:
      return "xml";
    case MergePhase::merging_clips:
      return "clips";
    case MergePhase::writing:
      return "writing";
  }
  return "?";
}

// A host that records every call the engine makes on it.
struct RecordingHost {
  Host host() {
    return {.set_column_headers =
                [this](const std::vector<Cell>& h) {
                  headers = h;
                  calls.push_back("headers");
                },
            .progress =
                [this](const ProgressReport& report) {
                  calls.push_back(
                      fmt::format("{} {}/{}", phase_name(report.phase), report.done, report.total));
                },
            .frame_rates = {},
            .cancel_requested = {}};
  }

  std::vector<Cell> headers;
  std::vector<std::string> calls;
};

// The progress reports and the header row of a merge that visits `clips` clips and writes its
// output: the header row reaches the host before the XML is read.
std::vector<std::string> progress_calls(int clips) {
  std::vector<std::string> calls{"sheet 0/0", "headers", "xml 0/0"};
  for (int done = 0; done <= clips; ++done)
    calls.push_back(fmt::format("clips {}/{}", done, clips));
  calls.push_back("writing 0/0");
  return calls;
}

class MergeTest : public ScratchFolderTest {
 protected:
  // Merges the example log sheet into `xml` over an existing output; returns the error message.
  std::string merge_example_expecting_error(const std::string& xml, const Host& host = {}) {
    write_file(path("project.xml"), xml);
    write_file(path("out.xml"), "earlier output\n");
    try {
      add_log_notes(source_path("examples/log_sheet.xlsx"), path("project.xml"), path("out.xml"),
                    host);
    } catch (const Error& error) {
      EXPECT_EQ(read_file(path("out.xml")), "earlier output\n");
      EXPECT_THAT(folder_entries(folder_), ElementsAre("out.xml", "project.xml"));
      return error.what();
    }
    ADD_FAILURE() << "the merge did not fail";
    return {};
  }
};

TEST_F(MergeTest, ClipsMatchRowsByExactNameText) {
  write_xlsx(path("log.xlsx"), {{"Name", "Scene"},
                                {"A001", "row 2"},
                                {"B002", "row 3"},
                                {101.0, "row 4"},
                                {"", "row 5"},
                                {"D004", "row 6"}});
  RecordingHost recorder;
  const MergeReport report = add_log_notes(path("log.xlsx"), data_path("merge_matching.xml"),
                                           path("out.xml"), recorder.host());

  EXPECT_EQ(read_file(path("out.xml")), read_file(data_path("merge_matching_logged.xml")));
  EXPECT_EQ(report.outcome, Outcome::merged);
  EXPECT_EQ(report.clips_visited, 10u);
  EXPECT_EQ(report.clips_changed, 5u);
  EXPECT_EQ(report.rows_unmatched, 1u);
  EXPECT_THAT(recorder.headers, ElementsAre(Cell("Name"), Cell("Scene")));
  EXPECT_THAT(recorder.calls, ElementsAreArray(progress_calls(10)));
}

TEST_F(MergeTest, SheetWithoutRowsStillRewritesUpdateBehaviors) {
  write_xlsx(path("log.xlsx"), {{"Name", "Scene"}});
  RecordingHost recorder;
  const MergeReport report = add_log_notes(path("log.xlsx"), data_path("merge_matching.xml"),
                                           path("out.xml"), recorder.host());

  EXPECT_EQ(read_file(path("out.xml")),
            replace_all(read_data("merge_matching.xml"), ">add<", ">replaceoradd<"));
  EXPECT_EQ(report.clips_changed, 0u);
  EXPECT_THAT(recorder.calls, ElementsAreArray(progress_calls(10)));
}

TEST_F(MergeTest, DocumentWithoutClipsIsWrittenWithAFinalLineFeed) {
  write_xlsx(path("log.xlsx"), {{"Name"}, {"A001"}});
  write_file(path("project.xml"), "<xmeml version=\"5\"><bin><name>Empty</name></bin></xmeml>");
  RecordingHost recorder;
  const MergeReport report =
      add_log_notes(path("log.xlsx"), path("project.xml"), path("project.xml"), recorder.host());

  // Elements that hold no text are indented the library's standard way.
  EXPECT_EQ(read_file(path("project.xml")),
            "<?xml version=\"1.0\"?>\n<xmeml version=\"5\">\n  <bin>\n    <name>Empty</name>\n  "
            "</bin>\n</xmeml>\n");
  EXPECT_EQ(report.clips_visited, 0u);
  EXPECT_EQ(report.rows_unmatched, 1u);
  EXPECT_THAT(recorder.calls, ElementsAreArray(progress_calls(0)));
}

TEST_F(MergeTest, OnlyLowerCaseXlsAndXlsxAreLogSheets) {
  for (const char* sheet : {"log.XLS", "log.Xlsx", "log.xls.bak", "log.", "log", "log.csv"}) {
    RecordingHost recorder;
    bool headers_set = false;
    Host host = recorder.host();
    host.set_column_headers = [&](const std::vector<Cell>&) { headers_set = true; };
    const MergeReport report =
        add_log_notes(path(sheet), path("missing.xml"), path("out.xml"), host);
    EXPECT_EQ(report.outcome, Outcome::not_a_log_sheet) << sheet;
    EXPECT_FALSE(headers_set) << sheet;
    EXPECT_THAT(recorder.calls, IsEmpty()) << sheet;
  }
  EXPECT_THAT(folder_entries(folder_), IsEmpty());
}

TEST_F(MergeTest, ExampleSheetMergesIntoTheExampleExport) {
  const MergeReport report = add_log_notes(source_path("examples/log_sheet.xlsx"),
                                           source_path("examples/project.xml"), path("out.xml"));

  EXPECT_EQ(read_file(path("out.xml")), read_file(data_path("merge_example_logged.xml")));
  EXPECT_EQ(report.clips_visited, 6u);
  EXPECT_EQ(report.clips_changed, 5u);
  EXPECT_EQ(report.subclips_made, 2u);
  EXPECT_THAT(report.cut_clips,
              ElementsAre(CutClip{.name = "A001_C002_0611AB",
                                  .subclips = {"Boat arrives", "Rope throw", "Wide harbour"}}));
  EXPECT_EQ(report.markers_added, 6u);
  EXPECT_EQ(report.rows_unmatched, 1u);
}

// Under the default rules a sheet merged into its own output changes nothing, and an updated sheet
// updates the subclips and markers it made instead of adding more.
TEST_F(MergeTest, MergingAgainUpdatesWhatTheFirstMergeMade) {
  Host host;
  host.rules = default_rules();
  const std::string sheet = source_path("examples/log_sheet.xlsx").string();
  add_log_notes(sheet, source_path("examples/project.xml"), path("once.xml"), host);
  const MergeReport again = add_log_notes(sheet, path("once.xml"), path("twice.xml"), host);
  EXPECT_EQ(read_file(path("twice.xml")), read_file(path("once.xml")));
  EXPECT_EQ(again.subclips_made, 0u);
  EXPECT_EQ(again.markers_added, 0u);
  EXPECT_THAT(again.cut_clips, IsEmpty());

  // "Rope throw" gets a new Out; a row without a Subclip Name cuts a new subclip, whose copy
  // number follows those in use, and finds it again by its In and Out.
  write_xlsx(
      path("update.xlsx"),
      {{"Name", "Subclip Name", "In", "Out", "Marker Timecode", "Marker Name"},
       {"A001_C002_0611AB", "Rope throw", "10:02:50:10", "10:03:00:00", "10:02:58:00", "Catch"},
       {"A001_C002_0611AB", "", "10:02:20:00", "10:02:30:00", "", ""}});
  const MergeReport updated =
      add_log_notes(path("update.xlsx"), path("once.xml"), path("updated.xml"), host);
  EXPECT_EQ(updated.subclips_made, 1u);
  EXPECT_EQ(updated.markers_added, 0u);
  add_log_notes(path("update.xlsx"), path("updated.xml"), path("updated_twice.xml"), host);
  EXPECT_EQ(read_file(path("updated_twice.xml")), read_file(path("updated.xml")));
  const Document document = Document::parse_file(path("updated.xml"));
  const Element rope = document.first_xpath("//clip[name='Rope throw']");
  EXPECT_EQ(*rope.attribute("id"), "A001_C002_0611AB clip02");
  EXPECT_EQ(rope.first("duration").text(), "241");
  EXPECT_EQ(rope.all("subclipinfo").size(), rope.all("track/clipitem").size());
  EXPECT_TRUE(document.first_xpath("//clip[@id='A001_C002_0611AB clip04']"));
}

// A clip with marked In and Out points, Good and a scene: a row of empty cells leaves them under
// the default rules, as if it named the clip only; under the classic rules it clears them.
TEST_F(MergeTest, BlankCellsChangeNothingUnderTheDefaultRules) {
  const std::string clip = "B001_C002_0611CD";
  write_xlsx(path("blank.xlsx"),
             {{"Name", "In", "Out", "Good", "Scene", "Log Note"}, {clip, "", "", "", "", ""}});
  write_xlsx(path("name.xlsx"), {{"Name"}, {clip}});
  const auto merged = [&](const std::string& sheet, const Rules& rules) {
    Host host;
    host.rules = rules;
    add_log_notes(path(sheet), source_path("examples/project.xml"), path("out.xml"), host);
    return read_file(path("out.xml"));
  };
  EXPECT_EQ(merged("blank.xlsx", default_rules()), merged("name.xlsx", default_rules()));
  const Document classic = Document::parse_string(merged("blank.xlsx", classic_rules()));
  const Element cleared = classic.first_xpath("//clip[@id='B001_C002_0611CD']");
  EXPECT_EQ(cleared.first("in").text(), "-1");
  EXPECT_EQ(cleared.first("logginginfo/good").text(), "FALSE");
}

// A marker at TBD, one before the clip's media, and an aux timecode that is none: the default rules
// leave them out and count the row; the classic rules write them as they read.
TEST_F(MergeTest, ImpossibleValuesAreLeftOutUnderTheDefaultRules) {
  write_xlsx(path("log.xlsx"),
             {{"Name", "Marker Timecode", "Marker Timecode", "Marker Timecode", "Aux TC 1"},
              {"A001_C001_0611AB", "TBD", "09:00:00:00", "10:00:05:00", "soon"}});
  const auto merged = [&](const Rules& rules, MergeReport& report) {
    Host host;
    host.rules = rules;
    report =
        add_log_notes(path("log.xlsx"), source_path("examples/project.xml"), path("out.xml"), host);
    return Document::parse_file(path("out.xml"));
  };
  MergeReport report;
  const Document left_out = merged(default_rules(), report);
  const Element clip = left_out.first_xpath("//clip[@id='A001_C001_0611AB']");
  ASSERT_EQ(clip.children("marker").size(), 1u);
  EXPECT_EQ(clip.child("marker").first("in").text(), "125");
  EXPECT_FALSE(clip.first_xpath(".//timecode[source='aux1']"));
  EXPECT_EQ(report.rows_not_fully_applied, 1u);
  const Document classic = merged(classic_rules(), report);
  EXPECT_EQ(classic.first_xpath("//clip[@id='A001_C001_0611AB']").children("marker").size(), 3u);
  EXPECT_EQ(report.rows_not_fully_applied, 0u);
}

TEST_F(MergeTest, CancellingStopsAtTheNextClipAndWritesNothing) {
  write_file(path("out.xml"), "earlier output\n");
  for (const int cancel_after : {3, 6}) {
    int asked = 0;
    Host host;
    host.cancel_requested = [&] { return ++asked > cancel_after; };
    const MergeReport report =
        add_log_notes(source_path("examples/log_sheet.xlsx"), source_path("examples/project.xml"),
                      path("out.xml"), host);
    EXPECT_EQ(report.outcome, Outcome::cancelled);
    EXPECT_EQ(report.clips_visited, static_cast<std::size_t>(cancel_after));
  }
  EXPECT_EQ(read_file(path("out.xml")), "earlier output\n");
  EXPECT_THAT(folder_entries(folder_), ElementsAre("out.xml"));
}

TEST_F(MergeTest, FailuresNameTheClipAndRowAndLeaveTheOutputAsItWas) {
  const std::string project = read_file(source_path("examples/project.xml"));
  const std::string second = "<clip id=\"A001_C002_0611AB\">";

  std::string without_duration = project;
  while (without_duration.find("<duration>3000</duration>") != std::string::npos) {
    without_duration = replace_after(without_duration, second, "<duration>3000</duration>", "");
  }
  RecordingHost recorder;
  EXPECT_EQ(merge_example_expecting_error(without_duration, recorder.host()),
            "clip \"A001_C002_0611AB\" (id A001_C002_0611AB, sheet row 3): no <duration> element");
  // The failing clip was counted before its rows were applied.
  EXPECT_EQ(recorder.calls.back(), "clips 2/6");

  EXPECT_EQ(merge_example_expecting_error(replace_after(project, second, second, "<clip>")),
            "clip \"A001_C002_0611AB\" (no id, sheet row 3): no id attribute to build the ids of "
            "its subclip copies from");

  EXPECT_EQ(merge_example_expecting_error(replace_after(project, second, "<timebase>25</timebase>",
                                                        "<timebase>50</timebase>")),
            "clip \"A001_C002_0611AB\" (id A001_C002_0611AB, sheet row 3): timebase 50 with ntsc "
            "\"FALSE\" is not one of the known frame rates");
}

TEST_F(MergeTest, UnreadableInputsNameTheirFile) {
  write_xlsx(path("log.xlsx"), {{"Name", "", "Scene"}, {"A001", "", "1"}});
  write_file(path("out.xml"), "earlier output\n");

  // The sheet's error wins over the XML file's, though the XML is read while the sheet's rows are.
  RecordingHost recorder;
  EXPECT_THAT(
      [&] {
        add_log_notes(path("log.xlsx"), path("missing.xml"), path("out.xml"), recorder.host());
      },
      testing::ThrowsMessage<Error>(testing::StartsWith(path("log.xlsx") + ": ")));
  EXPECT_THAT(recorder.headers, ElementsAre(Cell("Name"), Cell(), Cell("Scene")));
  EXPECT_THAT(recorder.calls, ElementsAre("sheet 0/0", "headers", "xml 0/0"));
  EXPECT_THAT(
      [&] {
        add_log_notes(source_path("tests/workbook/data/late_out_of_order.xlsx"),
                      path("missing.xml"), path("out.xml"));
      },
      ThrowsMessage<Error>(HasSubstr("cell A23 comes after cell B23")));
  write_xlsx(path("log.xlsx"), {{"Name"}, {"A001"}});
  try {
    add_log_notes(path("log.xlsx"), path("missing.xml"), path("out.xml"));
    ADD_FAILURE() << "a missing XML file was read";
  } catch (const Error& error) {
    EXPECT_THAT(error.what(), testing::HasSubstr(path("missing.xml")));
    EXPECT_EQ(error.system_error, ENOENT);
  }
  EXPECT_EQ(read_file(path("out.xml")), "earlier output\n");

  // What is no export is refused under any rules, even as the output itself: a program, a
  // byte-order mark alone, a workbook, another XML format.
  const std::vector<std::pair<std::string, std::string>> not_exports{
      {"\x7f"
       "ELF\x02\x01\x01",
       "it holds no XML element"},
      {"\xef\xbb\xbf", "it holds no XML element"},
      {read_file(path("log.xlsx")), "it holds no XML element"},
      {"<html><body/></html>", "its root element is <html>, not <xmeml>"}};
  for (const auto& [bytes, why] : not_exports) {
    write_file(path("in_place.xml"), bytes);
    for (const Rules& rules : {classic_rules(), default_rules()}) {
      Host host;
      host.rules = rules;
      EXPECT_THAT(
          [&] {
            add_log_notes(path("log.xlsx"), path("in_place.xml"), path("in_place.xml"), host);
          },
          ThrowsMessage<Error>(HasSubstr("is not a Final Cut Pro XML export: " + why)));
      EXPECT_EQ(read_file(path("in_place.xml")), bytes);
    }
  }
}

// A document that is not well-formed merges what could be recovered under the classic rules and
// says so as data; the default rules refuse it and write nothing.
TEST_F(MergeTest, RecoveredDocumentIsReportedOrRefusedByDefault) {
  const std::string project = read_file(source_path("examples/project.xml"));
  write_file(path("cut.xml"),
             project.substr(0, project.find("<clip id=\"B001_C002_0611CD\">") + 40));
  const MergeReport report =
      add_log_notes(source_path("examples/log_sheet.xlsx"), path("cut.xml"), path("out.xml"));
  EXPECT_EQ(report.clips_visited, 4u);
  EXPECT_GT(report.recovered.count, 0u);
  EXPECT_GT(report.recovered.line, 1);
  EXPECT_GT(report.recovered.column, 0);
  EXPECT_THAT(report.recovered.message, Not(IsEmpty()));
  EXPECT_EQ(add_log_notes(source_path("examples/log_sheet.xlsx"),
                          source_path("examples/project.xml"), path("out.xml"))
                .recovered.count,
            0u);

  Host host;
  host.rules = default_rules();
  EXPECT_THAT(
      [&] {
        add_log_notes(source_path("examples/log_sheet.xlsx"), path("cut.xml"), path("strict.xml"),
                      host);
      },
      ThrowsMessage<Error>(HasSubstr("is not well-formed XML: line ")));
  EXPECT_FALSE(std::filesystem::exists(path("strict.xml")));
}

// Inputs that expand far beyond their size end the merge with a message, not with all memory: a
// clip name whose entity references expand to gigabytes, a cell at the sheet's last row under
// 200 headers (every row up to it is a row, but an empty one costs next to nothing).
TEST_F(MergeTest, ExpandingInputsStayWithinBounds) {
  std::string entities =
      "<!DOCTYPE xmeml [<!ENTITY a \"" + std::string(100, 'A') + "\"><!ENTITY b \"";
  for (int i = 0; i < 1000; ++i) entities += "&a;";
  std::string name = "<name>";
  for (int i = 0; i < 10000; ++i) name += "&b;";
  write_file(path("laughs.xml"),
             replace_all(replace_all(read_file(source_path("examples/project.xml")),
                                     "<!DOCTYPE xmeml>", entities + "\">]>"),
                         "<name>A001_C001_0611AB</name>", name + "</name>"));
  EXPECT_THAT(
      [&] {
        add_log_notes(source_path("examples/log_sheet.xlsx"), path("laughs.xml"), path("out.xml"));
      },
      ThrowsMessage<Error>(HasSubstr("cannot read the text of <name>: its entity")));

  lxw_workbook* workbook = workbook_new(path("far.xlsx").c_str());
  lxw_worksheet* sheet = workbook_add_worksheet(workbook, nullptr);
  worksheet_write_string(sheet, 0, 0, "Name", nullptr);
  for (lxw_col_t column = 1; column < 200; ++column) {
    worksheet_write_string(sheet, 0, column, fmt::format("Column {}", column).c_str(), nullptr);
  }
  worksheet_write_string(sheet, 1048575, 0, "A001_C001_0611AB", nullptr);
  ASSERT_EQ(workbook_close(workbook), LXW_NO_ERROR);
  struct rusage before;
  getrusage(RUSAGE_SELF, &before);
  const MergeReport report =
      add_log_notes(path("far.xlsx"), source_path("examples/project.xml"), path("out.xml"));
  struct rusage after;
  getrusage(RUSAGE_SELF, &after);
  EXPECT_EQ(report.clips_changed, 1u);
  // A text per empty cell would take gigabytes; the rows themselves take tens of megabytes.
  EXPECT_LT(after.ru_maxrss - before.ru_maxrss, 1024 * 1024) << "kilobytes";
}

// A text that XML 1.0 cannot carry ends the merge naming the row, the column and the character:
// control characters (from .xlsx escapes too) and NUL; bytes that are not UTF-8 in the document.
TEST_F(MergeTest, TextsXmlCannotCarryEndTheMerge) {
  const std::vector<std::pair<std::string, std::string>> cases{
      {"ring\a", "U+0007"},
      {"escape _x001B_ here", "U+001B"},
      {"cut _x0000_ here", "U+0000"},
  };
  for (const auto& [text, character] : cases) {
    write_xlsx(path("log.xlsx"),
               {{"Name", "Scene", "Log Note"}, {"A001", "1"}, {"B002", "2", text}});
    EXPECT_THAT(
        [&] { add_log_notes(path("log.xlsx"), data_path("merge_matching.xml"), path("out.xml")); },
        ThrowsMessage<Error>(path("log.xlsx") + ": sheet row 3, column C (3): the cell holds " +
                             character + ", which XML 1.0 cannot carry"))
        << text;
  }
  // Bytes that are not UTF-8 in the document itself are recovered by the parser, never written.
  write_xlsx(path("log.xlsx"), {{"Name"}, {"A001"}});
  write_file(path("latin.xml"),
             replace_all(read_data("merge_matching.xml"), "<xmeml version=\"5\">",
                         "<xmeml version=\"5\"><!-- caf\xE9 -->"));
  EXPECT_THAT([&] { add_log_notes(path("log.xlsx"), path("latin.xml"), path("out.xml")); },
              ThrowsMessage<Error>(HasSubstr("holds the byte 0xE9 that is not UTF-8")));
  // It fails while the output is written: no temporary file is left behind.
  EXPECT_THAT(folder_entries(folder_), ElementsAre("latin.xml", "log.xlsx"));
  write_xlsx(path("log.xlsx"),
             {{"Name", "Log Note"}, {"A001", "tab\tline\ncarriage\r \xF0\x9F\x8E\xAC"}});
  EXPECT_NO_THROW(
      add_log_notes(path("log.xlsx"), data_path("merge_matching.xml"), path("out.xml")));
}

}  // namespace
}  // namespace pellago::merge_test
