#pragma once

#include <optional>
#include <string>

#include "document/document.hpp"
#include "merge/add_log_notes.hpp"
#include "sheet/log_sheet.hpp"

namespace pellago {

struct MergeObserver;

struct MergedDocument {
  MergeReport report;
  std::optional<Document> document;  // none when the sheet is not a log sheet or the host cancelled
};

// The whole merge in memory, without writing anything: what add_log_notes writes out. An
// observer is told each step as it happens; a plain merge passes none.
MergedDocument merge_document(const std::string& sheet_path, const std::string& xml_path,
                              const Host& host, MergeObserver* observer);

// The kind of sheet the rules take the path for: its extension exactly, or in any letter case
// (Rules::sheet_as_typed).
SheetKind log_sheet_kind(const std::string& path, const Rules& rules);

// Throws Error unless the document's root element is <xmeml>: whatever else the parser made of a
// file (another format, or nothing readable at all) is no export to merge into or log.
void require_xmeml_root(const Document& document, const std::string& xml_path);

// A row whose fields are all empty text and that has no marker.
bool is_blank(const LogRow& row);

}  // namespace pellago
