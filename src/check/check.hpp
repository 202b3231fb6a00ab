#pragma once

#include <string>

#include "check/findings.hpp"

namespace pellago {

// Runs the whole merge of the sheet into the XML document in memory, writing nothing, and reports
// what in the sheet looks wrong and, with options.changes, every change the merge would make.
// The findings and changes come from the merge's own steps as they run. A merge that would fail
// (an input that cannot be read included) gives its error in the report, with the findings made
// before it; a sheet that is not a log sheet gives the outcome not_a_log_sheet and nothing else.
CheckReport check(const std::string& sheet_path, const std::string& xml_path,
                  const CheckOptions& options = {});

}  // namespace pellago
