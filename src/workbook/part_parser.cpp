#include "workbook/part_parser.hpp"

#include <fmt/format.h>
#include <libxml/parser.h>
#include <libxml/xmlerror.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <exception>

#include "error.hpp"

namespace pellago {

namespace {

std::string_view as_view(const xmlChar* text) {
  return text == nullptr ? std::string_view() : reinterpret_cast<const char*>(text);
}

// Never the network, no entity expansion beyond the five predefined ones.
constexpr int kParseOptions = XML_PARSE_NONET;
constexpr std::size_t kChunkBytes = 64 * 1024;

}  // namespace

// One parse: the member it reads, the handler, the first failure, and the libxml2 callbacks that
// feed them. A callback never lets an exception pass into libxml2: it keeps it and stops the
// parser. The parse may stop at a chunk's end once the handler has passed its checkpoint and go on
// later, on another thread.
class SaxParse {
 public:
  SaxParse(ZipMemberStream& member, PartHandler& handler) : member_(member), handler_(handler) {
    xmlSAXHandler sax{};
    sax.initialized = XML_SAX2_MAGIC;
    sax.startElementNs = &SaxParse::on_start;
    sax.endElementNs = &SaxParse::on_end;
    sax.characters = &SaxParse::on_text;
    sax.ignorableWhitespace = &SaxParse::on_text;
    sax.cdataBlock = &SaxParse::on_text;
    sax.internalSubset = &SaxParse::on_document_type;
    sax.serror = &SaxParse::on_error;
    context_ = xmlCreatePushParserCtxt(&sax, this, nullptr, 0, nullptr);
    if (context_ == nullptr) throw Error("cannot start the XML parser (out of memory?)");
    xmlCtxtUseOptions(context_, kParseOptions);
  }

  // Feeds chunks until the part ends, the parse stops, or (with to_checkpoint) the handler has
  // passed its checkpoint. A failure before the checkpoint is thrown at once; one after it is
  // kept for the call that reads the rest.
  void run(bool to_checkpoint) {
    std::array<char, kChunkBytes> chunk;
    while (!last_ && !stopped() && !(to_checkpoint && handler_.passed_checkpoint())) {
      const std::int64_t count = member_.read(chunk.data(), chunk.size());
      if (count < 0) throw Error(member_.failure());
      last_ = count == 0;
      xmlParseChunk(context_, chunk.data(), static_cast<int>(count), last_ ? 1 : 0);
    }
    if (to_checkpoint && failed_past_checkpoint_) return;
    if (failure_) std::rethrow_exception(failure_);
    if (!error_.empty()) throw_malformed();
    if (to_checkpoint) return;
    // A handler that stopped early still has the rest unpacked, so the checksum is checked.
    while (!last_) {
      const std::int64_t count = member_.read(chunk.data(), chunk.size());
      if (count < 0) throw Error(member_.failure());
      last_ = count == 0;
    }
  }

  ~SaxParse() {
    if (context_ != nullptr) xmlFreeParserCtxt(context_);
  }
  SaxParse(const SaxParse&) = delete;
  SaxParse& operator=(const SaxParse&) = delete;

 private:
  bool stopped() const { return failure_ || !error_.empty() || handler_.finished(); }

  [[noreturn]] void throw_malformed() const {
    throw Error(fmt::format("malformed XML{}: {}",
                            error_line_ > 0 ? fmt::format(" at line {}", error_line_) : "",
                            error_));
  }

  void note_failure_place() { failed_past_checkpoint_ = handler_.passed_checkpoint(); }

  template <typename Event>
  static void deliver(void* context, Event event) {
    auto* self = static_cast<SaxParse*>(context);
    if (self->stopped()) return;
    try {
      event(self->handler_);
    } catch (...) {
      self->failure_ = std::current_exception();
      self->note_failure_place();
    }
    if (self->stopped()) xmlStopParser(self->context_);
  }

  static void on_start(void* context, const xmlChar* name, const xmlChar*, const xmlChar*, int,
                       const xmlChar**, int count, int, const xmlChar** attributes) {
    deliver(context, [&](PartHandler& handler) {
      handler.start(as_view(name), Attributes(attributes, count));
    });
  }

  static void on_end(void* context, const xmlChar* name, const xmlChar*, const xmlChar*) {
    deliver(context, [&](PartHandler& handler) { handler.end(as_view(name)); });
  }

  static void on_text(void* context, const xmlChar* text, int length) {
    deliver(context, [&](PartHandler& handler) {
      handler.text({reinterpret_cast<const char*>(text), static_cast<std::size_t>(length)});
    });
  }

  static void on_document_type(void* context, const xmlChar*, const xmlChar*, const xmlChar*) {
    deliver(context, [](PartHandler&) {
      throw Error("a document type declaration, which workbook parts never carry");
    });
  }

  static void on_error(void* context, xmlErrorPtr error) {
    auto* self = static_cast<SaxParse*>(context);
    if (error == nullptr || error->level < XML_ERR_ERROR || error->code == XML_ERR_USER_STOP ||
        !self->error_.empty()) {
      return;
    }
    std::string message = error->message != nullptr ? error->message : "";
    std::replace(message.begin(), message.end(), '\n', ' ');
    while (!message.empty() && message.back() == ' ') message.pop_back();
    self->error_ = message.empty() ? "the parser stopped" : message;
    self->error_line_ = error->line;
    self->note_failure_place();
  }

  ZipMemberStream& member_;
  PartHandler& handler_;
  xmlParserCtxtPtr context_ = nullptr;
  bool last_ = false;
  std::exception_ptr failure_;
  std::string error_;
  int error_line_ = 0;
  bool failed_past_checkpoint_ = false;
};

namespace {

// Routes libxml2's errors raised outside a parser context away from stderr while a part parses.
class QuietLibxml {
 public:
  QuietLibxml() : handler_(xmlStructuredError), context_(xmlStructuredErrorContext) {
    xmlSetStructuredErrorFunc(nullptr, [](void*, xmlErrorPtr) {});
  }
  ~QuietLibxml() { xmlSetStructuredErrorFunc(context_, handler_); }
  QuietLibxml(const QuietLibxml&) = delete;
  QuietLibxml& operator=(const QuietLibxml&) = delete;

 private:
  xmlStructuredErrorFunc handler_;
  void* context_;
};

}  // namespace

std::optional<std::string_view> Attributes::get(std::string_view local_name, const char* ns) const {
  for (int i = 0; i < count_; ++i) {
    const xmlChar* const* attribute = attributes_ + 5 * i;
    if (as_view(attribute[0]) != local_name) continue;
    const bool in_namespace = attribute[2] != nullptr;
    if (ns == nullptr ? in_namespace : !in_namespace || as_view(attribute[2]) != ns) continue;
    return std::string_view(reinterpret_cast<const char*>(attribute[3]),
                            static_cast<std::size_t>(attribute[4] - attribute[3]));
  }
  return std::nullopt;
}

PartParse::PartParse(const ZipPackage& package, const std::string& part_name, std::uint64_t cap,
                     PartHandler& handler)
    : package_path_(package.path()),
      part_name_(part_name),
      member_(std::make_unique<ZipMemberStream>(package, part_name, cap)) {
  with_part_named([&] { parse_ = std::make_unique<SaxParse>(*member_, handler); });
}

PartParse::~PartParse() = default;

void PartParse::parse_to_checkpoint() {
  with_part_named([this] { parse_->run(true); });
}

void PartParse::parse_rest() {
  with_part_named([this] { parse_->run(false); });
}

template <typename Step>
void PartParse::with_part_named(Step step) {
  const QuietLibxml quiet;
  try {
    step();
  } catch (const Error& error) {
    if (!member_->failure().empty()) throw;  // already names the file and the part
    throw Error(fmt::format("{}, part \"{}\": {}", package_path_, part_name_, error.what()));
  }
}

void parse_part(const ZipPackage& package, const std::string& part_name, std::uint64_t cap,
                PartHandler& handler) {
  PartParse(package, part_name, cap, handler).parse_rest();
}

}  // namespace pellago
