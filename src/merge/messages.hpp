#pragma once

#include <exception>
#include <string>

#include "document/libxml_errors.hpp"

namespace pellago {

// What every front end says when the sheet is not a log sheet (Outcome::not_a_log_sheet); a sheet
// that is only misnamed ("log.XLSX") is told how to rename it.
std::string not_a_log_sheet_message(const std::string& sheet_path);

// The warning for a malformed XML document that was merged as far as it could be recovered; empty
// when errors.count is 0.
std::string recovered_warning(const RecoveredErrors& errors, const std::string& xml_path);

// The one line that reports a failed merge: the engine's Error as it is, other failures (running
// out of memory included) with "nothing was written".
std::string failure_message(const std::exception& failure);

}  // namespace pellago
