#include "workbook/xlsx_reader.hpp"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <map>
#include <optional>
#include <string_view>
#include <vector>

#include "error.hpp"
#include "workbook/file_signature.hpp"
#include "workbook/number_format.hpp"
#include "workbook/part_reader.hpp"
#include "workbook/zip_package.hpp"

namespace pellago {

namespace {

constexpr std::array<const char*, 2> kRelationshipNamespaces = {
    "http://schemas.openxmlformats.org/officeDocument/2006/relationships",
    "http://purl.oclc.org/ooxml/officeDocument/relationships",
};
constexpr int kMaxRow = 1048576;
constexpr int kMaxColumn = 16384;

// ---- Part names and relationships ----

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

std::string attribute_or_empty(const PartReader& reader, std::string_view name) {
  const char* value = reader.attribute(name);
  return value == nullptr ? std::string() : std::string(value);
}

// The relationships of source_part ("" for the package); none when it has no relationships part.
std::vector<Relationship> read_relationships(const ZipPackage& package,
                                             const std::string& source_part,
                                             const XlsxLimits& limits) {
  std::vector<Relationship> relationships;
  const std::string part_name = relationships_part_of(source_part);
  if (!package.contains(part_name)) return relationships;
  PartReader reader(package, part_name, limits.other_part_bytes);
  while (reader.read()) {
    if (!reader.is_start("Relationship")) continue;
    if (attribute_or_empty(reader, "TargetMode") == "External") continue;
    relationships.push_back(
        {attribute_or_empty(reader, "Id"), attribute_or_empty(reader, "Type"),
         resolve_target(directory_of(source_part), attribute_or_empty(reader, "Target"))});
  }
  return relationships;
}

const Relationship* find_by_type(const std::vector<Relationship>& relationships,
                                 std::string_view kind) {
  const auto found = std::find_if(relationships.begin(), relationships.end(),
                                  [kind](const Relationship& r) { return has_type(r, kind); });
  return found == relationships.end() ? nullptr : &*found;
}

const Relationship* find_by_id(const std::vector<Relationship>& relationships,
                               std::string_view id) {
  const auto found = std::find_if(relationships.begin(), relationships.end(),
                                  [id](const Relationship& r) { return r.id == id; });
  return found == relationships.end() ? nullptr : &*found;
}

// The workbook part named by the package's officeDocument relationship, else the usual name.
std::string find_workbook_part(const ZipPackage& package, const XlsxLimits& limits) {
  const auto relationships = read_relationships(package, "", limits);
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

// ---- The workbook part ----

struct WorkbookPart {
  bool date1904 = false;
  std::vector<std::string> sheet_ids;  // relationship ids of the <sheet> elements, in order
};

bool is_true(std::string_view value) { return value == "1" || value == "true"; }

const char* relationship_id(const PartReader& reader) {
  for (const char* ns : kRelationshipNamespaces) {
    if (const char* id = reader.attribute("id", ns)) return id;
  }
  return nullptr;
}

WorkbookPart read_workbook_part(const ZipPackage& package, const std::string& part_name,
                                const XlsxLimits& limits) {
  WorkbookPart workbook;
  PartReader reader(package, part_name, limits.other_part_bytes);
  while (reader.read()) {
    if (reader.is_start("workbookPr")) {
      if (const char* flag = reader.attribute("date1904")) workbook.date1904 = is_true(flag);
    } else if (reader.is_start("sheet")) {
      const char* id = relationship_id(reader);
      if (id == nullptr) reader.fail("a <sheet> element without its r:id relationship");
      workbook.sheet_ids.emplace_back(id);
    } else if (reader.is_end("sheets")) {
      break;
    }
  }
  return workbook;
}

// The part of the first sheet that is a worksheet (chart sheets are passed over).
std::string first_worksheet_part(const ZipPackage& package, const std::string& workbook_part,
                                 const WorkbookPart& workbook,
                                 const std::vector<Relationship>& relationships) {
  for (const std::string& id : workbook.sheet_ids) {
    const Relationship* relationship = find_by_id(relationships, id);
    if (relationship == nullptr) {
      throw Error(fmt::format("{}: sheet relationship \"{}\" of \"{}\" is not in \"{}\"",
                              package.path(), id, workbook_part,
                              relationships_part_of(workbook_part)));
    }
    if (!has_type(*relationship, "worksheet")) continue;
    if (!package.contains(relationship->target)) {
      throw Error(fmt::format("{}: the first worksheet's part \"{}\" is missing from the package",
                              package.path(), relationship->target));
    }
    return relationship->target;
  }
  throw Error(fmt::format("{}: the workbook has no worksheet", package.path()));
}

// ---- Text ----

void append_utf8(std::string& out, std::uint32_t code_point) {
  if (code_point < 0x80) {
    out += static_cast<char>(code_point);
  } else if (code_point < 0x800) {
    out += static_cast<char>(0xC0 | (code_point >> 6));
    out += static_cast<char>(0x80 | (code_point & 0x3F));
  } else if (code_point < 0x10000) {
    out += static_cast<char>(0xE0 | (code_point >> 12));
    out += static_cast<char>(0x80 | ((code_point >> 6) & 0x3F));
    out += static_cast<char>(0x80 | (code_point & 0x3F));
  } else {
    out += static_cast<char>(0xF0 | (code_point >> 18));
    out += static_cast<char>(0x80 | ((code_point >> 12) & 0x3F));
    out += static_cast<char>(0x80 | ((code_point >> 6) & 0x3F));
    out += static_cast<char>(0x80 | (code_point & 0x3F));
  }
}

// The UTF-16 code unit of an escape "_xHHHH_" at text[i], if one stands there.
std::optional<std::uint32_t> escaped_unit(std::string_view text, std::size_t i) {
  if (i + 7 > text.size() || text.compare(i, 2, "_x") != 0 || text[i + 6] != '_') {
    return std::nullopt;
  }
  std::uint32_t unit = 0;
  const auto [end, error] = std::from_chars(text.data() + i + 2, text.data() + i + 6, unit, 16);
  if (error != std::errc() || end != text.data() + i + 6) return std::nullopt;
  return unit;
}

// Spreadsheet text writes characters XML cannot hold (control characters, a literal "_x") as
// "_xHHHH_" escapes of UTF-16 code units; this puts the characters back.
void unescape_characters(std::string& text) {
  if (text.find("_x") == std::string::npos) return;
  std::string out;
  out.reserve(text.size());
  for (std::size_t i = 0; i < text.size();) {
    const auto unit = escaped_unit(text, i);
    if (!unit) {
      out += text[i++];
      continue;
    }
    i += 7;
    std::uint32_t code_point = *unit;
    if (code_point >= 0xD800 && code_point <= 0xDBFF) {
      const auto low = escaped_unit(text, i);
      if (low && *low >= 0xDC00 && *low <= 0xDFFF) {
        code_point = 0x10000 + ((code_point - 0xD800) << 10) + (*low - 0xDC00);
        i += 7;
      } else {
        code_point = 0xFFFD;
      }
    } else if (code_point >= 0xDC00 && code_point <= 0xDFFF) {
      code_point = 0xFFFD;
    }
    append_utf8(out, code_point);
  }
  text = std::move(out);
}

// Reads a string item (<si> or <is>, the reader standing on its start tag) into text: its <t>, or
// the <t> of each rich-text run, leaving out the phonetic runs <rPh>.
void read_string_item(PartReader& reader, std::string& text) {
  text.clear();
  if (reader.is_empty_element()) return;
  const int depth = reader.depth();
  bool in_text = false;
  bool in_phonetic = false;
  while (reader.read()) {
    if (reader.is_text()) {
      if (in_text && !in_phonetic) text += reader.text();
    } else if (reader.is_start("t")) {
      in_text = !reader.is_empty_element();
    } else if (reader.is_end("t")) {
      in_text = false;
    } else if (reader.is_start("rPh")) {
      in_phonetic = !reader.is_empty_element();
    } else if (reader.is_end("rPh")) {
      in_phonetic = false;
    } else if (reader.depth() == depth) {
      break;  // the item's end tag
    }
  }
  unescape_characters(text);
}

std::vector<std::string> read_shared_strings(const ZipPackage& package,
                                             const std::string& part_name,
                                             const XlsxLimits& limits) {
  std::vector<std::string> strings;
  PartReader reader(package, part_name, limits.other_part_bytes);
  std::string text;
  while (reader.read()) {
    if (!reader.is_start("si")) continue;
    read_string_item(reader, text);
    strings.push_back(text);
  }
  return strings;
}

// ---- Styles ----

template <typename Number>
std::optional<Number> parse_number(std::string_view text) {
  Number value{};
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
  if (error != std::errc() || end != text.data() + text.size()) return std::nullopt;
  return value;
}

// The date kind of each cell format (cellXfs), by its index: the "s" attribute of a cell.
std::vector<DateKind> read_cell_format_kinds(const ZipPackage& package,
                                             const std::string& part_name,
                                             const XlsxLimits& limits) {
  std::map<int, std::string> custom_codes;
  std::vector<int> format_ids;
  bool in_cell_formats = false;
  PartReader reader(package, part_name, limits.other_part_bytes);
  while (reader.read()) {
    if (reader.is_start("numFmt")) {
      const auto id = parse_number<int>(attribute_or_empty(reader, "numFmtId"));
      if (id) custom_codes[*id] = attribute_or_empty(reader, "formatCode");
    } else if (reader.is_start("cellXfs")) {
      in_cell_formats = !reader.is_empty_element();
    } else if (reader.is_end("cellXfs")) {
      in_cell_formats = false;
    } else if (in_cell_formats && reader.is_start("xf")) {
      format_ids.push_back(parse_number<int>(attribute_or_empty(reader, "numFmtId")).value_or(0));
    }
  }
  std::vector<DateKind> kinds;
  kinds.reserve(format_ids.size());
  for (int id : format_ids) {
    const auto custom = custom_codes.find(id);
    kinds.push_back(custom != custom_codes.end() ? custom_date_kind(custom->second)
                                                 : builtin_date_kind(id));
  }
  return kinds;
}

// ---- The worksheet ----

std::string column_name(int column) {
  std::string name;
  for (; column > 0; column = (column - 1) / 26) {
    name.insert(name.begin(), static_cast<char>('A' + (column - 1) % 26));
  }
  return name;
}

std::string cell_name(int row, int column) { return column_name(column) + std::to_string(row); }

struct CellReference {
  int row;
  int column;
};

// "B12" -> row 12, column 2, within the sheet's limits.
std::optional<CellReference> parse_cell_reference(std::string_view text) {
  std::size_t i = 0;
  int column = 0;
  for (; i < text.size() && text[i] >= 'A' && text[i] <= 'Z' && column <= kMaxColumn; ++i) {
    column = column * 26 + (text[i] - 'A' + 1);
  }
  const auto row = parse_number<int>(text.substr(i));
  if (i == 0 || column > kMaxColumn || !row || *row < 1 || *row > kMaxRow) return std::nullopt;
  return CellReference{*row, column};
}

enum class CellType { number, shared_string, inline_string, text, boolean, error_value, iso_date };

CellType cell_type(const char* t) {
  const std::string_view type = t == nullptr ? std::string_view() : t;
  if (type == "s") return CellType::shared_string;
  if (type == "inlineStr") return CellType::inline_string;
  if (type == "str") return CellType::text;
  if (type == "b") return CellType::boolean;
  if (type == "e") return CellType::error_value;
  if (type == "d") return CellType::iso_date;
  return CellType::number;
}

std::string_view trimmed(std::string_view text) {
  const std::size_t first = text.find_first_not_of(" \t\r\n");
  if (first == std::string_view::npos) return {};
  return text.substr(first, text.find_last_not_of(" \t\r\n") - first + 1);
}

// Walks <sheetData>: rows and their cells, each cell's value from <v> or <is>. Buffers are
// reused from cell to cell; only the values stored in the workbook are allocated.
class WorksheetReader {
 public:
  WorksheetReader(const ZipPackage& package, const std::string& part_name,
                  const std::vector<std::string>& shared_strings,
                  const std::vector<DateKind>& format_kinds, bool date1904,
                  const XlsxLimits& limits)
      : reader_(package, part_name, limits.worksheet_part_bytes),
        shared_strings_(shared_strings),
        format_kinds_(format_kinds),
        date1904_(date1904),
        cell_text_limit_(limits.cell_text_bytes) {}

  Workbook read() {
    while (reader_.read()) {
      if (reader_.is_start("sheetData") && reader_.is_empty_element()) break;
      if (reader_.is_end("sheetData")) break;
      if (reader_.is_start("row")) {
        start_row();
      } else if (reader_.is_start("c")) {
        start_cell();
        if (reader_.is_empty_element()) finish_cell();
      } else if (reader_.is_end("c")) {
        finish_cell();
      } else if (reader_.is_start("v")) {
        read_value();
      } else if (reader_.is_start("is")) {
        read_string_item(reader_, value_);
        has_value_ = true;
      }
    }
    return std::move(sheet_);
  }

 private:
  void start_row() {
    const char* r = reader_.attribute("r");
    const auto number = r != nullptr ? parse_number<int>(r) : std::optional<int>(row_ + 1);
    if (!number || *number < 1 || *number > kMaxRow) {
      reader_.fail(fmt::format("row number \"{}\" is not one of 1 to {}",
                               r != nullptr ? r : std::to_string(row_ + 1), kMaxRow));
    }
    row_ = *number;
    column_ = 0;
  }

  void start_cell() {
    if (const char* r = reader_.attribute("r")) {
      const auto reference = parse_cell_reference(r);
      if (!reference) reader_.fail(fmt::format("\"{}\" is not a cell reference", r));
      row_ = reference->row;
      column_ = reference->column;
    } else if (++column_ > kMaxColumn || row_ == 0) {
      reader_.fail(fmt::format("a cell without reference past column {} or outside a row",
                               column_name(kMaxColumn)));
    }
    type_ = cell_type(reader_.attribute("t"));
    const char* style = reader_.attribute("s");
    style_ = style != nullptr ? parse_number<int>(style).value_or(0) : 0;
    value_.clear();
    has_value_ = false;
  }

  void read_value() {
    has_value_ = true;
    if (reader_.is_empty_element()) return;
    while (reader_.read() && !reader_.is_end("v")) {
      if (reader_.is_text()) value_ += reader_.text();
    }
  }

  void finish_cell() {
    if (!has_value_) return;  // a cell with only a style is not in use
    switch (type_) {
      case CellType::number:
        return store_number();
      case CellType::shared_string:
        return store_text(shared_string());
      case CellType::inline_string:
        return store_text(value_);
      case CellType::text:
        unescape_characters(value_);
        return store_text(value_);
      case CellType::boolean:
        return store_text(trimmed(value_) == "1" ? "TRUE" : "FALSE");
      case CellType::error_value:
      case CellType::iso_date:
        return store_text(value_);
    }
  }

  void store_number() {
    const auto number = parse_number<double>(trimmed(value_));
    if (!number) {
      reader_.fail(fmt::format("cell {} holds \"{}\" where a number belongs",
                               cell_name(row_, column_), value_));
    }
    const DateKind kind = style_ >= 0 && static_cast<std::size_t>(style_) < format_kinds_.size()
                              ? format_kinds_[style_]
                              : DateKind::none;
    if (auto date = serial_date_text(*number, kind, date1904_)) return store_text(*date);
    sheet_.set_cell(row_, column_, *number);
  }

  const std::string& shared_string() {
    const auto index = parse_number<std::size_t>(trimmed(value_));
    if (!index || *index >= shared_strings_.size()) {
      reader_.fail(fmt::format("cell {} refers to shared string \"{}\", but the table holds {}",
                               cell_name(row_, column_), value_, shared_strings_.size()));
    }
    return shared_strings_[*index];
  }

  void store_text(std::string_view text) {
    cell_text_bytes_ += text.size();
    if (cell_text_bytes_ > cell_text_limit_) {
      reader_.fail(fmt::format("the worksheet's text passes {}; refusing it as a likely bomb",
                               describe_size(cell_text_limit_)));
    }
    sheet_.set_cell(row_, column_, std::string(text));
  }

  PartReader reader_;
  const std::vector<std::string>& shared_strings_;
  const std::vector<DateKind>& format_kinds_;
  bool date1904_;
  std::uint64_t cell_text_limit_;
  std::uint64_t cell_text_bytes_ = 0;
  Workbook sheet_;
  int row_ = 0;
  int column_ = 0;
  CellType type_ = CellType::number;
  int style_ = 0;
  std::string value_;
  bool has_value_ = false;
};

void require_zip(const std::string& path) {
  switch (read_file_signature(path)) {
    case FileSignature::zip:
      return;
    case FileSignature::compound_document:
      throw Error(
          fmt::format("{}: not an .xlsx workbook but an OLE2 compound file: an .xls "
                      "workbook (rename it to .xls) or a password-protected .xlsx",
                      path));
    case FileSignature::other:
      throw Error(fmt::format("{}: not an .xlsx workbook (not a zip package)", path));
  }
}

}  // namespace

Workbook read_xlsx(const std::string& path, const XlsxLimits& limits) {
  require_zip(path);
  const ZipPackage package(path);
  const std::string workbook_part = find_workbook_part(package, limits);
  const auto relationships = read_relationships(package, workbook_part, limits);
  const WorkbookPart workbook = read_workbook_part(package, workbook_part, limits);
  const std::string sheet_part =
      first_worksheet_part(package, workbook_part, workbook, relationships);

  std::vector<std::string> shared_strings;
  const std::string directory = directory_of(workbook_part);
  if (auto part = workbook_member(package, relationships, "sharedStrings",
                                  directory + "sharedStrings.xml")) {
    shared_strings = read_shared_strings(package, *part, limits);
  }
  std::vector<DateKind> format_kinds;
  if (auto part = workbook_member(package, relationships, "styles", directory + "styles.xml")) {
    format_kinds = read_cell_format_kinds(package, *part, limits);
  }
  return WorksheetReader(package, sheet_part, shared_strings, format_kinds, workbook.date1904,
                         limits)
      .read();
}

}  // namespace pellago
