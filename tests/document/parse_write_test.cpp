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

TEST(ParseAndWrite, ExportsComeOutAsLibxml2WritesThemAndAsCommitted) {
  const std::vector<fs::path> files = export_files();
  ASSERT_EQ(files.size(), 16u);
  for (const fs::path& path : files) {
    SCOPED_TRACE(path.filename().string());
    const std::string written = Document::parse_file(path).write();
    EXPECT_EQ(written, libxml2_round_trip(path));
    EXPECT_EQ(written.find('\r'), std::string::npos);
  }
  EXPECT_EQ(Document::parse_file(kData / "exports/master_clips.xml").write(),
            read_bytes(kData / "exports/master_clips.expected.xml"));
}

TEST(ParseAndWrite, MalformedMarkupIsRecovered) {
  Document document = Document::parse_string(
      "<xmeml><clip><name>A & B</name><in>1</clip><clip><name>C</name></clip>");
  std::vector<Element> clips = document.all("clip");
  ASSERT_EQ(clips.size(), 2u);
  EXPECT_EQ(clips[1].first("name").text(), "C");
  EXPECT_EQ(Document::parse_string("no markup").root(), Element());
}

Error parse_error(const fs::path& path) {
  try {
    Document::parse_file(path);
  } catch (const Error& error) {
    return error;
  }
  return Error("no error");
}

TEST(ParseAndWrite, UnreadableOrEmptyInputFailsNamingTheFile) {
  const fs::path missing = kData / "no such file.xml";
  const Error error = parse_error(missing);
  EXPECT_EQ(error.system_error, ENOENT);
  EXPECT_EQ(std::string(error.what()),
            "cannot read \"" + missing.string() + "\": No such file or directory");
  EXPECT_EQ(parse_error(kData).system_error, EISDIR);

  const fs::path empty = fs::path(testing::TempDir()) / "pellago empty.xml";
  std::ofstream(empty).close();
  const Error not_xml = parse_error(empty);
  fs::remove(empty);
  EXPECT_EQ(not_xml.system_error, 0);
  EXPECT_EQ(std::string(not_xml.what()),
            "cannot parse \"" + empty.string() + "\" as XML: Document is empty");
}

}  // namespace
}  // namespace pellago
