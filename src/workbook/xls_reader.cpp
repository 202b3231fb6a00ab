#include "workbook/xls_reader.hpp"

#include <fmt/format.h>

#include <bit>
#include <map>
#include <optional>
#include <vector>

#include "error.hpp"
#include "workbook/biff_records.hpp"
#include "workbook/compound_file.hpp"
#include "workbook/file_signature.hpp"
#include "workbook/number_format.hpp"

namespace pellago {

namespace {

namespace record_type {
constexpr std::uint16_t kFormula = 0x0006;
constexpr std::uint16_t kEof = 0x000A;
constexpr std::uint16_t kDateMode = 0x0022;
constexpr std::uint16_t kFilePass = 0x002F;
constexpr std::uint16_t kBoundSheet = 0x0085;
constexpr std::uint16_t kMulRk = 0x00BD;
constexpr std::uint16_t kXf = 0x00E0;
constexpr std::uint16_t kSst = 0x00FC;
constexpr std::uint16_t kLabelSst = 0x00FD;
constexpr std::uint16_t kNumber = 0x0203;
constexpr std::uint16_t kLabel = 0x0204;
constexpr std::uint16_t kBoolErr = 0x0205;
constexpr std::uint16_t kString = 0x0207;
constexpr std::uint16_t kRk = 0x027E;
constexpr std::uint16_t kFormat = 0x041E;
constexpr std::uint16_t kBof = 0x0809;
}  // namespace record_type

constexpr std::uint16_t kBiff8 = 0x0600;
constexpr std::uint16_t kGlobalsSubstream = 0x0005;
constexpr std::uint16_t kWorksheetSubstream = 0x0010;
constexpr int kColumns = 256;

[[noreturn]] void damaged(std::string_view what) {
  throw Error(fmt::format("the workbook records are damaged: {}", what));
}

// A worksheet: the name its tab shows, and the stream offset of its BOF record.
struct XlsWorksheet {
  std::string name;
  std::uint32_t offset;
};

// What the workbook globals say about the worksheets and their cells.
struct Globals {
  bool date1904 = false;
  CellFormats formats;  // by XF index
  std::vector<std::string> shared_strings;
  std::vector<XlsWorksheet> worksheets;  // in tab order
};

// Checks a BOF record: BIFF8, of the kind of substream expected.
void require_bof(const Record& record, std::uint16_t substream) {
  if (record.type != record_type::kBof) damaged("a substream does not start with a BOF record");
  RecordReader reader(record);
  const std::uint16_t version = reader.u16();
  if (version != kBiff8) {
    throw Error(fmt::format(
        "it is not in the BIFF8 format of 1997 and later (version 0x{:04X}): save it again as "
        ".xls or as .xlsx",
        version));
  }
  if (reader.u16() != substream) {
    damaged(substream == kGlobalsSubstream ? "the stream does not start with the workbook globals"
                                           : "the first worksheet's offset points to no worksheet");
  }
}

std::vector<std::string> read_shared_strings(const Record& record) {
  RecordReader reader(record);
  reader.u32();  // references to the strings in the workbook
  const std::uint32_t unique = reader.u32();
  std::vector<std::string> strings;
  // Each string takes 3 bytes or more: the count is not trusted further than that.
  strings.reserve(std::min<std::size_t>(unique, reader.remaining() / 3));
  while (strings.size() < unique && !reader.at_end()) strings.push_back(reader.rich_string());
  return strings;
}

Globals read_globals(RecordStream& records) {
  require_bof(records.next(), kGlobalsSubstream);
  Globals globals;
  std::vector<int> xf_formats;
  std::map<int, std::string> custom_codes;
  for (;;) {
    if (records.at_end()) damaged("the workbook globals have no EOF record");
    const Record record = records.next();
    RecordReader reader(record);
    switch (record.type) {
      case record_type::kEof:
        globals.formats = cell_formats(xf_formats, custom_codes);
        return globals;
      case record_type::kFilePass:
        throw Error("it is password-protected (encrypted); save it without a password");
      case record_type::kDateMode:
        globals.date1904 = reader.u16() == 1;
        break;
      case record_type::kFormat: {
        const std::uint16_t id = reader.u16();
        custom_codes[id] = reader.unicode_string();
        break;
      }
      case record_type::kXf:
        reader.u16();  // font
        xf_formats.push_back(reader.u16());
        break;
      case record_type::kSst:
        globals.shared_strings = read_shared_strings(record);
        break;
      case record_type::kBoundSheet: {
        const std::uint32_t offset = reader.u32();
        reader.u8();  // hidden or not
        if (reader.u8() == 0) globals.worksheets.push_back({reader.unicode_string(true), offset});
        break;
      }
      default:
        break;
    }
  }
}

std::string error_text(std::uint8_t code) {
  switch (code) {
    case 0x00:
      return "#NULL!";
    case 0x07:
      return "#DIV/0!";
    case 0x0F:
      return "#VALUE!";
    case 0x17:
      return "#REF!";
    case 0x1D:
      return "#NAME?";
    case 0x24:
      return "#NUM!";
    case 0x2A:
      return "#N/A";
    case 0x2B:
      return "#GETTING_DATA";
    default:
      damaged(fmt::format("a cell holds the unknown error code 0x{:02X}", code));
  }
}

// An RK value: a 30-bit integer or the top 30 bits of a double, maybe divided by 100.
double rk_number(std::uint32_t rk) {
  const double value =
      (rk & 0x02) != 0 ? static_cast<double>(std::bit_cast<std::int32_t>(rk) >> 2)
                       : std::bit_cast<double>(static_cast<std::uint64_t>(rk & 0xFFFFFFFC) << 32);
  return (rk & 0x01) != 0 ? value / 100 : value;
}

// Fills a Workbook from the cell records of the first worksheet.
class SheetReader {
 public:
  SheetReader(const Globals& globals, std::uint64_t cell_text_limit)
      : globals_(globals), cell_text_limit_(cell_text_limit) {}

  void read(RecordStream& records) {
    require_bof(records.next(), kWorksheetSubstream);
    int nested = 0;  // an embedded chart's own BOF ... EOF
    for (;;) {
      if (records.at_end()) damaged("the first worksheet has no EOF record");
      const Record record = records.next();
      if (record.type == record_type::kBof) {
        ++nested;
      } else if (record.type == record_type::kEof) {
        if (nested-- == 0) return;
      } else if (nested == 0) {
        read_cell(record);
      }
    }
  }

  Workbook sheet;

 private:
  struct Position {
    int row;
    int column;
  };

  Position position(RecordReader& reader) const {
    const int row = reader.u16() + 1;
    const int column = reader.u16() + 1;
    if (column > kColumns) {
      damaged(fmt::format("a cell of row {} lies in column {}, past the {} columns a sheet has",
                          row, column, kColumns));
    }
    return {row, column};
  }

  void read_cell(const Record& record) {
    RecordReader reader(record);
    switch (record.type) {
      case record_type::kLabelSst: {
        const Position at = position(reader);
        reader.u16();  // XF
        const std::uint32_t index = reader.u32();
        if (index >= globals_.shared_strings.size()) {
          damaged(fmt::format("a cell refers to shared string {}, but the table holds {}", index,
                              globals_.shared_strings.size()));
        }
        return store_text(at, globals_.shared_strings[index]);
      }
      case record_type::kLabel: {
        const Position at = position(reader);
        reader.u16();
        return store_text(at, reader.unicode_string());
      }
      case record_type::kNumber: {
        const Position at = position(reader);
        const std::uint16_t xf = reader.u16();
        return store_number(at, xf, reader.f64());
      }
      case record_type::kRk: {
        const Position at = position(reader);
        const std::uint16_t xf = reader.u16();
        return store_number(at, xf, rk_number(reader.u32()));
      }
      case record_type::kMulRk:
        return read_mulrk(reader);
      case record_type::kBoolErr: {
        const Position at = position(reader);
        reader.u16();
        const std::uint8_t value = reader.u8();
        if (reader.u8() != 0) return store_text(at, error_text(value));
        return sheet.set_cell(at.row, at.column, value != 0);
      }
      case record_type::kFormula:
        return read_formula(reader);
      case record_type::kString:
        if (pending_string_) store_text(*pending_string_, reader.unicode_string());
        pending_string_.reset();
        return;
      default:
        return;
    }
  }

  void read_mulrk(RecordReader& reader) {
    const Position first = position(reader);
    const std::size_t count = reader.remaining() / 6;
    for (std::size_t i = 0; i < count; ++i) {
      const std::uint16_t xf = reader.u16();
      const int column = first.column + static_cast<int>(i);
      if (column > kColumns) damaged("a run of numbers runs past the last column");
      store_number({first.row, column}, xf, rk_number(reader.u32()));
    }
  }

  // A formula's cached result: a number, or, marked by 0xFFFF in its last two bytes, text (in
  // the STRING record that follows), a truth value, an error or empty text.
  void read_formula(RecordReader& reader) {
    const Position at = position(reader);
    const std::uint16_t xf = reader.u16();
    std::uint8_t result[8];
    for (std::uint8_t& byte : result) byte = reader.u8();
    pending_string_.reset();
    if (result[6] != 0xFF || result[7] != 0xFF) {
      std::uint64_t bits = 0;
      for (int i = 7; i >= 0; --i) bits = bits << 8 | result[i];
      return store_number(at, xf, std::bit_cast<double>(bits));
    }
    switch (result[0]) {
      case 0:
        pending_string_ = at;
        return;
      case 1:
        return sheet.set_cell(at.row, at.column, result[2] != 0);
      case 2:
        return store_text(at, error_text(result[2]));
      case 3:
        return store_text(at, "");
      default:
        damaged(fmt::format("a formula's result has the unknown type {}", result[0]));
    }
  }

  void store_number(Position at, std::uint16_t xf, double number) {
    const auto& kinds = globals_.formats.kinds;
    const DateKind kind = xf < kinds.size() ? kinds[xf] : DateKind::none;
    if (auto date = serial_date_time(number, kind, globals_.date1904)) {
      sheet.set_cell(at.row, at.column, *date, xf);
    } else {
      sheet.set_cell(at.row, at.column, number, xf);
    }
  }

  void store_text(Position at, const std::string& text) {
    cell_text_bytes_ += text.size();
    if (cell_text_bytes_ > cell_text_limit_) throw Error(cell_text_cap_message(cell_text_limit_));
    sheet.set_cell(at.row, at.column, text);
  }

  const Globals& globals_;
  std::optional<Position> pending_string_;
  const std::uint64_t cell_text_limit_;
  std::uint64_t cell_text_bytes_ = 0;
};

void require_compound_document(const std::string& path) {
  switch (read_file_signature(path)) {
    case FileSignature::compound_document:
      return;
    case FileSignature::zip:
      throw Error(
          fmt::format("{}: not an .xls workbook but a zip package: an .xlsx workbook "
                      "(rename it to .xlsx)",
                      path));
    case FileSignature::other:
      throw Error(fmt::format("{}: not an .xls workbook (no OLE2 compound file header)", path));
  }
}

}  // namespace

namespace {

Workbook read_worksheet(const std::vector<std::uint8_t>& stream, const Globals& globals,
                        const XlsWorksheet& worksheet, std::uint64_t cell_text_bytes) {
  RecordStream sheet_records(stream, worksheet.offset);
  SheetReader reader(globals, cell_text_bytes);
  reader.read(sheet_records);
  reader.sheet.set_number_formats(globals.formats.codes);
  reader.sheet.set_name(worksheet.name);
  return std::move(reader.sheet);
}

std::vector<std::string> names_of(const Globals& globals) {
  std::vector<std::string> names;
  for (const XlsWorksheet& worksheet : globals.worksheets) names.push_back(worksheet.name);
  return names;
}

// The worksheet the choice names, or the first it accepts, or the first.
Workbook read_chosen_worksheet(const std::string& path, const std::vector<std::uint8_t>& stream,
                               const Globals& globals, const WorksheetChoice& choice,
                               std::uint64_t cell_text_bytes) {
  if (globals.worksheets.empty()) throw Error("it has no worksheet");
  if (choice.name) {
    for (const XlsWorksheet& worksheet : globals.worksheets) {
      if (worksheet.name == *choice.name) {
        return read_worksheet(stream, globals, worksheet, cell_text_bytes);
      }
    }
    throw Error(missing_worksheet_message(path, *choice.name, names_of(globals)));
  }
  for (std::size_t i = 0; i < globals.worksheets.size() && choice.accepts; ++i) {
    Workbook sheet = read_worksheet(stream, globals, globals.worksheets[i], cell_text_bytes);
    if (choice.accepts(sheet)) return sheet;
  }
  return read_worksheet(stream, globals, globals.worksheets.front(), cell_text_bytes);
}

Globals read_globals_of(const std::vector<std::uint8_t>& stream) {
  RecordStream globals_records(stream, 0);
  return read_globals(globals_records);
}

// Throws the error with the file named first, unless it names it already.
[[noreturn]] void rethrow_naming(const std::string& path, const Error& e) {
  if (std::string_view(e.what()).starts_with(path + ": ")) throw e;
  throw Error(fmt::format("{}: cannot read the .xls workbook: {}", path, e.what()), e.system_error);
}

}  // namespace

Workbook read_xls(const std::string& path, const WorksheetChoice& choice,
                  std::uint64_t cell_text_bytes) {
  require_compound_document(path);
  const std::vector<std::uint8_t> stream = read_workbook_stream(path);
  try {
    return read_chosen_worksheet(path, stream, read_globals_of(stream), choice, cell_text_bytes);
  } catch (const Error& e) {
    rethrow_naming(path, e);
  }
}

std::vector<std::string> xls_worksheet_names(const std::string& path) {
  require_compound_document(path);
  const std::vector<std::uint8_t> stream = read_workbook_stream(path);
  try {
    return names_of(read_globals_of(stream));
  } catch (const Error& e) {
    rethrow_naming(path, e);
  }
}

}  // namespace pellago
