#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

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

}  // namespace
}  // namespace pellago::merge_test
