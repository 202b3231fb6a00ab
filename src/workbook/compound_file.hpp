#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace pellago {

// The bytes of the "Workbook" stream of the OLE2 compound file at path, read with libolecf.
// Throws Error naming the file when the compound file is damaged or holds no such stream.
std::vector<std::uint8_t> read_workbook_stream(const std::string& path);

}  // namespace pellago
