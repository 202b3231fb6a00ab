#include "workbook/xlsx_package.hpp"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "error.hpp"
#include "workbook/part_parser.hpp"

namespace pellago {

namespace {

constexpr std::array<const char*, 2> kRelationshipNamespaces = {
    "http://schemas.openxmlformats.org/officeDocument/2006/relationships",
    "http://purl.oclc.org/ooxml/officeDocument/relationships",
};

struct Relationship {
  std::string id;
  std::string type;
  std::string target;  // a part name, resolved against the source part
};

bool has_type(const Relationship& relationship, std::string_view kind) {
  const std::string_view type = relationship.type;
  return type.size() > kind.size() && type.ends_with(kind) &&
         type[type.size() - kind.size() - 1] == '/';
}

std::string directory_of(const std::string& part_name) {
  const std::size_t slash = part_name.rfind('/');
  return slash == std::string::npos ? std::string() : part_name.substr(0, slash + 1);
}

// "xl/workbook.xml" has its relationships in "xl/_rels/workbook.xml.rels"; the package itself
// (the empty part name) in "_rels/.rels".
std::string relationships_part_of(const std::string& part_name) {
  const std::string directory = directory_of(part_name);
  return directory + "_rels/" + part_name.substr(directory.size()) + ".rels";
}

// A relationship target ("worksheets/sheet1.xml", "/xl/worksheets/sheet1.xml", "../x.xml") as a
// part name relative to the package root.
std::string resolve_target(const std::string& source_directory, std::string_view target) {
  std::string joined = target.starts_with('/') ? std::string(target.substr(1))
                                               : source_directory + std::string(target);
  std::vector<std::string> segments;
  std::size_t start = 0;
  while (start <= joined.size()) {
    std::size_t end = joined.find('/', start);
    if (end == std::string::npos) end = joined.size();
    const std::string segment = joined.substr(start, end - start);
    if (segment == "..") {
      if (!segments.empty()) segments.pop_back();
    } else if (!segment.empty() && segment != ".") {
      segments.push_back(segment);
    }
    start = end + 1;
  }
  std::string part_name;
  for (const std::string& segment : segments) {
    part_name += part_name.empty() ? segment : "/" + segment;
  }
  return part_name;
}

std::string attribute_or_empty(const Attributes& attributes, std::string_view name) {
  return std::string(attributes.get(name).value_or(std::string_view()));
}

class RelationshipsHandler final : public PartHandler {
 public:
  explicit RelationshipsHandler(std::string source_directory)
      : source_directory_(std::move(source_directory)) {}

  void start(std::string_view name, const Attributes& attributes) override {
    if (name != "Relationship" || attributes.get("TargetMode") == "External") return;
    relationships.push_back(
        {attribute_or_empty(attributes, "Id"), attribute_or_empty(attributes, "Type"),
         resolve_target(source_directory_, attributes.get("Target").value_or(""))});
  }
  void end(std::string_view) override {}
  void text(std::string_view) override {}

  std::vector<Relationship> relationships;

 private:
  std::string source_directory_;
};

// The relationships of source_part ("" for the package); none when it has no relationships part.
std::vector<Relationship> read_relationships(const ZipPackage& package,
                                             const std::string& source_part, std::uint64_t cap) {
  const std::string part_name = relationships_part_of(source_part);
  if (!package.contains(part_name)) return {};
  RelationshipsHandler handler(directory_of(source_part));
  parse_part(package, part_name, cap, handler);
  return std::move(handler.relationships);
}

const Relationship* find_by_type(const std::vector<Relationship>& relationships,
                                 std::string_view kind) {
  const auto found = std::find_if(relationships.begin(), relationships.end(),
                                  [kind](const Relationship& r) { return has_type(r, kind); });
  return found == relationships.end() ? nullptr : &*found;
}

// The workbook part named by the package's officeDocument relationship, else the usual name.
std::string find_workbook_part(const ZipPackage& package, std::uint64_t cap) {
  const auto relationships = read_relationships(package, "", cap);
  const Relationship* main = find_by_type(relationships, "officeDocument");
  const std::string part_name = main != nullptr ? main->target : "xl/workbook.xml";
  if (!package.contains(part_name)) {
    throw Error(
        fmt::format("{}: the package has no workbook part \"{}\"; it is not an .xlsx "
                    "workbook or it is damaged",
                    package.path(), part_name));
  }
  return part_name;
}

// A part that the workbook names by relationship type, else the usual name when present.
std::optional<std::string> workbook_member(const ZipPackage& package,
                                           const std::vector<Relationship>& relationships,
                                           std::string_view kind, const std::string& usual_name) {
  if (const Relationship* relationship = find_by_type(relationships, kind)) {
    return relationship->target;
  }
  if (package.contains(usual_name)) return usual_name;
  return std::nullopt;
}

struct SheetEntry {
  std::string name;
  std::string relationship_id;
};

struct WorkbookPart {
  bool date1904 = false;
  std::vector<SheetEntry> sheets;  // the <sheet> elements, in order
};

bool is_true(std::string_view value) { return value == "1" || value == "true"; }

class WorkbookHandler final : public PartHandler {
 public:
  void start(std::string_view name, const Attributes& attributes) override {
    if (name == "workbookPr") {
      workbook.date1904 = is_true(attributes.get("date1904").value_or(""));
    } else if (name == "sheet") {
      workbook.sheets.push_back({std::string(attributes.get("name").value_or("")),
                                 std::string(relationship_id(attributes))});
    }
  }
  void end(std::string_view name) override {
    if (name == "sheets") finished_ = true;
  }
  void text(std::string_view) override {}
  bool finished() const override { return finished_; }

  WorkbookPart workbook;

 private:
  static std::string_view relationship_id(const Attributes& attributes) {
    for (const char* ns : kRelationshipNamespaces) {
      if (auto id = attributes.get("id", ns)) return *id;
    }
    throw Error("a <sheet> element without its r:id relationship");
  }

  bool finished_ = false;
};

WorkbookPart read_workbook_part(const ZipPackage& package, const std::string& part_name,
                                std::uint64_t cap) {
  WorkbookHandler handler;
  parse_part(package, part_name, cap, handler);
  return std::move(handler.workbook);
}

// The sheets that are worksheets, with their parts (chart sheets are passed over).
std::vector<XlsxWorksheet> worksheets_of(const ZipPackage& package,
                                         const std::string& workbook_part,
                                         const WorkbookPart& workbook,
                                         const std::vector<Relationship>& relationships) {
  std::unordered_map<std::string_view, const Relationship*> by_id;
  for (const Relationship& relationship : relationships) {
    by_id.emplace(relationship.id, &relationship);
  }
  std::vector<XlsxWorksheet> worksheets;
  for (const SheetEntry& sheet : workbook.sheets) {
    const auto found = by_id.find(sheet.relationship_id);
    if (found == by_id.end()) {
      throw Error(fmt::format("{}: sheet relationship \"{}\" of \"{}\" is not in \"{}\"",
                              package.path(), sheet.relationship_id, workbook_part,
                              relationships_part_of(workbook_part)));
    }
    const Relationship* relationship = found->second;
    if (!has_type(*relationship, "worksheet")) continue;
    worksheets.push_back({sheet.name, relationship->target});
  }
  if (worksheets.empty())
    throw Error(fmt::format("{}: the workbook has no worksheet", package.path()));
  return worksheets;
}

}  // namespace

XlsxLayout locate_xlsx_parts(const ZipPackage& package, std::uint64_t cap) {
  const std::string workbook_part = find_workbook_part(package, cap);
  const auto relationships = read_relationships(package, workbook_part, cap);
  const WorkbookPart workbook = read_workbook_part(package, workbook_part, cap);
  const std::string directory = directory_of(workbook_part);
  return {
      worksheets_of(package, workbook_part, workbook, relationships),
      workbook_member(package, relationships, "sharedStrings", directory + "sharedStrings.xml"),
      workbook_member(package, relationships, "styles", directory + "styles.xml"),
      workbook.date1904,
  };
}

}  // namespace pellago
