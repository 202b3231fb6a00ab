#include "workbook/xlsx_reader.hpp"

#include <fmt/format.h>

#include <memory>
#include <optional>
#include <string_view>
#include <vector>

#include "error.hpp"
#include "workbook/file_signature.hpp"
#include "workbook/number_format.hpp"
#include "workbook/part_parser.hpp"
#include "workbook/xlsx_package.hpp"
#include "workbook/xlsx_strings.hpp"
#include "workbook/xlsx_styles.hpp"
#include "workbook/zip_package.hpp"

namespace pellago {

namespace {

constexpr int kMaxRow = 1048576;
constexpr int kMaxColumn = 16384;

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

CellType cell_type(std::string_view type) {
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

struct SheetContext {
  const std::vector<std::string>& shared_strings;
  const CellFormats& formats;
  bool date1904;
  std::uint64_t cell_text_limit;
};

// Walks <sheetData>: rows and their cells, each cell's value from <v> or <is>. Buffers are
// reused from cell to cell; only the values stored in the workbook are allocated.
class WorksheetHandler final : public PartHandler {
 public:
  explicit WorksheetHandler(SheetContext context) : context_(context) {}

  void start(std::string_view name, const Attributes& attributes) override {
    if (in_inline_string_) {
      inline_string_.start(name);
    } else if (name == "c") {
      start_cell(attributes);
    } else if (name == "v") {
      in_value_ = true;
      has_value_ = true;
    } else if (name == "is") {
      in_inline_string_ = true;
      inline_string_.clear();
    } else if (name == "row") {
      start_row(attributes);
    }
  }

  void end(std::string_view name) override {
    if (name == "is") {
      in_inline_string_ = false;
      has_value_ = true;
      value_ = inline_string_.finish();
    } else if (in_inline_string_) {
      inline_string_.end(name);
    } else if (name == "v") {
      in_value_ = false;
    } else if (name == "c") {
      finish_cell();
    } else if (name == "sheetData") {
      finished_ = true;
    }
  }

  void text(std::string_view piece) override {
    if (in_value_) value_ += piece;
    if (in_inline_string_) inline_string_.text(piece);
  }

  bool finished() const override { return finished_; }
  // The first rows are whole once a later row or the end of the sheet's data comes.
  bool passed_checkpoint() const override { return finished_ || row_ > kRowsReadFirst; }

  Workbook sheet;

 private:
  void start_row(const Attributes& attributes) {
    const auto r = attributes.get("r");
    const auto number = r ? parse_number<int>(*r) : std::optional<int>(row_ + 1);
    if (!number || *number < 1 || *number > kMaxRow) {
      throw Error(fmt::format("row number \"{}\" is not one of 1 to {}",
                              r ? std::string(*r) : std::to_string(row_ + 1), kMaxRow));
    }
    row_ = *number;
    column_ = 0;
  }

  void start_cell(const Attributes& attributes) {
    if (const auto r = attributes.get("r")) {
      const auto reference = parse_cell_reference(*r);
      if (!reference) throw Error(fmt::format("\"{}\" is not a cell reference", *r));
      row_ = reference->row;
      column_ = reference->column;
    } else if (++column_ > kMaxColumn || row_ == 0) {
      throw Error(fmt::format("a cell without reference past column {} or outside a row",
                              column_name(kMaxColumn)));
    }
    require_in_order();
    type_ = cell_type(attributes.get("t").value_or(""));
    style_ = parse_number<std::uint32_t>(attributes.get("s").value_or("")).value_or(0);
    value_.clear();
    has_value_ = false;
  }

  // Cells come row by row, left to right, each once, as spreadsheet programs write and demand
  // them; a file that goes back is refused rather than sorted at a cost it could inflate.
  void require_in_order() {
    if (row_ < previous_row_ || (row_ == previous_row_ && column_ <= previous_column_)) {
      throw Error(fmt::format("cell {} comes after cell {}: the cells are out of order",
                              cell_name(row_, column_),
                              cell_name(previous_row_, previous_column_)));
    }
    previous_row_ = row_;
    previous_column_ = column_;
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
        sheet.set_cell(row_, column_, trimmed(value_) == "1");
        return;
      case CellType::error_value:
        return store_text(value_);
      case CellType::iso_date:
        if (const auto date = parse_iso_date_time(trimmed(value_))) {
          sheet.set_cell(row_, column_, *date, style_);
          return;
        }
        return store_text(value_);
    }
  }

  void store_number() {
    const auto number = parse_number<double>(trimmed(value_));
    if (!number) {
      throw Error(fmt::format("cell {} holds \"{}\" where a number belongs",
                              cell_name(row_, column_), value_));
    }
    const auto& kinds = context_.formats.kinds;
    const DateKind kind = style_ < kinds.size() ? kinds[style_] : DateKind::none;
    if (auto date = serial_date_time(*number, kind, context_.date1904)) {
      sheet.set_cell(row_, column_, *date, style_);
    } else {
      sheet.set_cell(row_, column_, *number, style_);
    }
  }

  const std::string& shared_string() const {
    const auto& strings = context_.shared_strings;
    const auto index = parse_number<std::size_t>(trimmed(value_));
    if (!index || *index >= strings.size()) {
      throw Error(fmt::format("cell {} refers to shared string \"{}\", but the table holds {}",
                              cell_name(row_, column_), value_, strings.size()));
    }
    return strings[*index];
  }

  void store_text(std::string_view text) {
    cell_text_bytes_ += text.size();
    if (cell_text_bytes_ > context_.cell_text_limit) {
      throw Error(cell_text_cap_message(context_.cell_text_limit));
    }
    sheet.set_cell(row_, column_, std::string(text));
  }

  SheetContext context_;
  std::uint64_t cell_text_bytes_ = 0;
  int row_ = 0;
  int column_ = 0;
  int previous_row_ = 0;
  int previous_column_ = 0;
  CellType type_ = CellType::number;
  std::uint32_t style_ = 0;
  std::string value_;
  bool has_value_ = false;
  bool in_value_ = false;
  bool in_inline_string_ = false;
  StringItemText inline_string_;
  bool finished_ = false;
};

// The path, once its file starts as a zip package does.
const std::string& zip_path(const std::string& path) {
  switch (read_file_signature(path)) {
    case FileSignature::zip:
      break;
    case FileSignature::compound_document:
      throw Error(
          fmt::format("{}: not an .xlsx workbook but an OLE2 compound file: an .xls "
                      "workbook (rename it to .xls) or a password-protected .xlsx",
                      path));
    case FileSignature::other:
      throw Error(fmt::format("{}: not an .xlsx workbook (not a zip package)", path));
  }
  return path;
}

}  // namespace

// What the worksheet's cells refer to, and the parse of the worksheet, which goes on in a second
// step: everything the handler and the parser point to lives here, at a fixed address.
struct XlsxReading::State {
  State(const std::string& path, const XlsxLimits& limits)
      : limits(limits),
        package(zip_path(path)),
        layout(locate_xlsx_parts(package, limits.other_part_bytes)),
        shared_strings(
            layout.shared_strings_part
                ? read_shared_strings(package, *layout.shared_strings_part, limits.other_part_bytes)
                : std::vector<std::string>{}),
        formats(layout.styles_part
                    ? read_cell_formats(package, *layout.styles_part, limits.other_part_bytes)
                    : CellFormats{}) {}

  // Reads the worksheet at `index` of the layout up to the checkpoint, in place of any other.
  void open(std::size_t index) {
    const XlsxWorksheet& chosen = layout.worksheets[index];
    if (!package.contains(chosen.part)) {
      throw Error(fmt::format("{}: the part \"{}\" of worksheet \"{}\" is missing from the package",
                              package.path(), chosen.part, chosen.name));
    }
    worksheet.reset();
    handler = std::make_unique<WorksheetHandler>(
        SheetContext{shared_strings, formats, layout.date1904, limits.cell_text_bytes});
    handler->sheet.set_number_formats(formats.codes);
    handler->sheet.set_name(chosen.name);
    worksheet =
        std::make_unique<PartParse>(package, chosen.part, limits.worksheet_part_bytes, *handler);
    worksheet->parse_to_checkpoint();
  }

  // Opens the worksheet the choice names, or the first it accepts, or the first.
  void open_chosen(const WorksheetChoice& choice) {
    const std::vector<XlsxWorksheet>& sheets = layout.worksheets;
    if (choice.name) {
      for (std::size_t i = 0; i < sheets.size(); ++i) {
        if (sheets[i].name == *choice.name) return open(i);
      }
      std::vector<std::string> names;
      for (const XlsxWorksheet& sheet : sheets) names.push_back(sheet.name);
      throw Error(missing_worksheet_message(package.path(), *choice.name, names));
    }
    for (std::size_t i = 0; i < sheets.size() && choice.accepts; ++i) {
      open(i);
      if (choice.accepts(handler->sheet)) return;
    }
    open(0);
  }

  const XlsxLimits limits;
  const ZipPackage package;
  const XlsxLayout layout;
  const std::vector<std::string> shared_strings;
  const CellFormats formats;
  std::unique_ptr<WorksheetHandler> handler;
  std::unique_ptr<PartParse> worksheet;
};

XlsxReading::XlsxReading(const std::string& path, const XlsxLimits& limits,
                         const WorksheetChoice& choice)
    : state_(std::make_unique<State>(path, limits)) {
  state_->open_chosen(choice);
}

XlsxReading::~XlsxReading() = default;
XlsxReading::XlsxReading(XlsxReading&&) noexcept = default;
XlsxReading& XlsxReading::operator=(XlsxReading&&) noexcept = default;

const Workbook& XlsxReading::sheet() const { return state_->handler->sheet; }

Workbook XlsxReading::finish() {
  state_->worksheet->parse_rest();
  Workbook sheet = std::move(state_->handler->sheet);
  state_.reset();  // the package, its shared strings and the parser go now
  return sheet;
}

Workbook read_xlsx(const std::string& path, const XlsxLimits& limits) {
  return XlsxReading(path, limits).finish();
}

std::vector<std::string> xlsx_worksheet_names(const std::string& path) {
  const ZipPackage package(zip_path(path));
  std::vector<std::string> names;
  for (const XlsxWorksheet& sheet :
       locate_xlsx_parts(package, XlsxLimits{}.other_part_bytes).worksheets) {
    names.push_back(sheet.name);
  }
  return names;
}

}  // namespace pellago
