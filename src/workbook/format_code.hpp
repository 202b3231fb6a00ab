#pragma once

#include <string>
#include <string_view>

#include "workbook/workbook.hpp"

namespace pellago {

// The code of a built-in number format (1 "0", 14 "m/d/yyyy", 22 "m/d/yyyy h:mm"...), as an
// English-language spreadsheet program shows it; empty for General (0) and unknown ids.
std::string_view builtin_format_code(int format_id);

// A number as a cell under the format code shows it: "12" under General (an empty code), "12.50"
// under "0.00", "1,234" under "#,##0", "12%" under "0%", "1.20E+01" under "0.00E+00",
// "1 1/2" under "# ?/?". The code's sections (positive;negative;zero) are chosen by the sign,
// colours and conditions are left out, quoted text and escaped characters kept; a space stands
// for "_x", nothing for the fill "*x". A date or time code shows the number as General.
std::string format_number(double value, std::string_view code);

// A date or time as a cell under the format code shows it: "03/04/26" under "mm/dd/yy", "4-Mar"
// under "d-mmm", "2:05 PM" under "h:mm AM/PM", "26:00:00" under "[h]:mm:ss". A code without date
// or time letters, or an empty one, shows the date as m/d/yyyy, a time as h:mm:ss, and both as
// m/d/yyyy h:mm:ss.
std::string format_date_time(const DateTime& value, std::string_view code);

}  // namespace pellago
