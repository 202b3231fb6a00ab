#include "document/document.hpp"

#include <fmt/format.h>
#include <libxml/parser.h>
#include <libxml/xmlsave.h>

#include <cerrno>
#include <climits>
#include <cstdio>
#include <cstring>

#include "document/select.hpp"
#include "document/unattached_nodes.hpp"
#include "error.hpp"

namespace pellago {

namespace {

// Recovering, no network; blank text nodes kept and entities not substituted (the defaults). The
// parser's messages are not printed: a recovered error is not a failure.
constexpr int kParseOptions =
    XML_PARSE_RECOVER | XML_PARSE_NONET | XML_PARSE_NOERROR | XML_PARSE_NOWARNING;

struct FileCloser {
  void operator()(std::FILE* file) const { std::fclose(file); }
};

std::string read_file(const std::string& path) {
  auto fail = [&path](int error) -> Error {
    return Error(fmt::format("cannot read \"{}\": {}", path, std::strerror(error)), error);
  };
  std::unique_ptr<std::FILE, FileCloser> file(std::fopen(path.c_str(), "rb"));
  if (!file) throw fail(errno);
  std::string data;
  char chunk[1 << 16];
  while (std::size_t count = std::fread(chunk, 1, sizeof chunk, file.get())) {
    data.append(chunk, count);
  }
  if (std::ferror(file.get())) throw fail(errno);
  return data;
}

struct ParserContextDeleter {
  void operator()(xmlParserCtxtPtr context) const { xmlFreeParserCtxt(context); }
};

// `what` names the input in messages; `url` is the document's base URL (null for a string).
xmlDocPtr parse_memory(std::string_view markup, const char* url, const std::string& what) {
  if (markup.size() > INT_MAX) throw Error(fmt::format("cannot parse {}: it is too large", what));
  std::unique_ptr<xmlParserCtxt, ParserContextDeleter> context(xmlNewParserCtxt());
  if (!context) throw Error(fmt::format("cannot parse {}: out of memory", what));
  xmlDocPtr doc = xmlCtxtReadMemory(context.get(), markup.data(), static_cast<int>(markup.size()),
                                    url, nullptr, kParseOptions);
  if (!doc) {
    std::string reason = context->lastError.message ? context->lastError.message : "no document";
    while (!reason.empty() && (reason.back() == '\n' || reason.back() == ' ')) reason.pop_back();
    throw Error(fmt::format("cannot parse {} as XML: {}", what, reason));
  }
  return doc;
}

struct BufferDeleter {
  void operator()(xmlBufferPtr buffer) const { xmlBufferFree(buffer); }
};

}  // namespace

void Document::Deleter::operator()(xmlDocPtr doc) const noexcept {
  free_unattached(doc);
  xmlFreeDoc(doc);
}

Document::Document(xmlDocPtr doc) : doc_(doc) { start_tracking_unattached(doc); }
Document::Document(Document&&) noexcept = default;
Document& Document::operator=(Document&&) noexcept = default;
Document::~Document() = default;

Document Document::parse_file(const std::string& path) {
  const std::string markup = read_file(path);
  return Document(parse_memory(markup, path.c_str(), fmt::format("\"{}\"", path)));
}

Document Document::parse_string(std::string_view markup) {
  return Document(parse_memory(markup, nullptr, "the markup"));
}

void Document::observe(EditObserver* observer) const noexcept {
  set_observer(doc_.get(), observer);
}

Element Document::root() const { return Element(xmlDocGetRootElement(doc_.get())); }

Element Document::first(std::string_view selector) const {
  auto found = select(reinterpret_cast<xmlNodePtr>(doc_.get()), selector, Matches::first);
  return found.empty() ? Element() : Element(found.front());
}

std::vector<Element> Document::all(std::string_view selector) const {
  auto found = select(reinterpret_cast<xmlNodePtr>(doc_.get()), selector, Matches::all);
  return {found.begin(), found.end()};
}

Element Document::first_xpath(const std::string& expression) const {
  auto found = select_xpath(reinterpret_cast<xmlNodePtr>(doc_.get()), expression, Matches::first);
  return found.empty() ? Element() : Element(found.front());
}

Element Document::create_element(std::string_view name) {
  const std::string text(name);
  xmlNodePtr node =
      xmlNewDocNode(doc_.get(), nullptr, reinterpret_cast<const xmlChar*>(text.c_str()), nullptr);
  if (!node) throw Error(fmt::format("cannot create the element <{}>: out of memory", name));
  track_unattached(node);
  return Element(node);
}

std::string Document::write() const {
  const char* encoding = reinterpret_cast<const char*>(doc_->encoding);
  std::unique_ptr<xmlBuffer, BufferDeleter> buffer(xmlBufferCreate());
  xmlSaveCtxtPtr save =
      buffer ? xmlSaveToBuffer(buffer.get(), encoding, XML_SAVE_FORMAT | XML_SAVE_AS_XML) : nullptr;
  if (!save) {
    throw Error(fmt::format("cannot write the document in its encoding \"{}\": no converter for it",
                            encoding ? encoding : "UTF-8"));
  }
  const long saved = xmlSaveDoc(save, doc_.get());
  if (xmlSaveClose(save) < 0 || saved < 0) {
    throw Error(fmt::format("cannot write the document in its encoding \"{}\"",
                            encoding ? encoding : "UTF-8"));
  }
  return std::string(reinterpret_cast<const char*>(xmlBufferContent(buffer.get())),
                     xmlBufferLength(buffer.get()));
}

Fragment Fragment::parse(std::string_view markup) {
  Document document = Document::parse_string(fmt::format("<fragment>{}</fragment>", markup));
  std::vector<Element> nodes;
  if (Element root = document.root()) {
    for (xmlNodePtr node = root.node()->children; node; node = node->next) nodes.emplace_back(node);
  }
  return Fragment{std::move(document), std::move(nodes)};
}

}  // namespace pellago
