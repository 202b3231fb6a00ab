#include "workbook/number_format.hpp"

#include <gtest/gtest.h>

namespace pellago {
namespace {

TEST(NumberFormat, CustomCodesAreDatesByTheirLettersOutsideQuotesAndBrackets) {
  const std::vector<std::pair<const char*, DateKind>> cases = {
      {"yyyy-mm-dd", DateKind::date},
      {"d mmm yyyy", DateKind::date},
      {"[$-409]dddd, mmmm dd, yyyy", DateKind::date},
      {"hh:mm", DateKind::time},
      {"mm:ss", DateKind::time},
      {"[mm]:ss", DateKind::time},
      {"[h]", DateKind::time},
      {"h AM/PM", DateKind::time},
      {"m/d/yy h:mm", DateKind::date_time},
      {"yyyy-mm-dd\"T\"hh:mm:ss", DateKind::date_time},
      {"0.00", DateKind::none},
      {"0 \"days\"", DateKind::none},
      {"#,##0 \\d", DateKind::none},
      {"[Red][>=100]0.0;[Blue]0.0", DateKind::none},
      {"_(* #,##0_);_(* (#,##0);_(* \"-\"_);_(@_)", DateKind::none},
  };
  for (const auto& [code, kind] : cases) EXPECT_EQ(custom_date_kind(code), kind) << code;
}

TEST(NumberFormat, SerialsBecomeDatesAndTimesInBothDateSystems) {
  const std::vector<std::tuple<double, DateKind, bool, std::optional<std::string>>> cases = {
      {1, DateKind::date, false, "1900-01-01"},
      {59, DateKind::date, false, "1900-02-28"},
      {60, DateKind::date, false, "1900-02-29"},  // the 1900 system's invented day
      {61, DateKind::date, false, "1900-03-01"},
      {45352.99, DateKind::date, false, "2024-03-01"},
      {45352.5, DateKind::date_time, false, "2024-03-01T12:00:00+00:00"},
      {0.52100694, DateKind::time, false, "12:30:15"},
      {0.99999999, DateKind::time, false, "1900-01-01T00:00:00+00:00"},  // rounds to the next day
      {1.25, DateKind::time, false, "1900-01-01T06:00:00+00:00"},
      {73110, DateKind::date, false, "2100-03-01"},  // 2100 is no leap year
      {0, DateKind::date, true, "1904-01-01"},
      {43889, DateKind::date, true, "2024-02-29"},
      {2958465, DateKind::date, false, "9999-12-31"},
      {2958466, DateKind::date, false, std::nullopt},
      {-1, DateKind::date, false, std::nullopt},
      {45352, DateKind::none, false, std::nullopt},
  };
  for (const auto& [serial, kind, date1904, expected] : cases) {
    const std::optional<DateTime> value = serial_date_time(serial, kind, date1904);
    EXPECT_EQ(value ? std::optional(date_time_text(*value)) : std::nullopt, expected) << serial;
  }
}

}  // namespace
}  // namespace pellago
