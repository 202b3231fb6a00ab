#include "workbook/compound_file.hpp"

#include <fmt/format.h>
#include <libolecf.h>

#include <filesystem>
#include <fstream>
#include <string_view>

#include "error.hpp"

namespace pellago {

namespace {

// Owners of libolecf's handles; libolecf wants a file closed and freed even after a failed open.
struct OlecfError {
  libolecf_error_t* error = nullptr;
  ~OlecfError() { libolecf_error_free(&error); }
};

struct OlecfFile {
  libolecf_file_t* file = nullptr;
  bool open = false;
  ~OlecfFile() {
    if (open) libolecf_file_close(file, nullptr);
    libolecf_file_free(&file, nullptr);
  }
};

struct OlecfItem {
  libolecf_item_t* item = nullptr;
  ~OlecfItem() { libolecf_item_free(&item, nullptr); }
};

[[noreturn]] void fail(const std::string& path, std::string_view reason) {
  throw Error(fmt::format("{}: cannot read the .xls workbook: {}", path, reason));
}

// 1 when found, 0 when not, -1 on error, as libolecf answers.
int find_stream(libolecf_item_t* root, std::string_view name, OlecfItem& stream) {
  OlecfError error;
  return libolecf_item_get_sub_item_by_utf8_name(root,
                                                 reinterpret_cast<const std::uint8_t*>(name.data()),
                                                 name.size(), &stream.item, &error.error);
}

std::uint32_t little_u32(const unsigned char* bytes) {
  return static_cast<std::uint32_t>(bytes[0] | bytes[1] << 8 | bytes[2] << 16) |
         static_cast<std::uint32_t>(bytes[3]) << 24;
}

// libolecf sizes its sector tables from the counts in the header without comparing them with the
// file: a 5 KiB file can make it allocate gigabytes. The counts are checked here first: sectors
// of 512 or 4,096 bytes, and no table of more sectors than the file holds.
bool header_counts_fit(const std::string& path, std::uintmax_t file_size) {
  unsigned char header[512];
  std::ifstream file(path, std::ios::binary);
  if (!file.read(reinterpret_cast<char*>(header), sizeof header)) return false;
  const unsigned sector_shift = header[0x1E] | header[0x1F] << 8;
  if (sector_shift != 9 && sector_shift != 12) return false;
  const std::uintmax_t sectors = file_size >> sector_shift;
  const std::uint32_t fat_sectors = little_u32(header + 0x2C);
  const std::uint32_t mini_fat_sectors = little_u32(header + 0x40);
  const std::uint32_t difat_sectors = little_u32(header + 0x48);
  return fat_sectors <= sectors && mini_fat_sectors <= sectors && difat_sectors <= sectors;
}

}  // namespace

std::vector<std::uint8_t> read_workbook_stream(const std::string& path) {
  constexpr std::string_view kDamaged = "the compound file is damaged or truncated";
  std::error_code size_error;
  const std::uintmax_t file_size = std::filesystem::file_size(path, size_error);
  if (size_error || !header_counts_fit(path, file_size)) fail(path, kDamaged);
  OlecfError error;
  OlecfFile file;
  if (libolecf_file_initialize(&file.file, &error.error) != 1) fail(path, "out of memory");
  file.open = libolecf_file_open(file.file, path.c_str(), LIBOLECF_OPEN_READ, &error.error) == 1;
  if (!file.open) fail(path, kDamaged);
  OlecfItem root;
  if (libolecf_file_get_root_item(file.file, &root.item, &error.error) != 1) fail(path, kDamaged);

  OlecfItem stream;
  const int found = find_stream(root.item, "Workbook", stream);
  if (found < 0) fail(path, kDamaged);
  if (found == 0) {
    OlecfItem old_stream;
    if (find_stream(root.item, "Book", old_stream) == 1) {
      fail(path,
           "it is in the BIFF5 format of 1993-1997, which is not read: save it again as a "
           ".xls of today's format or as .xlsx");
    }
    fail(path, "it holds no workbook stream");
  }

  std::uint32_t size = 0;
  if (libolecf_item_get_size(stream.item, &size, &error.error) != 1) fail(path, kDamaged);
  // The directory may claim any size: no more than the file holds is read.
  if (size > file_size) fail(path, kDamaged);
  std::vector<std::uint8_t> bytes(size);
  if (size > 0 && libolecf_stream_read_buffer(stream.item, bytes.data(), bytes.size(),
                                              &error.error) != static_cast<ssize_t>(size)) {
    fail(path, kDamaged);
  }
  return bytes;
}

}  // namespace pellago
