#include <fmt/format.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

#include "check/check.hpp"
#include "document/document.hpp"
#include "error.hpp"
#include "merge/add_log_notes.hpp"
#include "merge/merge_files.hpp"

namespace pellago::merge_test {
namespace {

// Exports written by real applications, as they were written.
std::string real_export(const std::string& name) {
  return source_path("tests/document/data/realworld/" + name).string();
}

class RealExportsTest : public ScratchFolderTest {
 protected:
  // The merged document, under the given rules.
  Document merged(const std::string& xml, const Rules& rules) {
    Host host;
    host.rules = rules;
    add_log_notes(path("log.xlsx"), real_export(xml), path("out.xml"), host);
    return Document::parse_file(path("out.xml"));
  }

  // The merge's error message; empty when it succeeds.
  std::string merge_error(const std::string& xml, const Rules& rules) {
    try {
      merged(xml, rules);
    } catch (const Error& error) {
      return error.what();
    }
    return {};
  }

  // The in points of the markers of the first clip named `name`.
  static std::vector<std::string> marker_frames(const Document& document, const std::string& name) {
    std::vector<std::string> frames;
    for (Element clip : document.all("clip")) {
      if (clip.first("name").text() != name) continue;
      for (Element marker : clip.all("marker")) frames.push_back(marker.first("in").text());
      break;
    }
    return frames;
  }
};

// A master clip whose files are references (<file id="..."/>) described first inside a sequence:
// its media starts at the described file's timecode, 11:03:42:23.
TEST_F(RealExportsTest, MarkersOfAClipWhoseFileIsAReferenceLandInItsMedia) {
  const std::string clip = "msub200012-0409d2k1006";
  write_xlsx(path("log.xlsx"),
             {{"Name", "Marker Timecode", "Marker Name"}, {clip, "11:03:44:23", "two seconds in"}});
  EXPECT_THAT(marker_frames(merged("msub20001812aa.xml", default_rules()), clip),
              testing::ElementsAre("50"));
  EXPECT_THAT(marker_frames(merged("msub20001812aa.xml", classic_rules()), clip),
              testing::ElementsAre("995623"));
}

// A newsroom exporter writes <ntsc>False</ntsc>; the classic rules know only TRUE and FALSE.
TEST_F(RealExportsTest, ANtscWordInAnyLetterCaseNamesItsRate) {
  const std::string clip = "HENRIK-181113-OA";
  write_xlsx(path("log.xlsx"), {{"Name", "Marker Timecode"}, {clip, "00:00:02:00"}});
  EXPECT_THAT(marker_frames(merged("jrpa-ths-skvln-henrik.xml", default_rules()), clip),
              testing::ElementsAre("50"));
  Rules classic = classic_rules();
  classic.position_limit = false;  // the clip stands below the sheet's one row
  EXPECT_THROW(
      {
        try {
          merged("jrpa-ths-skvln-henrik.xml", classic);
        } catch (const Error& error) {
          EXPECT_THAT(error.what(), testing::HasSubstr("is not one of the known frame rates"));
          throw;
        }
      },
      Error);
}

// A timeline has no master clips: a row logs the clip items of its name in the sequences (by the
// item's name, or its file's name without the extension), never their In and Out.
TEST_F(RealExportsTest, ATimelinesClipItemsTakeTheRowsLoggingAndMarkers) {
  const std::string name = "Fordommer_Mikke_Prat_01_RENDER_READY_01";
  write_xlsx(path("log.xlsx"), {{"Name", "Scene", "Log Note", "In", "Marker Timecode"},
                                {name, "4", "wide", "00:07:31:00", "00:07:31:23"}});
  const Document logged = merged("BroShow_ep_Fordommer.xml", default_rules());
  std::size_t items = 0;
  for (Element item : logged.all("clipitem")) {
    const Element own_name = item.first_xpath("name");
    if (!own_name || own_name.text() != name + ".mov") continue;
    ++items;
    SCOPED_TRACE(*item.attribute("id"));
    EXPECT_EQ(item.first("logginginfo/scene").text(), "4");
    EXPECT_EQ(item.first("logginginfo/lognote").text(), "wide");
    EXPECT_EQ(item.first("marker/in").text(), "25");  // one second into the file's media
    EXPECT_NE(item.first("in").text(), "2");
  }
  EXPECT_EQ(items, 8u);
  EXPECT_EQ(merged("BroShow_ep_Fordommer.xml", classic_rules()).write(),
            Document::parse_file(real_export("BroShow_ep_Fordommer.xml")).write());

  CheckOptions options;
  options.rules = default_rules();
  const CheckReport report =
      check(path("log.xlsx"), real_export("BroShow_ep_Fordommer.xml"), options);
  ASSERT_EQ(report.findings.size(), 1u);
  EXPECT_EQ(report.findings[0].kind, FindingKind::in_out_on_clip_item);
  EXPECT_EQ(report.merge.clip_items_logged, 8u);
  EXPECT_EQ(report.merge.rows_unmatched, 0u);
}

// A name a real export holds, logged with every kind of column: two rows, the second cutting a
// subclip (a master clip's; a clip item's rows log its items only). Timecodes are one and three
// seconds into the media, and the aux timecode is 01:00:00:00 at the rate.
struct LoggedName {
  std::string xml;
  std::string name;
  bool master_clip;
  std::string one_second_in;
  std::string three_seconds_in;
  std::int64_t frames_per_second;
  std::int64_t aux_frame;
};

void PrintTo(const LoggedName& logged, std::ostream* out) { *out << logged.xml; }

class RealExportNamesTest : public RealExportsTest, public testing::WithParamInterface<LoggedName> {
 protected:
  // Every element the columns write, below `target`, holds the row's value.
  static void expect_logged(Element target) {
    for (Element good : target.all("logginginfo/good")) EXPECT_EQ(good.text(), "TRUE");
    for (Element scene : target.all("logginginfo/scene")) EXPECT_EQ(scene.text(), "12");
    for (Element take : target.all("logginginfo/shottake")) EXPECT_EQ(take.text(), "3");
    for (Element note : target.all("logginginfo/lognote")) EXPECT_EQ(note.text(), "wide");
    EXPECT_EQ(target.first("logginginfo/description").text(), "harbour");
    EXPECT_TRUE(target.first("logginginfo/scene"));
  }

  // The <file> that describes the one `target` shows.
  static Element described(const Document& document, Element target) {
    const Element file = target.first("file");
    if (!file || file.holds_elements()) return file;
    return document.first_xpath(fmt::format("//file[@id='{}'][*]", *file.attribute("id")));
  }

  // The yellow marker "Horn", one second into the target's media, and the aux timecode in its
  // file.
  static void expect_marked(const Document& document, Element target, const LoggedName& logged) {
    const Element marker = target.first_xpath("./marker[name='Horn']");
    ASSERT_TRUE(marker);
    EXPECT_EQ(marker.first("in").text(), std::to_string(logged.frames_per_second));
    EXPECT_EQ(marker.first("color/green").text(), "255");
    EXPECT_EQ(marker.first("color/blue").text(), "0");
    const Element file = described(document, target);
    ASSERT_TRUE(file);
    if (const Element duration = file.first("duration")) {
      EXPECT_LT(logged.frames_per_second, std::stoll(duration.text()));
    }
    const Element aux = file.first_xpath("./timecode[source='aux1']");
    ASSERT_TRUE(aux);
    EXPECT_EQ(aux.first("frame").text(), std::to_string(logged.aux_frame));
  }
};

TEST_P(RealExportNamesTest, EveryColumnLandsInEveryElementItNames) {
  const LoggedName& logged = GetParam();
  const SheetRow headers{"Name",        "Subclip Name", "In",        "Out",      "Good",
                         "Description", "Scene",        "Shot/Take", "Log Note", "Marker Timecode",
                         "Marker Name", "Marker Color", "Aux TC 1"};
  const std::string aux = logged.frames_per_second == 30 ? "01:00:00;00" : "01:00:00:00";
  SheetRow whole{logged.name,          "",     "",       "", "yes", "harbour", "12", "3", "wide",
                 logged.one_second_in, "Horn", "yellow", aux};
  SheetRow subclip = whole;
  subclip[1] = "Rope throw";
  subclip[2] = logged.one_second_in;
  subclip[3] = logged.three_seconds_in;
  write_xlsx(path("log.xlsx"), {headers, whole, subclip});
  const Document document = merged(logged.xml, default_rules());
  EXPECT_EQ(document.recovered_errors().count, 0);

  std::vector<Element> targets;
  for (Element clip : document.all("clip")) {
    if (clip.first("name").text() == logged.name) targets.push_back(clip);
  }
  if (logged.master_clip) {
    ASSERT_FALSE(targets.empty());
    const Document original = Document::parse_file(real_export(logged.xml));
    const std::size_t masters = targets.size();
    for (Element clip : document.all("clip")) {
      if (clip.first("name").text() != "Rope throw") continue;
      targets.push_back(clip);
      EXPECT_EQ(clip.first("duration").text(), std::to_string(2 * logged.frames_per_second + 1));
      EXPECT_EQ(clip.first("subclipinfo/startoffset").text(),
                std::to_string(logged.frames_per_second));
    }
    EXPECT_EQ(targets.size(), 2 * masters);
  } else {
    ASSERT_TRUE(targets.empty());
    for (Element item : document.all("//sequence//clipitem")) {
      const Element file = described(document, item);
      const std::string file_name = file ? file.first("name").text() : std::string();
      if (item.first("name").text() == logged.name ||
          file_name.substr(0, file_name.rfind('.')) == logged.name) {
        targets.push_back(item);
      }
    }
    ASSERT_FALSE(targets.empty());
  }
  for (Element target : targets) {
    SCOPED_TRACE(target.attribute("id").value_or("no id"));
    expect_logged(target);
    expect_marked(document, target, logged);
  }
  // Merged again into its output, the sheet changes nothing.
  Host host;
  host.rules = default_rules();
  add_log_notes(path("log.xlsx"), path("out.xml"), path("again.xml"), host);
  EXPECT_EQ(read_file(path("again.xml")), read_file(path("out.xml")));
}

INSTANTIATE_TEST_SUITE_P(
    SixApplications, RealExportNamesTest,
    testing::Values(LoggedName{"msub20001812aa.xml", "msub200012-0409d2k1006", true, "11:03:43:23",
                               "11:03:45:23", 25, 90000},
                    LoggedName{"premiere_cs6_lydtest.xml",
                               "Nokas.2010.NORWEGIAN.DVDSCR.XviD-NOKAS.avi", true, "00:00:01;00",
                               "00:00:03;00", 30, 107892},
                    LoggedName{"jrpa-ths-skvln-henrik.xml", "HENRIK-FLYTTER-221015-SP23", true,
                               "00:00:01:00", "00:00:03:00", 25, 90000},
                    LoggedName{"BroShow_ep_Fordommer.xml",
                               "Fordommer_Mikke_Prat_01_RENDER_READY_01", false, "00:07:31:23",
                               "00:07:33:23", 25, 90000},
                    LoggedName{"DNPR63700211_Bare_musikk-timeline.xml", "SCD078019", false,
                               "00:45:05:15", "00:45:07:15", 25, 90000},
                    LoggedName{"resolve_timeline.xml", "203_04_shot_31a", false, "00:00:01:00",
                               "00:00:03:00", 24, 86400}));

// A multicam clip item holds a sequence and no file: its marker goes at its end, and check says
// that the aux timecode has nowhere to go. A clip item at 15 frames per second, a rate the table
// lacks, is counted at its timebase.
TEST_F(RealExportsTest, ClipItemsWithoutAFileOrAtAnUnlistedRateAreLogged) {
  write_xlsx(path("log.xlsx"), {{"Name", "Marker Timecode", "Marker Name", "Aux TC 1"},
                                {"Int-T01-Multicam", "00:00:01:00", "Horn", "01:00:00:00"},
                                {"sc01_sh010_anim.mov", "00:00:01:00", "Horn", ""}});
  const Document multicam = merged("BroShow_ep_Fordommer.xml", default_rules());
  const Element item = multicam.first_xpath("//clipitem[name='Int-T01-Multicam']");
  EXPECT_EQ(item.first_xpath("./*[last()]/name").text(), "Horn");
  EXPECT_FALSE(item.first_xpath(".//timecode[source='aux1']"));
  CheckOptions options;
  options.rules = default_rules();
  const CheckReport report =
      check(path("log.xlsx"), real_export("BroShow_ep_Fordommer.xml"), options);
  ASSERT_FALSE(report.findings.empty());
  EXPECT_EQ(report.findings[0].kind, FindingKind::aux_not_written);

  const Document fifteen = merged("premiere_example.xml", default_rules());
  EXPECT_EQ(fifteen.first_xpath("//clipitem[@id='clipitem-1']/marker/in").text(), "15");
}

// `xml` with the first <tag> after `anchor` (holding text, or written empty as <tag/> or <tag />)
// replaced by `with`.
std::string replace_element(std::string xml, const std::string& anchor, const std::string& tag,
                            const std::string& with) {
  std::size_t start = xml.find(anchor);
  do {
    start = xml.find("<" + tag, start + 1);
  } while (xml[start + tag.size() + 1] != '>' && xml[start + tag.size() + 1] != '/' &&
           xml[start + tag.size() + 1] != ' ');
  const std::size_t open_end = xml.find('>', start);
  const bool empty = xml[open_end - 1] == '/';
  const std::size_t end =
      empty ? open_end + 1 : xml.find("</" + tag + ">", open_end) + tag.size() + 3;
  return xml.replace(start, end - start, with);
}

// Master clips that lack in/out, labels, comments and some logging elements: the default rules
// add each one where Final Cut Pro 7 writes it; the classic rules fail or drop the cells.
TEST_F(RealExportsTest, ElementsAClipLacksAreAddedInTheirPlace) {
  const std::string newsroom = "HENRIK-FLYTTER-221015-SP23";
  const std::string premiere = "Nokas.2010.NORWEGIAN.DVDSCR.XviD-NOKAS.avi";
  const SheetRow headers{"Name",
                         "In",
                         "Out",
                         "Good",
                         "Label",
                         "Label 2",
                         "Description",
                         "Scene",
                         "Shot/Take",
                         "Log Note",
                         "Angle",
                         "Master Comment 1",
                         "Master Comment 2",
                         "Master Comment 3",
                         "Master Comment 4",
                         "Comment 1",
                         "Comment 2"};
  // Each cell names its column, so that the expected documents show where it went.
  const auto logged = [&](const std::string& name) {
    SheetRow row = headers;
    row[0] = name;
    row[1] = row[2] = "";
    row[3] = "yes";
    return row;
  };
  write_xlsx(path("log.xlsx"), {headers, logged(newsroom), logged(premiere)});
  // Empty In and Out cells that clear the clips' points, which they lack.
  Rules creating = default_rules();
  creating.blank_cells_change_nothing = false;
  const std::string labels = "<labels><label>Label</label><label2>Label 2</label2></labels>";
  const std::string clip_comments =
      "<clipcommenta>Comment 1</clipcommenta><clipcommentb>Comment 2</clipcommentb>";
  const auto comment = [](int n) {
    return fmt::format("<mastercomment{0}>Master Comment {0}</mastercomment{0}>", n);
  };

  std::string expected = read_file(real_export("jrpa-ths-skvln-henrik.xml"));
  const std::string at = "<clip id=\"" + newsroom;
  expected = replace_after(expected, at, "</rate>", "</rate><in>-1</in><out>-1</out>");
  expected = replace_element(expected, at, "description",
                             "<description>Description</description><scene>Scene</scene>"
                             "<shottake>Shot/Take</shottake>");
  expected =
      replace_element(expected, at, "lognote", "<lognote>Log Note</lognote><good>TRUE</good>");
  expected = replace_after(expected, at, "</logginginfo>", "</logginginfo>" + labels);
  for (int n = 1; n <= 4; ++n) {
    expected = replace_element(expected, at, fmt::format("mastercomment{}", n),
                               comment(n) + (n == 4 ? clip_comments : ""));
  }
  expected = replace_after(expected, at, "</media>", "</media><defaultangle>Angle</defaultangle>");
  EXPECT_EQ(merged("jrpa-ths-skvln-henrik.xml", creating).write(),
            Document::parse_string(expected).write());

  expected = read_file(real_export("premiere_cs6_lydtest.xml"));
  for (const std::string id : {"masterclip-3", "masterclip-4"}) {
    const std::string clip = "<clip id=\"" + id + "\"";
    expected = replace_element(expected, clip, "in", "<in>-1</in>");
    expected = replace_element(expected, clip, "out", "<out>-1</out>");
    expected =
        replace_after(expected, clip, "</media>", "</media><defaultangle>Angle</defaultangle>");
    expected =
        replace_element(expected, clip, "description", "<description>Description</description>");
    expected = replace_element(expected, clip, "scene", "<scene>Scene</scene>");
    expected = replace_element(expected, clip, "shottake", "<shottake>Shot/Take</shottake>");
    expected =
        replace_element(expected, clip, "lognote", "<lognote>Log Note</lognote><good>TRUE</good>");
    expected = replace_after(expected, clip, "</logginginfo>",
                             "</logginginfo>" + labels + "<comments>" + comment(1) + comment(2) +
                                 comment(3) + comment(4) + clip_comments + "</comments>");
  }
  EXPECT_EQ(merged("premiere_cs6_lydtest.xml", creating).write(),
            Document::parse_string(expected).write());

  EXPECT_EQ(merge_error("jrpa-ths-skvln-henrik.xml", classic_rules()),
            "clip \"HENRIK-FLYTTER-221015-SP23\" (id HENRIK-FLYTTER-221015-SP23, sheet row 2): no "
            "<in> element to clear for the empty \"In\" cell");
  EXPECT_EQ(
      merge_error("premiere_cs6_lydtest.xml", classic_rules()),
      "clip \"Nokas.2010.NORWEGIAN.DVDSCR.XviD-NOKAS.avi\" (id masterclip-3, sheet row 3): no "
      "<labels><label> element for \"Label\", and no <labels><label2> element to insert one "
      "before");
  // Without the columns that fail, the ones whose elements are missing change nothing.
  write_xlsx(path("log.xlsx"),
             {{"Name", "Good", "Master Comment 1"}, {premiere, "yes", "dropped"}});
  EXPECT_EQ(merged("premiere_cs6_lydtest.xml", classic_rules()).write(),
            Document::parse_file(real_export("premiere_cs6_lydtest.xml")).write());
}

}  // namespace
}  // namespace pellago::merge_test
