#include "workbook/part_reader.hpp"

#include <fmt/format.h>
#include <libxml/xmlerror.h>

#include <algorithm>
#include <cstring>

#include "error.hpp"

namespace pellago {

namespace {

std::string_view as_view(const xmlChar* text) {
  return text == nullptr ? std::string_view() : reinterpret_cast<const char*>(text);
}

// Never load external entities or the network, never expand entities, keep text small in nodes.
constexpr int kParseOptions = XML_PARSE_NONET | XML_PARSE_COMPACT | XML_PARSE_NOCDATA;

}  // namespace

PartReader::PartReader(const ZipPackage& package, const std::string& part_name, std::uint64_t cap)
    : package_(package),
      member_(package, part_name, cap),
      part_name_(part_name),
      saved_handler_(xmlStructuredError),
      saved_handler_context_(xmlStructuredErrorContext) {
  // The global handler also catches the errors libxml2 raises outside the parser context (I/O).
  xmlSetStructuredErrorFunc(this, &PartReader::keep_error);
  reader_ = xmlReaderForIO(&PartReader::read_chunk, nullptr, this, part_name.c_str(), nullptr,
                           kParseOptions);
  if (reader_ == nullptr) {
    xmlSetStructuredErrorFunc(saved_handler_context_, saved_handler_);
    fail_to_parse();
  }
  xmlTextReaderSetStructuredErrorHandler(reader_, &PartReader::keep_error, this);
}

PartReader::~PartReader() {
  if (reader_ != nullptr) xmlFreeTextReader(reader_);
  xmlSetStructuredErrorFunc(saved_handler_context_, saved_handler_);
}

bool PartReader::read() {
  const int status = xmlTextReaderRead(reader_);
  if (status < 0 || !member_.failure().empty() || !error_.empty()) fail_to_parse();
  if (status == 0) {
    type_ = XML_READER_TYPE_NONE;
    return false;
  }
  type_ = xmlTextReaderNodeType(reader_);
  name_ = as_view(xmlTextReaderConstLocalName(reader_));
  if (type_ == XML_READER_TYPE_DOCUMENT_TYPE) {
    fail("a document type declaration, which workbook parts never carry");
  }
  return true;
}

bool PartReader::is_empty_element() const { return xmlTextReaderIsEmptyElement(reader_) == 1; }

int PartReader::depth() const { return xmlTextReaderDepth(reader_); }

std::string_view PartReader::text() const { return as_view(xmlTextReaderConstValue(reader_)); }

const char* PartReader::attribute(std::string_view local_name, const char* ns) const {
  const xmlNode* node = xmlTextReaderCurrentNode(reader_);
  if (node == nullptr || node->type != XML_ELEMENT_NODE) return nullptr;
  for (const xmlAttr* attribute = node->properties; attribute != nullptr;
       attribute = attribute->next) {
    if (as_view(attribute->name) != local_name) continue;
    const bool in_namespace = attribute->ns != nullptr && attribute->ns->href != nullptr;
    if (ns == nullptr
            ? in_namespace
            : !in_namespace || std::strcmp(as_view(attribute->ns->href).data(), ns) != 0) {
      continue;
    }
    const xmlNode* value = attribute->children;
    if (value == nullptr || value->content == nullptr) return "";
    return reinterpret_cast<const char*>(value->content);
  }
  return nullptr;
}

void PartReader::fail(const std::string& what) const {
  throw Error(fmt::format("{}, part \"{}\": {}", package_.path(), part_name_, what));
}

void PartReader::fail_to_parse() const {
  if (!member_.failure().empty()) throw Error(member_.failure());
  fail(fmt::format("malformed XML{}: {}",
                   error_line_ > 0 ? fmt::format(" at line {}", error_line_) : "",
                   error_.empty() ? "the parser stopped" : error_));
}

int PartReader::read_chunk(void* context, char* buffer, int size) {
  auto* self = static_cast<PartReader*>(context);
  return static_cast<int>(self->member_.read(buffer, static_cast<std::size_t>(size)));
}

void PartReader::keep_error(void* context, xmlErrorPtr error) {
  auto* self = static_cast<PartReader*>(context);
  if (error == nullptr || error->level < XML_ERR_ERROR || !self->error_.empty()) return;
  std::string message = error->message != nullptr ? error->message : "";
  std::replace(message.begin(), message.end(), '\n', ' ');
  while (!message.empty() && message.back() == ' ') message.pop_back();
  self->error_ = message.empty() ? "unknown error" : message;
  self->error_line_ = error->line;
}

}  // namespace pellago
