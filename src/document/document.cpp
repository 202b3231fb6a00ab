#include "document/document.hpp"

#include <fcntl.h>
#include <fmt/format.h>
#include <libxml/parser.h>
#include <libxml/xmlsave.h>
#include <unistd.h>

#include <cerrno>
#include <climits>
#include <cstring>
#include <exception>

#include "document/libxml_errors.hpp"
#include "document/select.hpp"
#include "document/unattached_nodes.hpp"
#include "document/xml_text.hpp"
#include "error.hpp"

namespace pellago {

namespace {

// Recovering, no network; blank text nodes kept and entities not substituted (the defaults). The
// parser's messages are collected, never printed: a recovered error is not a failure. Short texts
// are kept inside their nodes (compact), saving an allocation for each.
constexpr int kParseOptions = XML_PARSE_RECOVER | XML_PARSE_NONET | XML_PARSE_NOERROR |
                              XML_PARSE_NOWARNING | XML_PARSE_COMPACT;

struct ParserContextDeleter {
  void operator()(xmlParserCtxtPtr context) const { xmlFreeParserCtxt(context); }
};

using ParserContext = std::unique_ptr<xmlParserCtxt, ParserContextDeleter>;

ParserContext new_parser_context(const std::string& what) {
  ParserContext context(xmlNewParserCtxt());
  if (!context) throw Error(fmt::format("cannot parse {}: out of memory", what));
  return context;
}

// The document libxml2 built, or Error saying why there is none.
xmlDocPtr require_document(xmlDocPtr doc, const RecoveredErrors& errors, const std::string& what) {
  if (doc) return doc;
  throw Error(fmt::format("cannot parse {} as XML: {}", what,
                          errors.message.empty() ? "no document" : errors.message));
}

// `what` names the input in messages.
xmlDocPtr parse_memory(std::string_view markup, const std::string& what, RecoveredErrors& errors) {
  if (markup.size() > INT_MAX) throw Error(fmt::format("cannot parse {}: it is too large", what));
  ParserContext context = new_parser_context(what);
  const LibxmlErrors collecting(&errors);
  return require_document(
      xmlCtxtReadMemory(context.get(), markup.data(), static_cast<int>(markup.size()), nullptr,
                        nullptr, kParseOptions),
      errors, what);
}

// A file open for libxml2 to read in chunks; a failed read keeps its errno. Closed at the end.
struct FileInput {
  explicit FileInput(const std::string& path) : fd(open(path.c_str(), O_RDONLY | O_CLOEXEC)) {}
  FileInput(const FileInput&) = delete;
  FileInput& operator=(const FileInput&) = delete;
  ~FileInput() {
    if (fd >= 0) close(fd);
  }

  static int read(void* context, char* buffer, int length) {
    auto* input = static_cast<FileInput*>(context);
    for (;;) {
      const ssize_t count = ::read(input->fd, buffer, static_cast<std::size_t>(length));
      if (count >= 0) return static_cast<int>(count);
      if (errno != EINTR) {
        input->error = errno;
        return -1;
      }
    }
  }

  int fd;
  int error = 0;
};

xmlDocPtr parse_path(const std::string& path, RecoveredErrors& errors) {
  auto fail = [&path](int error) -> Error {
    return Error(fmt::format("cannot read \"{}\": {}", path, std::strerror(error)), error);
  };
  FileInput input(path);
  if (input.fd < 0) throw fail(errno);
  const std::string what = fmt::format("\"{}\"", path);
  xmlDocPtr doc = nullptr;
  {
    ParserContext context = new_parser_context(what);
    const LibxmlErrors collecting(&errors);
    doc = xmlCtxtReadIO(context.get(), &FileInput::read, nullptr, &input, path.c_str(), nullptr,
                        kParseOptions);
  }
  if (input.error != 0) {
    xmlFreeDoc(doc);
    throw fail(input.error);
  }
  return require_document(doc, errors, what);
}

// Hands libxml2's output to a sink; an exception from the sink is kept and stops the output.
struct SinkOutput {
  static int write(void* context, const char* buffer, int length) {
    auto* output = static_cast<SinkOutput*>(context);
    try {
      output->sink(std::string_view(buffer, static_cast<std::size_t>(length)));
      return length;
    } catch (...) {
      output->failure = std::current_exception();
      return -1;
    }
  }

  const std::function<void(std::string_view)>& sink;
  std::exception_ptr failure;
};

// The content of a node that is written as it is: text, CDATA, comment, processing instruction.
bool holds_written_content(xmlNodePtr node) {
  switch (node->type) {
    case XML_TEXT_NODE:
    case XML_CDATA_SECTION_NODE:
    case XML_COMMENT_NODE:
    case XML_PI_NODE:
      return node->content != nullptr;
    default:
      return false;
  }
}

// Throws Error when the content of `node` holds what XML 1.0 cannot carry; `owner` names where.
void require_xml_content(xmlNodePtr node, xmlNodePtr owner) {
  if (!holds_written_content(node)) return;
  const auto problem = text_xml_cannot_carry(reinterpret_cast<const char*>(node->content));
  if (!problem) return;
  throw Error(
      fmt::format("cannot write the document: <{}> at line {} holds {}, which XML 1.0 "
                  "cannot carry",
                  owner ? reinterpret_cast<const char*>(owner->name) : "", node->line, *problem));
}

// Every text, attribute value, comment and processing instruction of the tree, checked before
// any byte is written: libxml2 would copy what XML cannot carry into the output unchanged.
void require_xml_tree(xmlDocPtr doc) {
  xmlNodePtr node = doc->children;
  while (node) {
    require_xml_content(
        node, node->parent && node->parent->type == XML_ELEMENT_NODE ? node->parent : nullptr);
    if (node->type == XML_ELEMENT_NODE) {
      for (xmlAttrPtr attribute = node->properties; attribute; attribute = attribute->next) {
        for (xmlNodePtr value = attribute->children; value; value = value->next) {
          require_xml_content(value, node);
        }
      }
    }
    if (node->type == XML_ELEMENT_NODE && node->children) {
      node = node->children;
      continue;
    }
    while (node && !node->next) {
      node = node->parent;
      if (node == reinterpret_cast<xmlNodePtr>(doc)) node = nullptr;
    }
    if (node) node = node->next;
  }
}

}  // namespace

void Document::Deleter::operator()(xmlDocPtr doc) const noexcept {
  free_unattached(doc);
  xmlFreeDoc(doc);
}

Document::Document(xmlDocPtr doc, RecoveredErrors recovered)
    : doc_(doc), recovered_(std::move(recovered)) {
  start_tracking_unattached(doc);
}
Document::Document(Document&&) noexcept = default;
Document& Document::operator=(Document&&) noexcept = default;
Document::~Document() = default;

Document Document::parse_file(const std::string& path) {
  RecoveredErrors errors;
  xmlDocPtr doc = parse_path(path, errors);
  return Document(doc, std::move(errors));
}

Document Document::parse_string(std::string_view markup) {
  RecoveredErrors errors;
  xmlDocPtr doc = parse_memory(markup, "the markup", errors);
  return Document(doc, std::move(errors));
}

void Document::observe(EditObserver* observer) noexcept { set_observer(doc_.get(), observer); }

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

void Document::write(const std::function<void(std::string_view)>& sink) const {
  const char* encoding = reinterpret_cast<const char*>(doc_->encoding);
  const std::string encoding_name = encoding ? encoding : "UTF-8";
  require_xml_tree(doc_.get());
  const LibxmlErrors quiet;
  SinkOutput output{sink, nullptr};
  xmlSaveCtxtPtr save = xmlSaveToIO(&SinkOutput::write, nullptr, &output, encoding,
                                    XML_SAVE_FORMAT | XML_SAVE_AS_XML);
  if (!save) {
    throw Error(fmt::format("cannot write the document in its encoding \"{}\": no converter for it",
                            encoding_name));
  }
  const long saved = xmlSaveDoc(save, doc_.get());
  const int closed = xmlSaveClose(save);
  if (output.failure) std::rethrow_exception(output.failure);
  if (closed < 0 || saved < 0) {
    throw Error(fmt::format("cannot write the document in its encoding \"{}\"", encoding_name));
  }
}

std::string Document::write() const {
  std::string text;
  write([&text](std::string_view chunk) { text += chunk; });
  return text;
}

}  // namespace pellago
