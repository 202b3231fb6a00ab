#pragma once

#include <libxml/xmlstring.h>

#include <charconv>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "workbook/zip_package.hpp"

namespace pellago {

// The attributes of a start tag as libxml2 hands them over: views valid during the call only.
class Attributes {
 public:
  Attributes(const xmlChar** attributes, int count) : attributes_(attributes), count_(count) {}
  // The value of the attribute with that local name in namespace ns (no namespace when null).
  std::optional<std::string_view> get(std::string_view local_name, const char* ns = nullptr) const;

 private:
  const xmlChar** attributes_;  // per attribute: local name, prefix, URI, value, end of value
  int count_;
};

// Receives the events of one part. Elements come by local name, so the transitional and the
// strict namespaces read alike; an empty element <x/> gives start and end. Text may come in
// several pieces. A handler throws Error with what is wrong; the caller adds the file and part.
class PartHandler {
 public:
  virtual void start(std::string_view name, const Attributes& attributes) = 0;
  virtual void end(std::string_view name) = 0;
  virtual void text(std::string_view text) = 0;
  // True once the handler has all it wants from the part: the rest is not parsed.
  virtual bool finished() const { return false; }
  // True once the handler has what its reader wants before the rest (see PartParse).
  virtual bool passed_checkpoint() const { return false; }

 protected:
  ~PartHandler() = default;
};

class SaxParse;

// One XML part streamed through libxml2's SAX2 push parser, fed chunk by chunk from the zip
// member: no tree is built and the part is never held whole. It may be parsed in two steps, the
// second on another thread than the first (never both at once): parse_to_checkpoint stops at the
// end of a chunk once the handler has passed its checkpoint, so the handler may have seen events
// past it; parse_rest parses what is left. The steps throw Error naming the file and the part when
// the XML is malformed or carries a document type declaration, the member is damaged or unpacks
// past the cap, or the handler finds something wrong; a failure met after the checkpoint is thrown
// by parse_rest. libxml2 prints nothing.
class PartParse {
 public:
  PartParse(const ZipPackage& package, const std::string& part_name, std::uint64_t cap,
            PartHandler& handler);
  ~PartParse();
  PartParse(const PartParse&) = delete;
  PartParse& operator=(const PartParse&) = delete;

  void parse_to_checkpoint();
  void parse_rest();

 private:
  template <typename Step>
  void with_part_named(Step step);

  std::string package_path_;
  std::string part_name_;
  std::unique_ptr<ZipMemberStream> member_;
  std::unique_ptr<SaxParse> parse_;
};

// Streams one XML part of a package through libxml2's SAX2 push parser, fed chunk by chunk from
// the zip member: no tree is built and the part is never held whole. Throws Error naming the
// file and the part when the XML is malformed or carries a document type declaration, the
// member is damaged or unpacks past the cap, or the handler finds something wrong. libxml2
// prints nothing.
void parse_part(const ZipPackage& package, const std::string& part_name, std::uint64_t cap,
                PartHandler& handler);

// Text that is a number from end to end ("12", "-0.5", "1E3"), as attributes and values hold them.
template <typename Number>
std::optional<Number> parse_number(std::string_view text) {
  Number value{};
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
  if (error != std::errc() || end != text.data() + text.size()) return std::nullopt;
  return value;
}

}  // namespace pellago
