#include "workbook/xls_reader.hpp"

#include <fmt/format.h>
#include <freexl.h>

#include "error.hpp"
#include "workbook/file_signature.hpp"
#include "workbook/isolated_read.hpp"

namespace pellago {

namespace {

std::string freexl_reason(int code) {
  switch (code) {
    case FREEXL_INSUFFICIENT_MEMORY:
      return "out of memory";
    case FREEXL_INVALID_CFBF_HEADER:
    case FREEXL_CFBF_INVALID_SIGNATURE:
    case FREEXL_CFBF_INVALID_SECTOR_SIZE:
      return "the compound file header is damaged";
    case FREEXL_CFBF_READ_ERROR:
    case FREEXL_CFBF_SEEK_ERROR:
      return "the file ends early (truncated?)";
    case FREEXL_CFBF_EMPTY_FAT_CHAIN:
    case FREEXL_CFBF_ILLEGAL_FAT_ENTRY:
    case FREEXL_INVALID_MINI_STREAM:
    case FREEXL_CFBF_ILLEGAL_MINI_FAT_ENTRY:
      return "the compound file's sector tables are damaged";
    case FREEXL_BIFF_WORKBOOK_NOT_FOUND:
      return "it holds no workbook stream";
    case FREEXL_BIFF_INVALID_BOF:
    case FREEXL_BIFF_INVALID_SST:
    case FREEXL_BIFF_ILLEGAL_SST_INDEX:
    case FREEXL_ILLEGAL_RK_VALUE:
    case FREEXL_CRAFTED_FILE:
      return "the workbook records are damaged";
    case FREEXL_INVALID_CHARACTER:
    case FREEXL_UNSUPPORTED_CHARSET:
      return "its text is in a character set that cannot be converted";
    case FREEXL_BIFF_ILLEGAL_SHEET_INDEX:
      return "it has no worksheet";
    case FREEXL_ILLEGAL_CELL_ROW_COL:
      return "a cell lies outside the worksheet's dimensions";
    default:
      return fmt::format("the workbook is damaged (FreeXL error {})", code);
  }
}

// Owns a FreeXL handle; FreeXL wants it closed even after a failed open.
struct FreeXlHandle {
  const void* handle = nullptr;
  ~FreeXlHandle() {
    if (handle != nullptr) freexl_close(handle);
  }
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

void check(int code, const std::string& path) {
  if (code != FREEXL_OK) {
    throw Error(fmt::format("{}: cannot read the .xls workbook: {}", path, freexl_reason(code)));
  }
}

void require_plain(const void* handle, const std::string& path) {
  unsigned int password = 0;
  check(freexl_get_info(handle, FREEXL_BIFF_PASSWORD, &password), path);
  if (password == FREEXL_BIFF_OBFUSCATED) {
    throw Error(
        fmt::format("{}: the .xls workbook is password-protected (encrypted); save it "
                    "without a password",
                    path));
  }
}

Cell cell_value(const FreeXL_CellValue& value) {
  switch (value.type) {
    case FREEXL_CELL_INT:
      return static_cast<double>(value.value.int_value);
    case FREEXL_CELL_DOUBLE:
      return value.value.double_value;
    case FREEXL_CELL_TEXT:
    case FREEXL_CELL_SST_TEXT:
    case FREEXL_CELL_DATE:
    case FREEXL_CELL_DATETIME:
    case FREEXL_CELL_TIME:
      return value.value.text_value != nullptr ? std::string(value.value.text_value)
                                               : std::string();
    default:
      return std::monostate();
  }
}

Workbook read_with_freexl(const std::string& path, std::uint64_t cell_text_bytes) {
  FreeXlHandle xls;
  check(freexl_open(path.c_str(), &xls.handle), path);
  require_plain(xls.handle, path);
  check(freexl_select_active_worksheet(xls.handle, 0), path);
  unsigned int rows = 0;
  unsigned short columns = 0;
  check(freexl_worksheet_dimensions(xls.handle, &rows, &columns), path);

  Workbook sheet;
  std::uint64_t text_bytes = 0;
  for (unsigned int row = 0; row < rows; ++row) {
    for (unsigned short column = 0; column < columns; ++column) {
      FreeXL_CellValue value;
      check(freexl_get_cell_value(xls.handle, row, column, &value), path);
      Cell cell = cell_value(value);
      if (const auto* text = std::get_if<std::string>(&cell)) {
        text_bytes += text->size();
        if (text_bytes > cell_text_bytes) {
          throw Error(fmt::format("{}: {}", path, cell_text_cap_message(cell_text_bytes)));
        }
      }
      sheet.set_cell(static_cast<int>(row) + 1, column + 1, std::move(cell));
    }
  }
  return sheet;
}

}  // namespace

Workbook read_xls(const std::string& path, std::uint64_t cell_text_bytes) {
  require_compound_document(path);
  return read_isolated(
      path, [&path, cell_text_bytes] { return read_with_freexl(path, cell_text_bytes); });
}

}  // namespace pellago
