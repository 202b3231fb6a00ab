#pragma once

#include <functional>
#include <string>

#include "workbook/workbook.hpp"

namespace pellago {

// Runs read in a child process and takes the sheet it returns back through a pipe. A library
// that crashes or corrupts memory on a damaged or crafted file then costs an Error naming the
// file, not the process. An Error thrown by read comes back as it was.
Workbook read_isolated(const std::string& path, const std::function<Workbook()>& read);

}  // namespace pellago
