#include "check/check.hpp"

#include <fmt/format.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <libxml/tree.h>

#include <map>
#include <string>
#include <tuple>
#include <vector>

#include "document/document.hpp"
#include "merge/add_log_notes.hpp"
#include "merge/merge_files.hpp"

namespace pellago::merge_test {
namespace {

// One text of a document: the id of the nearest clip holding it ("" outside every clip), the
// path from that clip (from the root element outside clips; attributes as ".../@name") and the
// text of an element that holds no element, or an attribute's value.
using Fact = std::tuple<std::string, std::string, std::string>;
using Facts = std::map<Fact, int>;

std::string joined(const std::string& path, const std::string& below) {
  if (below.empty()) return path;
  return path.empty() ? below : path + "/" + below;
}

void collect_facts(xmlNodePtr node, std::string clip, const std::string& path, Facts& facts) {
  const Element element(node);
  if (element.name() == "clip") clip = element.attribute("id").value_or("");
  const std::string here = element.name() == "clip" ? std::string() : joined(path, element.name());
  for (xmlAttrPtr attribute = node->properties; attribute; attribute = attribute->next) {
    const char* name = reinterpret_cast<const char*>(attribute->name);
    ++facts[{clip, joined(here, std::string("@") + name), element.attribute(name).value_or("")}];
  }
  bool holds_element = false;
  for (xmlNodePtr child = node->children; child; child = child->next) {
    if (child->type != XML_ELEMENT_NODE) continue;
    holds_element = true;
    collect_facts(child, clip, here, facts);
  }
  if (!holds_element) ++facts[{clip, here, element.text()}];
}

Facts facts_of(const std::string& path) {
  const Document document = Document::parse_file(path);
  Facts facts;
  collect_facts(document.root().node(), "", "", facts);
  return facts;
}

// The input's facts with every listed change made to them, in order.
Facts replayed(Facts facts, const std::vector<Change>& changes) {
  const auto take = [&facts](const Fact& fact) {
    auto found = facts.find(fact);
    if (found == facts.end()) {
      ADD_FAILURE() << "a change takes away what the document does not hold: " << std::get<0>(fact)
                    << " " << std::get<1>(fact) << " \"" << std::get<2>(fact) << "\"";
      return;
    }
    if (--found->second == 0) facts.erase(found);
  };
  for (const Change& change : changes) {
    const std::string clip = change.clip ? change.clip->id.value_or("") : "";
    switch (change.kind) {
      case ChangeKind::text_set:
      case ChangeKind::attribute_set:
        take({clip, change.element, change.old_text.value_or("")});
        ++facts[{clip, change.element, change.new_text.value_or("")}];
        break;
      case ChangeKind::added:
        for (const auto& [below, text] : change.content) {
          ++facts[{clip, joined(change.element, below), text}];
        }
        break;
      case ChangeKind::removed:
        for (const auto& [below, text] : change.content) {
          take({clip, joined(change.element, below), text});
        }
        break;
      case ChangeKind::subclip_made:
        for (const auto& [below, text] : change.content) ++facts[{clip, below, text}];
        break;
    }
  }
  return facts;
}

// The facts of `a` that `b` holds fewer times, one line each.
std::vector<std::string> beyond(const Facts& a, const Facts& b) {
  std::vector<std::string> lines;
  for (const auto& [fact, count] : a) {
    const auto found = b.find(fact);
    if (found != b.end() && found->second >= count) continue;
    lines.push_back(
        fmt::format("{} | {} | {}", std::get<0>(fact), std::get<1>(fact), std::get<2>(fact)));
  }
  return lines;
}

class CheckTest : public ScratchFolderTest {
 protected:
  // The check's change list, made to the input, gives exactly what the merge writes.
  void expect_changes_are_the_merge(const std::string& sheet, const std::string& xml) {
    SCOPED_TRACE(sheet);
    const CheckReport report = check(sheet, xml, {.changes = true});
    ASSERT_FALSE(report.error) << *report.error;
    add_log_notes(sheet, xml, path("out.xml"));
    const Facts listed = replayed(facts_of(xml), report.changes);
    const Facts written = facts_of(path("out.xml"));
    EXPECT_THAT(beyond(written, listed), testing::IsEmpty()) << "written but not listed";
    EXPECT_THAT(beyond(listed, written), testing::IsEmpty()) << "listed but not written";
    EXPECT_TRUE(check(sheet, xml).changes.empty()) << "changes collected without being asked";
  }
};

TEST_F(CheckTest, ChangesAreExactlyWhatTheMergeWrites) {
  const std::string project = source_path("examples/project.xml");
  expect_changes_are_the_merge(source_path("examples/log_sheet.xlsx"), project);
  for (const char* sheet : {"check_mistakes.xlsx", "check_clean.xlsx", "check_short.xlsx"}) {
    expect_changes_are_the_merge(data_path(sheet), project);
  }
  expect_changes_are_the_merge(data_path("check_second_look.xlsx"),
                               source_path("tests/merge/data/merge_example_logged.xml"));
}

// The day logged again, into the merge's own output, as loggers type: every finding names its
// row, column and clip and says what to write instead.
TEST_F(CheckTest, SecondLookFindingsSayWhereAndWhatToWrite) {
  std::string logged = read_file(source_path("tests/merge/data/merge_example_logged.xml"));
  logged = replace_after(logged, "<clip id=\"B001_C001_0611CD\">",
                         "<displayformat>DF</displayformat>", "<displayformat>df</displayformat>");
  write_file(path("logged.xml"), logged);
  const auto found = [](const CheckReport& report) {
    std::vector<std::tuple<std::string_view, int, std::string, std::string>> found;
    for (const Finding& finding : report.findings) {
      if (finding.kind != FindingKind::merge_fails) {
        EXPECT_FALSE(finding.suggestion.empty()) << finding.message;
      }
      found.emplace_back(kind_name(finding.kind), finding.row.value_or(0),
                         finding.column ? finding.column->letter : "",
                         finding.clip ? finding.clip->name : "");
    }
    return found;
  };
  const std::string sheet = data_path("check_second_look.xlsx");
  const CheckReport report = check(sheet, path("logged.xml"));
  EXPECT_THAT(
      found(report),
      testing::ElementsAre(std::make_tuple("number_in_text_column", 2, "E", "A001_C001_0611AB"),
                           std::make_tuple("marker_already_present", 2, "F", "A001_C001_0611AB"),
                           std::make_tuple("earlier_subclip", 3, "A", "Boat arrives"),
                           std::make_tuple("earlier_subclip", 4, "A", "Rope throw"),
                           std::make_tuple("in_out_on_single_row", 5, "C", "B001_C001_0611CD"),
                           std::make_tuple("word_case", 5, "F", "B001_C001_0611CD"),
                           std::make_tuple("timecode_without_digits", 5, "F", "B001_C001_0611CD"),
                           std::make_tuple("three_field_timecode", 6, "F", "B001_C002_0611CD"),
                           std::make_tuple("time_of_day_cell", 7, "F", "C001_C001_0611EF"),
                           std::make_tuple("outside_media", 7, "H", "C001_C001_0611EF")));
  EXPECT_EQ(report.findings[6].message,
            "the marker timecode \"TBD\" holds no digits: the merge reads it as 00:00:00:00, frame "
            "-107892 of the clip");
  EXPECT_EQ(report.findings[8].suggestion,
            "format the Marker Timecode column as text, then type the timecode with its frames: "
            "14:30:20:00");
  EXPECT_EQ(report.findings[9].suggestion,
            "write a timecode from 14:30:00:00 (the clip's start) to 14:30:59:23 (its end)");

  // A rate word in lower case leaves the clip without a frame rate: the merge would fail on it.
  logged = replace_after(logged, "<clip id=\"B001_C002_0611CD\">", "<ntsc>TRUE</ntsc>",
                         "<ntsc>true</ntsc>");
  write_file(path("logged.xml"), logged);
  const CheckReport failing = check(sheet, path("logged.xml"));
  ASSERT_TRUE(failing.error);
  EXPECT_THAT(found(failing),
              testing::Contains(std::make_tuple("word_case", 6, "F", "B001_C002_0611CD")));
}

// A merge that would fail puts its error's row, column and clip on its finding: a clip the merge
// cannot log, a cell XML cannot carry, a header that is not text.
TEST_F(CheckTest, FailingMergeSaysWhere) {
  const auto where = [](const std::string& sheet, const std::string& xml) {
    const CheckReport report = check(sheet, xml);
    if (report.findings.empty()) return std::make_tuple(0, std::string(), std::string());
    const Finding& failed = report.findings.back();
    EXPECT_EQ(failed.kind, FindingKind::merge_fails);
    return std::make_tuple(
        failed.row.value_or(0),
        failed.column ? failed.column->letter + " " + failed.column->header : "",
        failed.clip ? failed.clip->name + " " + failed.clip->id.value_or("none") : "");
  };
  const std::string project = source_path("examples/project.xml");
  write_file(path("project.xml"), replace_all(read_file(project), "<duration>3000</duration>", ""));
  EXPECT_EQ(where(source_path("examples/log_sheet.xlsx"), path("project.xml")),
            std::make_tuple(3, "", "A001_C002_0611AB A001_C002_0611AB"));

  write_xlsx(path("log.xlsx"), {{"Name", "Scene", "Log Note"},
                                {"A001_C001_0611AB", "1"},
                                {"A001_C002_0611AB", "2", "ring\a"}});
  EXPECT_EQ(where(path("log.xlsx"), project), std::make_tuple(3, "C Log Note", ""));
  write_xlsx(path("log.xlsx"), {{"Name", "", "Scene"}, {"A001_C001_0611AB", "1", "2"}});
  EXPECT_EQ(where(path("log.xlsx"), project), std::make_tuple(0, "B ", ""));
}

// A logger's sheet: a title row and a blank one above the headers, which are typed as loggers
// type them, and a note beside the table. The default rules read it from its header row, its
// headers by what they mean, and count rows as the spreadsheet does; the note's column is left out
// and said so. The classic rules want the headers in row 1.
TEST_F(CheckTest, TitleRowsAliasesAndNotesBesideTheTable) {
  write_xlsx(path("day.xlsx"), {{"Day 12 - Unit A"},
                                {},
                                {"Clip Name", "scene "},
                                {"A001_C001_0611AB", "12"},
                                {"A002_C009_0611AB", "13", "", "call the lab"}});
  const std::string project = source_path("examples/project.xml");
  const CheckReport report = check(path("day.xlsx"), project, {.rules = default_rules()});
  ASSERT_EQ(report.findings.size(), 4u);
  EXPECT_EQ(report.findings[0].message, "the column \"Clip Name\" is read as \"Name\"");
  EXPECT_EQ(report.findings[1].kind, FindingKind::header_alias);
  EXPECT_EQ(report.findings[2].kind, FindingKind::cell_without_header);
  EXPECT_EQ(report.findings[2].message,
            "column D has no header, so the merge does not read its cell D5 (\"call the lab\")");
  EXPECT_EQ(report.findings[3].kind, FindingKind::unmatched_name);
  EXPECT_EQ(report.findings[3].row, 5);
  EXPECT_EQ(report.findings[3].column->letter, "A");
  EXPECT_EQ(report.merge.clips_changed, 1u);
  EXPECT_THAT(check(path("day.xlsx"), project).error,
              testing::Optional(testing::HasSubstr("column B (2) has no header text")));
}

// Names typed as macOS and spreadsheets hand them over: decomposed accents, a number cell, letter
// case and blanks; and a name that two clips carry.
TEST_F(CheckTest, NearMissNamesSayWhatSetsThemApart) {
  std::string project = read_file(source_path("examples/project.xml"));
  project = replace_after(project, "<clip id=\"A001_C001_0611AB\">",
                          "<name>A001_C001_0611AB</name>", "<name>Plage d'\u00e9t\u00e9</name>");
  project = replace_after(project, "<clip id=\"A001_C002_0611AB\">",
                          "<name>A001_C002_0611AB</name>", "<name>101</name>");
  project = replace_after(project, "<clip id=\"B001_C002_0611CD\">",
                          "<name>B001_C002_0611CD</name>", "<name>B001_C001_0611CD</name>");
  write_file(path("project.xml"), project);
  write_xlsx(path("log.xlsx"), {{"Name", "Scene"},
                                {"Plage d'e\u0301te\u0301", "1"},
                                {101.0, "2"},
                                {" PLAGE D'\u00c9T\u00c9", "3"},
                                {"B001_C001_0611CD", "4"},
                                {"C001_C001_0611EF", "5"},
                                {"C001_C002_0611EF", "6"}});

  const CheckReport report = check(path("log.xlsx"), path("project.xml"));
  std::vector<std::tuple<std::string_view, int, std::string, std::string>> found;
  for (const Finding& finding : report.findings) {
    found.emplace_back(kind_name(finding.kind), finding.row.value_or(0), finding.message,
                       finding.suggestion);
  }
  EXPECT_THAT(
      found,
      testing::ElementsAre(
          std::make_tuple("unmatched_name", 2,
                          "no clip is named \"Plage d'e\u0301te\u0301\"; the clip \"Plage "
                          "d'\u00e9t\u00e9\" would match if Unicode normalisation (NFC/NFD) were "
                          "set aside",
                          "write \"Plage d'\u00e9t\u00e9\""),
          std::make_tuple("unmatched_name", 3,
                          "no clip is named \"101.0\"; the clip \"101\" would match if a number "
                          "read as \"101.0\" were set aside",
                          "format the Name column as text and type 101 again"),
          std::make_tuple("unmatched_name", 4,
                          "no clip is named \" PLAGE D'\u00c9T\u00c9\"; the clip \"Plage "
                          "d'\u00e9t\u00e9\" would match if blanks at either end and letter case "
                          "were set aside",
                          "write \"Plage d'\u00e9t\u00e9\""),
          std::make_tuple("shared_clip_name", 5,
                          "2 clips are named \"B001_C001_0611CD\" (ids B001_C001_0611CD, "
                          "B001_C002_0611CD): each of them gets this row",
                          "")));
  expect_changes_are_the_merge(path("log.xlsx"), path("project.xml"));
}

// A document cut short merges what could be recovered: the check says where the parser gave up,
// next to the findings the merge still makes, and a merge that then fails keeps it too.
TEST_F(CheckTest, RecoveredDocumentIsAFinding) {
  const std::string project = read_file(source_path("examples/project.xml"));
  const std::string cut = project.substr(0, project.find("<clip id=\"B001_C002_0611CD\">") + 40);
  write_file(path("cut.xml"), cut);
  const CheckReport report = check(source_path("examples/log_sheet.xlsx"), path("cut.xml"));
  ASSERT_FALSE(report.error);
  ASSERT_THAT(report.findings, testing::Not(testing::IsEmpty()));
  const Finding& recovered = report.findings.front();
  EXPECT_EQ(kind_name(recovered.kind), "recovered_xml");
  EXPECT_EQ(recovered.severity, Severity::warning);
  EXPECT_FALSE(recovered.row || recovered.column || recovered.clip);
  EXPECT_EQ(recovered.message,
            "\"" + path("cut.xml") +
                "\" is not well-formed XML: line 418, column 12: Couldn't find end of Start Tag "
                "uuid line 418 (2 errors in all); a merge reads only what could be recovered, so "
                "clips after line 418 may be missing");
  EXPECT_EQ(recovered.suggestion, "repair the document or export it again");
  EXPECT_EQ(report.findings.back().kind, FindingKind::unmatched_name);

  write_file(path("cut.xml"), replace_all(cut, "<duration>1500</duration>", ""));
  const CheckReport failed = check(source_path("examples/log_sheet.xlsx"), path("cut.xml"));
  ASSERT_TRUE(failed.error);
  EXPECT_EQ(failed.findings.front().kind, FindingKind::recovered_xml);
  EXPECT_EQ(failed.findings.back().kind, FindingKind::merge_fails);
}

}  // namespace
}  // namespace pellago::merge_test
