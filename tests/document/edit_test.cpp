#include <gtest/gtest.h>

#include "document/document.hpp"
#include "document_test_support.hpp"
#include "error.hpp"

namespace pellago {
namespace {

using test::parse_body;
using test::written_body;

TEST(Text, TextReadsEveryDepthUnchangedAndSetTextIsWrittenEscaped) {
  EXPECT_EQ(parse_body("<a> x <b>&lt;y&#233;<![CDATA[<z> & ]]></b>\n</a>").root().text(),
            " x <y\xC3\xA9<z> & \n");
  Document document = parse_body("<clip><name>old<b/>text</name>\n</clip>");
  const std::string text = "Fish & Chips <take 2> \"A\" 'B' &amp; \xC3\xA9  ";
  document.first("name").set_text(text);
  EXPECT_EQ(written_body(document),
            "<clip><name>Fish &amp; Chips &lt;take 2&gt; \"A\" 'B' &amp;amp; \xC3\xA9  </name>\n"
            "</clip>\n");
  EXPECT_EQ(Document::parse_string(document.write()).first("name").text(), text);
}

TEST(Text, EmptyTextLeavesNoChildrenAndWritesAnEmptyElementTag) {
  Document document = parse_body("<logginginfo>\n\t<scene>12<b>x</b></scene>\n</logginginfo>");
  Element scene = document.first("scene");
  Element replaced = scene.first("b");
  scene.set_text("");
  EXPECT_EQ(scene.node()->children, nullptr);
  EXPECT_EQ(written_body(document), "<logginginfo>\n\t<scene/>\n</logginginfo>\n");
  // A handle to a replaced child stays usable; it is now unattached.
  EXPECT_EQ(replaced.text(), "x");
  EXPECT_FALSE(replaced.parent());
}

TEST(Attributes, AttributesAreReadCreatedAndReplaced) {
  Document document = parse_body("<clip id=\"A&amp;B\"><file/></clip>");
  Element clip = document.root();
  EXPECT_EQ(clip.attribute("id"), "A&B");
  EXPECT_EQ(clip.first("file").attribute("id"), std::nullopt);
  clip.set_attribute("id", "A <1>");
  clip.first("file").set_attribute("id", "&amp;");
  EXPECT_EQ(written_body(document),
            "<clip id=\"A &lt;1&gt;\">\n  <file id=\"&amp;amp;\"/>\n</clip>\n");
}

TEST(Insertion, AttachedNodesAreMovedAndInsertionsThatBreakTheTreeFail) {
  Document document = parse_body("<a> <b/><c/><d> <e/></d></a>");
  Element b = document.first("b");
  EXPECT_EQ(document.first("e").insert_after(b), b);
  document.first("c").insert_before(document.first("d"));
  EXPECT_EQ(written_body(document), "<a> <d> <e/><b/></d><c/></a>\n");
  EXPECT_THROW(document.first("c").insert_after(document.first("c")), Error);
  EXPECT_THROW(document.first("e").insert_after(document.first("d")), Error);
  EXPECT_THROW(document.first("d").append_child(document.root()), Error);
  EXPECT_THROW(document.first("missing").text(), Error);
  EXPECT_THROW(document.root().append_child(document.first("missing")), Error);
  EXPECT_THROW(document.create_element("x").insert_after(document.create_element("y")), Error);
  EXPECT_EQ(written_body(document), "<a> <d> <e/><b/></d><c/></a>\n");
}

TEST(Insertion, NodeOfAnotherDocumentIsCopiedIntoTheReceiversDocument) {
  Document document = parse_body("<clip>\n\t<media/>\n</clip>");
  Element marker;
  {
    Document templ = Document::parse_string(
        "<xmeml><marker><name></name><comment></comment><in>0</in></marker></xmeml>");
    marker = document.first("media").insert_after(templ.first_xpath("//marker"));
    EXPECT_EQ(marker.node()->doc, document.get());
    EXPECT_TRUE(templ.first("marker"));
  }
  marker.first("name").set_text("Klappe");
  marker.first("in").set_text("48");
  EXPECT_EQ(
      written_body(document),
      "<clip>\n\t<media/><marker><name>Klappe</name><comment/><in>48</in></marker>\n</clip>\n");
}

TEST(Insertion, RemovedAndUnattachedNodesStayValidUntilTheDocumentDies) {
  Document document = parse_body("<a> <link>1</link><b/><link>2</link></a>");
  std::vector<Element> links = document.root().all("link");
  for (Element link : links) link.remove();
  Element spare = document.create_element("spare");
  spare.append_child(links[1]);
  document.root().copy().append_child(document.create_element("nested"));
  EXPECT_EQ(written_body(document), "<a> <b/></a>\n");
  EXPECT_EQ(links[0].text(), "1");
  EXPECT_EQ(links[1].parent(), spare);
  document.first("b").insert_after(links[0]);
  EXPECT_EQ(written_body(document), "<a> <b/><link>1</link></a>\n");
  Document moved = std::move(document);
  EXPECT_EQ(written_body(moved), "<a> <b/><link>1</link></a>\n");
}

}  // namespace
}  // namespace pellago
