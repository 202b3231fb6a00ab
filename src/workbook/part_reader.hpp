#pragma once

#include <libxml/xmlreader.h>

#include <cstdint>
#include <string>
#include <string_view>

#include "workbook/zip_package.hpp"

namespace pellago {

// Streams one XML part of a package through libxml2's reader, fed chunk by chunk from the zip
// member: no tree is built and the part is never held whole. Elements are matched by local name,
// so the transitional and the strict namespaces read alike. libxml2's own error printing is
// silenced while the reader lives; its errors come back as Error.
class PartReader {
 public:
  PartReader(const ZipPackage& package, const std::string& part_name, std::uint64_t cap);
  ~PartReader();
  PartReader(const PartReader&) = delete;
  PartReader& operator=(const PartReader&) = delete;

  // Moves to the next node; false at the end of the part. Throws Error when the XML is malformed,
  // carries a document type declaration, or the member is damaged or passes the cap.
  bool read();

  bool is_start(std::string_view local_name) const {
    return type_ == XML_READER_TYPE_ELEMENT && name_ == local_name;
  }
  bool is_end(std::string_view local_name) const {
    return type_ == XML_READER_TYPE_END_ELEMENT && name_ == local_name;
  }
  // Text, CDATA and white space all count as character data.
  bool is_text() const {
    return type_ == XML_READER_TYPE_TEXT || type_ == XML_READER_TYPE_CDATA ||
           type_ == XML_READER_TYPE_WHITESPACE || type_ == XML_READER_TYPE_SIGNIFICANT_WHITESPACE;
  }
  // An element written as <x/>: no end node follows it.
  bool is_empty_element() const;
  int depth() const;
  std::string_view text() const;

  // Value of the current element's attribute with that local name in namespace ns (none when
  // ns is null); null when the element has no such attribute.
  const char* attribute(std::string_view local_name, const char* ns = nullptr) const;

  // Throws Error `PATH, part "PART": what`.
  [[noreturn]] void fail(const std::string& what) const;

 private:
  [[noreturn]] void fail_to_parse() const;
  static int read_chunk(void* context, char* buffer, int size);
  static void keep_error(void* context, xmlErrorPtr error);

  const ZipPackage& package_;
  ZipMemberStream member_;
  std::string part_name_;
  xmlStructuredErrorFunc saved_handler_;
  void* saved_handler_context_;
  xmlTextReaderPtr reader_ = nullptr;
  int type_ = XML_READER_TYPE_NONE;
  std::string_view name_;
  std::string error_;
  int error_line_ = 0;
};

}  // namespace pellago
