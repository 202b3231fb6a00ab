#include <gtest/gtest.h>

#include "document/document.hpp"
#include "document_test_support.hpp"
#include "error.hpp"

namespace pellago {
namespace {

using test::parse_body;

std::vector<std::string> texts(const std::vector<Element>& elements) {
  std::vector<std::string> result;
  for (Element element : elements) result.push_back(element.text());
  return result;
}

constexpr std::string_view kClip = R"(<xmeml><clip id="c1">
  <media><video><track><clipitem><in>5</in><rate><timebase>30</timebase></rate></clipitem></track></video></media>
  <in>7</in>
  <rate><timebase>24</timebase></rate>
  <logginginfo><good>a</good></logginginfo>
  <label>direct</label>
  <labels><label2>two</label2></labels>
  <logginginfo><good>b</good><scene>s</scene></logginginfo>
  <timecode><source>aux2</source><frame>2</frame></timecode>
  <timecode><source>aux1</source><frame>1</frame></timecode>
</clip></xmeml>)";

TEST(Selectors, XPathSelectorsUseTheReceiverAsContextNode) {
  Document document = parse_body(kClip);
  Element clip = document.first("clip");
  EXPECT_EQ(clip.first("./in").text(), "7");
  EXPECT_EQ(clip.first("."), clip);
  EXPECT_EQ(clip.first(".."), document.root());
  EXPECT_EQ(clip.first("/xmeml"), document.root());
  EXPECT_EQ(clip.first_xpath(".//timecode[source=\"aux1\"]").first("frame").text(), "1");
  EXPECT_FALSE(clip.first_xpath(".//timecode[source=\"aux3\"]"));
  EXPECT_EQ(texts(clip.all("./logginginfo/*")), (std::vector<std::string>{"a", "b", "s"}));
  EXPECT_EQ(clip.first("logginginfo//scene").text(), "s");
  EXPECT_THROW(clip.first_xpath(".//timecode["), Error);
}

TEST(Selectors, EntityReferencesAreNotSearchedAndTextReadsThem) {
  Document document = parse_body(
      "<!DOCTYPE xmeml [<!ENTITY crew \"<name>Crew</name>\">]>"
      "<xmeml><clip>&crew;<name>Own</name></clip></xmeml>");
  Element clip = document.first("clip");
  EXPECT_EQ(texts(clip.all("name")), (std::vector<std::string>{"Own"}));
  EXPECT_EQ(clip.text(), "CrewOwn");
}

// The name-chain walk (with or without a condition on a child's text), alone or with the other
// selectors in one walk, must pick exactly what the XPath ".//" + selector picks: in document
// order, strictly below the receiver, names and texts compared exactly.
TEST(Selectors, NameChainsAgreeWithXPathOnRealExports) {
  const char* selectors[] = {"in",
                             "IN",
                             "clip",
                             "clip/in",
                             "xmeml/clip",
                             "rate/timebase",
                             "media/audio/in",
                             "track/clipitem",
                             "file/timecode/displayformat",
                             "logginginfo/good",
                             "labels/label",
                             "labels/label2",
                             "timecode[source=\"source\"]",
                             "timecode[source=\"aux\"]",
                             "clip/timecode[source='aux2']",
                             "file/timecode[displayformat='NDF']"};
  std::vector<Selector> chains;
  for (const char* selector : selectors) chains.push_back(*parse_selector(selector));
  for (const char* file : {"", "exports/master_clips.xml", "realworld/premiere_example.xml",
                           "realworld/hiero_xml_export.xml"}) {
    Document document = *file ? Document::parse_file(std::string(PELLAGO_TEST_DATA) + "/" + file)
                              : parse_body(kClip);
    std::vector<Element> receivers = document.all(".//*");
    // One walk per receiver for all selectors: [receiver][selector].
    std::vector<std::vector<std::vector<Element>>> all_of;
    std::vector<std::vector<Element>> first_of;
    for (Element receiver : receivers) {
      all_of.push_back(receiver.all_of(chains));
      first_of.push_back(receiver.first_of(chains));
    }
    for (std::size_t i = 0; i < chains.size(); ++i) {
      const char* selector = selectors[i];
      SCOPED_TRACE(std::string(file) + " " + selector);
      const std::string xpath = std::string(".//") + selector;
      EXPECT_EQ(document.all(selector), document.all(xpath));
      for (std::size_t r = 0; r < receivers.size(); ++r) {
        const std::vector<Element> expected = receivers[r].all(xpath);
        ASSERT_EQ(receivers[r].all(selector), expected);
        ASSERT_EQ(all_of[r][i], expected);
        ASSERT_EQ(receivers[r].first(selector), receivers[r].first(xpath));
        ASSERT_EQ(first_of[r][i], receivers[r].first(xpath));
      }
    }
  }
}

}  // namespace
}  // namespace pellago
