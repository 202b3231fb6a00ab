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

}  // namespace
}  // namespace pellago::merge_test
