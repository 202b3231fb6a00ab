#pragma once

#include <string>

namespace pellago {

// What the first bytes of a file say it is.
enum class FileSignature {
  zip,                // "PK\3\4" or an empty archive: an Office Open XML package
  compound_document,  // OLE2 compound document: an .xls workbook, or an encrypted .xlsx
  other,
};

// Reads the first bytes of the file at path. Throws Error with the errno when the file cannot be
// opened or read (missing, unreadable, a directory).
FileSignature read_file_signature(const std::string& path);

}  // namespace pellago
