#include <gtest/gtest.h>
#include <libxml/parser.h>
#include <libxml/xmlsave.h>

#include <cerrno>
#include <filesystem>
#include <fstream>
#include <iterator>

#include "document/document.hpp"
#include "error.hpp"

namespace pellago {
namespace {

namespace fs = std::filesystem;

const fs::path kData = PELLAGO_TEST_DATA;

std::string read_bytes(const fs::path& path) {
  std::ifstream in(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
}

// What libxml2's own reader and save API make of a file, independently of Document.
std::string libxml2_round_trip(const fs::path& path) {
  xmlDocPtr doc =
      xmlReadFile(path.c_str(), nullptr,
                  XML_PARSE_RECOVER | XML_PARSE_NONET | XML_PARSE_NOERROR | XML_PARSE_NOWARNING);
  xmlBufferPtr buffer = xmlBufferCreate();
  xmlSaveCtxtPtr save = xmlSaveToBuffer(buffer, reinterpret_cast<const char*>(doc->encoding),
                                        XML_SAVE_FORMAT | XML_SAVE_AS_XML);
  xmlSaveDoc(save, doc);
  xmlSaveClose(save);
  std::string text(reinterpret_cast<const char*>(xmlBufferContent(buffer)),
                   xmlBufferLength(buffer));
  xmlBufferFree(buffer);
  xmlFreeDoc(doc);
  return text;
}

std::vector<fs::path> export_files() {
  std::vector<fs::path> files;
  for (const char* folder : {"realworld", "exports"}) {
    for (const auto& entry : fs::directory_iterator(kData / folder)) {
      const fs::path& path = entry.path();
      if (path.extension() == ".xml" && !path.stem().string().ends_with(".expected")) {
        files.push_back(path);
      }
    }
  }
  return files;
}

TEST(ParseAndWrite, ExportsComeOutAsLibxml2WritesThem) {
  const std::vector<fs::path> files = export_files();
  ASSERT_EQ(files.size(), 10u);
  for (const fs::path& path : files) {
    SCOPED_TRACE(path.filename().string());
    const std::string written = Document::parse_file(path).write();
    EXPECT_EQ(written, libxml2_round_trip(path));
    EXPECT_EQ(written.find('\r'), std::string::npos);
  }
}

TEST(ParseAndWrite, IndentedExportComesOutAsCommitted) {
  const std::string written = Document::parse_file(kData / "exports/master_clips.xml").write();
  EXPECT_EQ(written, read_bytes(kData / "exports/master_clips.expected.xml"));
}

TEST(ParseAndWrite, DocumentKeepsItsDeclaredEncodingOrNone) {
  Document latin = Document::parse_file(kData / "exports/latin1_clip.xml");
  EXPECT_EQ(latin.first("name").text(),
            "Gespr\xC3\xA4"
            "ch M\xC3\xBCller");
  latin.first("label2").set_text("Gr\xC3\xBCn \xE2\x80\x93 gut");
  const std::string written = latin.write();
  EXPECT_TRUE(written.starts_with("<?xml version=\"1.0\" encoding=\"ISO-8859-1\"?>\n"));
  EXPECT_NE(written.find("<label2>Gr\xFCn &#8211; gut</label2>"), std::string::npos);

  Document undeclared = Document::parse_file(kData / "realworld/premiere_example_filter.xml");
  EXPECT_TRUE(undeclared.write().starts_with("<?xml version=\"1.0\"?>\n<filter>\n"));
}

TEST(ParseAndWrite, MalformedMarkupIsRecovered) {
  Document document = Document::parse_string(
      "<xmeml><clip><name>A & B</name><in>1</clip><clip><name>C</name></clip>");
  std::vector<Element> clips = document.all("clip");
  ASSERT_EQ(clips.size(), 2u);
  EXPECT_EQ(clips[1].first("name").text(), "C");
  EXPECT_EQ(Document::parse_string("no markup").root(), Element());
}

TEST(ParseAndWrite, UnreadableOrEmptyInputFailsNamingTheFile) {
  const std::string missing = (kData / "no such file.xml").string();
  try {
    Document::parse_file(missing);
    ADD_FAILURE() << "no error";
  } catch (const Error& error) {
    EXPECT_EQ(error.system_error, ENOENT);
    EXPECT_EQ(std::string(error.what()),
              "cannot read \"" + missing + "\": No such file or directory");
  }
  try {
    Document::parse_file(kData.string());
    ADD_FAILURE() << "no error";
  } catch (const Error& error) {
    EXPECT_EQ(error.system_error, EISDIR);
  }
  const fs::path empty = fs::path(testing::TempDir()) / "pellago empty.xml";
  std::ofstream(empty).close();
  try {
    Document::parse_file(empty);
    ADD_FAILURE() << "no error";
  } catch (const Error& error) {
    EXPECT_EQ(error.system_error, 0);
    EXPECT_NE(std::string(error.what()).find("\"" + empty.string() + "\""), std::string::npos);
  }
  fs::remove(empty);
  EXPECT_THROW(Document::parse_string(""), Error);
}

// The name-chain walk must pick exactly what the XPath ".//" + selector picks.
TEST(ParseAndWrite, NameChainsAgreeWithXPathOnRealExports) {
  const char* selectors[] = {"clip",
                             "name",
                             "in",
                             "rate/timebase",
                             "rate/ntsc",
                             "media/audio/in",
                             "track/clipitem",
                             "file/timecode/displayformat",
                             "logginginfo/good",
                             "labels/label2",
                             "sequence/media/video/track"};
  for (const char* file : {"exports/master_clips.xml", "realworld/premiere_example.xml",
                           "realworld/hiero_xml_export.xml"}) {
    Document document = Document::parse_file(kData / file);
    std::vector<Element> receivers = document.all(".//*");
    for (const char* selector : selectors) {
      SCOPED_TRACE(std::string(file) + " " + selector);
      const std::string xpath = std::string(".//") + selector;
      EXPECT_EQ(document.all(selector), document.all(xpath));
      for (Element receiver : receivers) {
        ASSERT_EQ(receiver.all(selector), receiver.all(xpath));
        ASSERT_EQ(receiver.first(selector), receiver.first(xpath));
      }
    }
  }
}

}  // namespace
}  // namespace pellago
